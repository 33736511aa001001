// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/PrivateFolders.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <mutex>
#include <string>

#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Base/Faults.h"
#include "PlatformKit/Files/FileSystem.h"
#include "PlatformKit/Files/ProgramName.h"
#include "PlatformKit/Text/PathText.h"

namespace fi {

namespace {

constexpr int kMostCopies = 64;  // of one program that run at the same time

struct Folders {
    std::mutex mutex;
    std::string temporary;
    std::string cache;
    std::string chosenTemporary;
    std::string chosenCache;
    pid_t maker = 0;  ///< process that made the temporary folder; a forked child must not remove it
};

Folders& folders() {
    static Folders& instance = *new Folders;  // outlives every thread
    return instance;
}

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && value[0] == '/' ? value : "";
}

/// A folder of ours alone: another user's, or one that others may write, is not used.
bool isPrivate(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

void removeTemporaryFolder() {
    Folders& all = folders();
    const std::lock_guard lock(all.mutex);
    if (all.maker == getpid()) (void)removeItem(all.temporary);
}

std::string makeTemporaryFolder(Folders& all) {
    if (faultHappens(Fault::TemporaryFolder)) return {};
    if (!all.chosenTemporary.empty()) {
        return makeFolder(all.chosenTemporary, Parents::Create) ? all.chosenTemporary : "";
    }
    std::string base = environment("TMPDIR");
    if (base.empty()) base = P_tmpdir;
    std::string pattern = joinedPath(base, programName() + "-" + std::to_string(geteuid()) + "-XXXXXX");
    if (mkdtemp(pattern.data()) == nullptr) return {};
    all.maker = getpid();
    std::atexit(removeTemporaryFolder);
    return pattern;
}

std::string temporaryFolder(Folders& all) {
    if (all.temporary.empty() || !itemExists(all.temporary.c_str()))
        all.temporary = makeTemporaryFolder(all);
    return all.temporary;
}

/// Holds the folder for this process until it ends; false while another process holds it.
bool lockFolder(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return false;
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return true;
    close(descriptor);
    return false;
}

std::string cacheHome() {
    std::string home = environment("XDG_CACHE_HOME");
    if (!home.empty()) return home;
    home = environment("HOME");
    return home.empty() ? "" : joinedPath(home, ".cache");
}

std::string makeCacheFolder(Folders& all) {
    if (!all.chosenCache.empty())
        return makeFolder(all.chosenCache, Parents::Create) ? all.chosenCache : "";
    const std::string home = cacheHome();
    if (!home.empty()) {
        const std::string parent = joinedPath(home, programName());
        (void)makeFolder(parent, Parents::Create);
        for (int copy = 1; copy <= kMostCopies; ++copy) {
            std::string name = "FileImporter";
            if (copy > 1) name.append(".").append(std::to_string(copy));
            const std::string path = joinedPath(parent, name);
            (void)mkdir(path.c_str(), S_IRWXU);
            if (!isPrivate(path)) break;
            if (lockFolder(path)) return path;
        }
    }
    const std::string temporary = temporaryFolder(all);
    if (temporary.empty()) return {};
    const std::string path = joinedPath(temporary, "FileImporter");
    return makeFolder(path, Parents::MustExist) ? path : "";
}

std::string cacheFolder(Folders& all) {
    if (all.cache.empty()) {
        all.cache = makeCacheFolder(all);
    } else if (!itemExists(all.cache.c_str())) {
        (void)mkdir(all.cache.c_str(), S_IRWXU);  // somebody cleaned up
    }
    return all.cache;
}

/// Notes a folder that the program chooses, as long as none is in use.
bool choose(std::string_view path, std::string Folders::*inUse, std::string Folders::*chosen) {
    Folders& all = folders();
    const std::lock_guard lock(all.mutex);
    if (!(all.*inUse).empty() || path.empty()) return false;
    all.*chosen = path;
    return true;
}

}  // namespace

bool setTemporaryFolder(std::string_view path) {
    return guarded([&] { return choose(path, &Folders::temporary, &Folders::chosenTemporary); }, false);
}

bool setCacheFolder(std::string_view path) {
    return guarded([&] { return choose(path, &Folders::cache, &Folders::chosenCache); }, false);
}

Ref<const CFURL> copyTemporaryFolder() {
    return guarded(
        [] {
            Folders& all = folders();
            const std::lock_guard lock(all.mutex);
            return CFURL::createFromPath(temporaryFolder(all));
        },
        Ref<const CFURL>());
}

Ref<const CFURL> copyCacheFolder() {
    return guarded(
        [] {
            Folders& all = folders();
            const std::lock_guard lock(all.mutex);
            return CFURL::createFromPath(cacheFolder(all));
        },
        Ref<const CFURL>());
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
#include "PhotoCollections/BareWalk.h"

#include <dirent.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <initializer_list>

namespace fi::bench {

namespace {

bool isPhoto(const char* name) {
    const char* dot = std::strrchr(name, '.');
    if (dot == nullptr || dot == name) return false;
    for (const char* extension : {"jpg", "tif", "pct", "pic"}) {
        if (strcasecmp(dot + 1, extension) == 0) return true;
    }
    return false;
}

size_t countPhotos(int folder);

size_t countEntry(int folder, const char* name) {
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) return 0;
    struct stat status {};
    if (fstatat(folder, name, &status, 0) != 0) return 0;
    if (!S_ISDIR(status.st_mode)) return isPhoto(name) ? 1 : 0;
    const int inner = openat(folder, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (inner < 0) return 0;
    const size_t count = countPhotos(inner);
    close(inner);
    return count;
}

size_t countPhotos(int folder) {
    alignas(dirent64) char buffer[32768];
    size_t count = 0;
    long filled = 0;
    while ((filled = syscall(SYS_getdents64, folder, buffer, sizeof buffer)) > 0) {
        for (long at = 0; at < filled;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer + at);
            count += countEntry(folder, entry->d_name);
            at += entry->d_reclen;
        }
    }
    return count;
}

}  // namespace

size_t countPhotosBarely(const char* folder) {
    const int descriptor = open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return 0;
    const size_t count = countPhotos(descriptor);
    close(descriptor);
    return count;
}

}  // namespace fi::bench

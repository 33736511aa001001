// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Files/FileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "PlatformKit/Files/FileSource.h"
#include "PlatformKit/Text/PathText.h"

namespace fi {

namespace fs = std::filesystem;

namespace {

FileTime timeOf(const statx_timestamp& stamp) {
    return {stamp.tv_sec, stamp.tv_nsec};
}

bool earlier(const FileTime& a, const FileTime& b) {
    return a.seconds != b.seconds ? a.seconds < b.seconds : a.nanoseconds < b.nanoseconds;
}

}  // namespace

std::optional<FileFacts> fileFacts(const char* path, Links links) {
    struct statx status {};
    const int flags = links == Links::Keep ? AT_SYMLINK_NOFOLLOW : 0;
    if (statx(AT_FDCWD, path, flags, STATX_BASIC_STATS | STATX_BTIME, &status) != 0) return std::nullopt;
    FileFacts facts;
    facts.size = status.stx_size;
    facts.modified = timeOf(status.stx_mtime);
    const FileTime changed = timeOf(status.stx_ctime);
    const FileTime fallback = earlier(facts.modified, changed) ? facts.modified : changed;
    facts.created = (status.stx_mask & STATX_BTIME) != 0 ? timeOf(status.stx_btime) : fallback;
    facts.isFolder = S_ISDIR(status.stx_mode);
    facts.isRegular = S_ISREG(status.stx_mode);
    return facts;
}

bool itemExists(const char* path) {
    struct stat status {};
    return stat(path, &status) == 0;
}

std::string resolvingLinks(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
    if (resolved) return resolved.get();
    // Each level below may be one component shorter only: the system's own limit bounds the recursion.
    if (path.size() >= PATH_MAX) return path;
    const std::string_view parent = withoutLastPathComponent(path);
    if (parent.empty() || parent.size() >= path.size()) return path;
    return joinedPath(resolvingLinks(std::string(parent)), lastPathComponent(path));
}

bool removeItem(const std::string& path) {
    std::error_code error;
    fs::remove_all(path, error);
    return !error;
}

bool copyItem(const std::string& from, const std::string& to) {
    std::error_code error;
    if (fs::exists(fs::symlink_status(to, error))) return false;
    // A folder copied into itself would never come to an end.
    if (resolvingLinks(to).starts_with(joinedPath(resolvingLinks(from), ""))) return false;
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
    return !error;
}

bool makeFolder(const std::string& path, Parents parents) {
    std::error_code error;
    if (fs::is_directory(path, error)) return true;
    error.clear();
    return parents == Parents::Create ? fs::create_directories(path, error) || fs::is_directory(path, error)
                                      : fs::create_directory(path, error);
}

Ref<const CFData> contentsOfFile(const char* path) {
    const auto source = openFileSource(path);
    if (!source) return nullptr;
    std::vector<uint8_t> bytes;
    constexpr size_t kStep = size_t{1} << 20;
    // The size is a hint: a file may grow or shrink while it is read.
    bytes.resize(static_cast<size_t>(std::min<uint64_t>(source->size(), SIZE_MAX / 2)));
    size_t filled = 0;
    while (true) {
        if (filled == bytes.size()) bytes.resize(filled + kStep);
        const size_t count = source->read(filled, std::span(bytes).subspan(filled));
        if (count == 0) break;
        filled += count;
    }
    if (source->failed()) return nullptr;
    bytes.resize(filled);
    return CFData::adopting(std::move(bytes));
}

}  // namespace fi

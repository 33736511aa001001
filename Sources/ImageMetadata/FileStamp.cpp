// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/FileStamp.h"

#include "PlatformKit/Files/FileSystem.h"

namespace fi {

double modificationTimeOf(const struct stat& status) {
    const FileTime time{status.st_mtim.tv_sec, static_cast<uint32_t>(status.st_mtim.tv_nsec)};
    return time.secondsSince1970();
}

std::optional<double> modificationTimeAt(const char* path) {
    struct stat status {};
    if (lstat(path, &status) != 0) return std::nullopt;
    if (S_ISLNK(status.st_mode) && !itemExists(path)) return std::nullopt;
    return modificationTimeOf(status);
}

}  // namespace fi

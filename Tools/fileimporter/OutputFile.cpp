// SPDX-License-Identifier: Apache-2.0
#include "OutputFile.h"

#include <errno.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "FileImporter/FileTypeCodes.h"
#include "PictureFacts.h"
#include "PlatformKit/ImageDestination.h"
#include "PlatformKit/URL.h"
#include "Text.h"

namespace fi {

namespace {

constexpr double kQuality = 0.92;  // of JPEG: nobody sees the loss, and captions keep their colour

bool isSameFile(const struct stat& a, const std::string& path) {
    struct stat b {};
    return stat(path.c_str(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

std::string folderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

CFStringRef writableType(std::string_view path) {
    const std::string name(fileName(path));
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) return nullptr;
    const auto is = [&](const char* extension) { return strcasecmp(name.c_str() + dot, extension) == 0; };
    if (is(".jpg") || is(".jpeg")) return kUTTypeJPEG;
    if (is(".tif") || is(".tiff")) return kUTTypeTIFF;
    return nullptr;
}

std::optional<std::string> faultOfPlace(const std::string& path) {
    const std::string folder = folderOf(path) + "/.";  // fails for a file, too
    if (access(folder.c_str(), W_OK | X_OK) != 0)
        return "no file can be written into that folder: " + std::string(strerror(errno));
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 && errno != ENOENT) return strerror(errno);
    return std::nullopt;
}

std::optional<std::string> obstacleTo(const std::string& path, const std::vector<std::string>& sources) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode)) return "something that is not a file is there";
    const auto isSource = [&](const std::string& source) { return isSameFile(status, source); };
    if (std::any_of(sources.begin(), sources.end(), isSource))
        return "that is one of the photos, which would be overwritten";
    return std::nullopt;
}

std::optional<PhotoError> writePicture(const CGImage& picture, const std::string& path) {
    ImageWriteOptions options;
    options.quality = kQuality;
    ImageFailure failure;
    if (writeImage(picture, CFURL::createFromPath(path).get(), writableType(path), options, &failure))
        return std::nullopt;
    return photoError(failure);
}

}  // namespace fi

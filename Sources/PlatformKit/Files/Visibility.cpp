// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Files/Visibility.h"

#include <errno.h>
#include <fcntl.h>
#include <linux/msdos_fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/Files/FileSource.h"
#include "PlatformKit/Text/PathText.h"
#include "PlatformKit/Text/Unicode.h"

namespace fi {

namespace {

constexpr std::array<const char*, 2> kFinderInfoAttributes = {"user.com.apple.FinderInfo",
                                                              "osx.com.apple.FinderInfo"};
constexpr size_t kFinderFlagsOffset = 8;  // behind type and creator

constexpr std::array<std::string_view, 22> kPackageExtensions = {
    "app",     "appex",         "bundle",       "framework",   "kext",
    "plugin",  "component",     "prefpane",     "qlgenerator", "saver",
    "service", "xpc",           "mdimporter",   "rtfd",        "pkg",
    "mpkg",    "photoslibrary", "photolibrary", "aplibrary",   "migratedphotolibrary",
    "lrdata",  "lrlibrary"};

bool hasInvisibleFlag(const char* path, const char* attribute) {
    std::array<uint8_t, 32> info{};
    const ssize_t size = getxattr(path, attribute, info.data(), info.size());
    if (size < 0) return false;
    const auto flags =
        ByteView(info.data(), static_cast<size_t>(size), ByteOrder::Big).u16(kFinderFlagsOffset);
    return flags && (*flags & kFinderInvisible) != 0;
}

bool meansUnreachable(int error) {
    return error == ENOENT || error == EACCES || error == ENOTDIR || error == ENAMETOOLONG ||
           error == ELOOP;
}

/// One listxattr for a file without attributes, which is nearly every file; it also tells whether the
/// file is there, so that no other call need ask.
Visibility visibilityByFinderInfo(const char* path) {
    std::array<char, 1024> names;
    const ssize_t size = listxattr(path, names.data(), names.size());
    if (size < 0 && meansUnreachable(errno)) return Visibility::Missing;
    if (size == 0 || (size < 0 && errno != ERANGE)) return Visibility::Visible;
    for (const char* attribute : kFinderInfoAttributes) {
        const std::string_view list(names.data(), size < 0 ? 0 : static_cast<size_t>(size));
        const std::string_view wanted(attribute, std::strlen(attribute) + 1);
        if (size > 0 && list.find(wanted) == std::string_view::npos) continue;
        if (hasInvisibleFlag(path, attribute)) return Visibility::Invisible;
    }
    return Visibility::Visible;
}

constexpr long kFATMagic = 0x4d44;
constexpr long kExFATMagic = 0x2011BAB0;

const FATAccess kSystemFAT = {
    [](const char* folder) {
        struct statfs system {};
        return statfs(folder, &system) == 0 && (system.f_type == kFATMagic || system.f_type == kExFATMagic);
    },
    [](const char* file) {
        uint32_t attributes = 0;
        const int descriptor = open(file, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (descriptor < 0) return attributes;
        if (ioctl(descriptor, FAT_IOCTL_GET_ATTRIBUTES, &attributes) != 0) attributes = 0;
        close(descriptor);
        return attributes;
    },
};

constinit const FATAccess* s_fat = &kSystemFAT;

bool isHiddenOnFAT(const char* path) {
    return (s_fat->attributes(path) & ATTR_HIDDEN) != 0;
}

bool isAppleDouble(const char* path) {
    constexpr std::array<uint8_t, 4> kMagic = {0x00, 0x05, 0x16, 0x07};
    const auto source = openFileSource(path);
    if (!source) return false;
    std::array<uint8_t, 4> head{};
    return source->read(0, head) == head.size() && head == kMagic;
}

bool isFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool isTrashFolder(std::string_view name, const std::string& path) {
    constexpr std::string_view kPrefix = ".Trash-";
    if (!name.starts_with(kPrefix) || name.size() == kPrefix.size()) return false;
    const std::string_view user = name.substr(kPrefix.size());
    return std::all_of(user.begin(), user.end(), [](char c) { return c >= '0' && c <= '9'; }) &&
           isFolder(path + "/files") && isFolder(path + "/info");
}

}  // namespace

bool isOnFAT(const char* folder) {
    return s_fat->isFAT(folder);
}

void setFATAccess(const FATAccess* access) {
    s_fat = access != nullptr ? access : &kSystemFAT;
}

Visibility visibilityOfFile(const std::string& path, bool onFAT) {
    const Visibility visibility = visibilityByFinderInfo(path.c_str());
    if (visibility != Visibility::Visible) return visibility;
    if (onFAT && isHiddenOnFAT(path.c_str())) return Visibility::Invisible;
    const bool isCompanion = lastPathComponent(path).starts_with("._") && isAppleDouble(path.c_str());
    return isCompanion ? Visibility::Invisible : Visibility::Visible;
}

bool isPackageFolder(const std::string& path) {
    const std::string_view name = lastPathComponent(path);
    const std::string extension = lowercased(pathExtension(name));
    if (std::find(kPackageExtensions.begin(), kPackageExtensions.end(), extension) !=
        kPackageExtensions.end()) {
        return true;
    }
    if (name.starts_with('.') && isTrashFolder(name, path)) return true;
    struct stat status {};
    const std::string contents = path + "/Contents";
    if (stat(contents.c_str(), &status) != 0) return false;
    return stat((contents + "/PkgInfo").c_str(), &status) == 0 ||
           stat((contents + "/Info.plist").c_str(), &status) == 0;
}

}  // namespace fi

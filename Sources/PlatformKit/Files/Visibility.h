// SPDX-License-Identifier: Apache-2.0
// Whether a file asks to stay out of sight, and whether a folder is a document of its own.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace fi {

/// Bit of the Finder flags that hides a file.
inline constexpr unsigned kFinderInvisible = 0x4000;

enum class Visibility : uint8_t {
    Visible,
    Invisible,
    Missing,  ///< nothing can be reached at the path
};

/// Invisible is a file with the invisible bit in its FinderInfo attribute, with the hidden attribute of
/// FAT and exFAT (looked at when `onFAT`), or that is an AppleDouble companion by name ("._") and content.
/// A leading dot alone hides nothing, and a file that cannot be read is visible.
[[nodiscard]] Visibility visibilityOfFile(const std::string& path, bool onFAT);

/// True for a folder that people see as one item: a bundle by its extension or contents, or a trash
/// folder (".Trash-<user>" with "files" and "info").
[[nodiscard]] bool isPackageFolder(const std::string& path);

/// How FAT and exFAT are asked, where files carry a hidden attribute.
struct FATAccess {
    /// True for a folder on such a file system.
    bool (*isFAT)(const char* folder);
    /// The attribute bits of a file; 0 when they cannot be read.
    uint32_t (*attributes)(const char* file);
};

/// True for a folder whose files have to be asked for the attribute. One statfs.
[[nodiscard]] bool isOnFAT(const char* folder);

/// Puts another access in the place of the system's, for machines that mount no such file system; null
/// brings the system's back. Not while folders are walked.
void setFATAccess(const FATAccess* access);

}  // namespace fi

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

}  // namespace fi

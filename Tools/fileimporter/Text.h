// SPDX-License-Identifier: Apache-2.0
// File names as text: they are bytes that may be anything, and whoever reads them expects UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace fi {

[[nodiscard]] bool isUtf8(std::string_view bytes);

/// UTF-8 at any rate: a byte that is not part of it becomes U+FFFD.
[[nodiscard]] std::string asUtf8(std::string_view bytes);

/// UTF-8 that is safe to print: control characters, line ends and marks that turn the direction of writing
/// appear as escapes such as \x1b or \u202e.
[[nodiscard]] std::string printable(std::string_view bytes);

/// Columns that UTF-8 text takes on a terminal.
[[nodiscard]] size_t displayWidth(std::string_view text);

/// The text, or as much of its start as fits into that many columns with an ellipsis behind it.
[[nodiscard]] std::string shortened(std::string_view text, size_t columns);

[[nodiscard]] std::string base64(std::string_view bytes);

/// A size for people: "812 B", "3.4 MB".
[[nodiscard]] std::string readableSize(uint64_t bytes);

/// What follows the last slash; all of it when there is none.
[[nodiscard]] std::string_view fileName(std::string_view path);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Locale-free Unicode on UTF-8 bytes. Bytes that are not UTF-8 are kept as they are and equal only
// themselves.
#pragma once

#include <string>
#include <string_view>

namespace fi {

[[nodiscard]] bool isASCII(std::string_view text);
[[nodiscard]] bool isValidUTF8(std::string_view text);
/// UTF-16 code units of the text; a byte that is not part of valid UTF-8 counts as one.
[[nodiscard]] size_t utf16Length(std::string_view text);

/// The text with one byte for each UTF-16 unit: ASCII as it is, 0xFF for every other unit.
[[nodiscard]] std::string asciiUnits(std::string_view text);

/// Simple case mapping, character by character, in no locale (i and I are a pair everywhere).
[[nodiscard]] std::string lowercased(std::string_view text);
[[nodiscard]] std::string uppercased(std::string_view text);
/// The form in which texts that differ in case only are the same.
[[nodiscard]] std::string caseFolded(std::string_view text);
[[nodiscard]] bool equalIgnoringCase(std::string_view a, std::string_view b);

/// Canonical decomposition (NFD); text that is not valid UTF-8 comes back unchanged.
[[nodiscard]] std::string canonicallyDecomposed(std::string_view text);

}  // namespace fi

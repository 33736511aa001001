// SPDX-License-Identifier: Apache-2.0
// Length-prefixed strings (first byte the length, at most 255 characters) and the byte-wise comparisons
// and number conversions that go with them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace fi {

using PascalBuffer = std::array<unsigned char, 256>;

/// The characters of a length-prefixed string; looks into it.
[[nodiscard]] std::string_view pascalView(const unsigned char* pascal);

/// Stores `text` with its length; the rest is zero. False, and nothing stored, when it is longer than 255.
[[nodiscard]] bool storePascal(std::string_view text, PascalBuffer& out);

/// -1, 0 or 1: bytes as unsigned numbers, then the shorter before the longer.
[[nodiscard]] int compareBytes(std::string_view a, std::string_view b);

/// The decimal number at the beginning of the text, up to the first other character. Wraps modulo 2^32.
[[nodiscard]] int32_t numberFromDigits(std::string_view digits);

}  // namespace fi

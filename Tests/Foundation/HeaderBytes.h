// SPDX-License-Identifier: Apache-2.0
// The smallest files whose headers promise a picture of a given size and depth; there is little or nothing
// behind the header.
#pragma once

#include <cstdint>
#include <vector>

namespace fi::test {

/// What a crafted header says.
struct HeaderFacts {
    uint16_t width = 16;
    uint16_t height = 8;
    uint16_t components = 3;
    uint16_t bitsPerComponent = 8;
    uint16_t dotsPerInch = 0;  ///< 0: not stated
};

/// A TIFF file of one uncompressed page: gray or bi-level with 1 component, RGB with 3, CMYK with 4. The
/// pixels are zero.
[[nodiscard]] std::vector<uint8_t> tiffWith(const HeaderFacts& facts);

/// The markers of a JPEG file up to its scan, which is empty. Gray with 1 component, YCbCr with 3, CMYK
/// with 4.
[[nodiscard]] std::vector<uint8_t> jpegWith(const HeaderFacts& facts);

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Makes the kinds of TIFF that the product reads but does not write.
#pragma once

#include <cstdint>
#include <vector>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi::test {

enum class TiffKind : uint8_t {
    Gray,
    InvertedGray,
    OneBit,
    InvertedOneBit,
    Rgb,
    Palette,
    Cmyk,
    RgbAlpha,
    RgbMask
};

struct TiffRecipe {
    TiffKind kind = TiffKind::Rgb;
    int compression = 1;  ///< TIFF code; none, LZW (5), Deflate (8), PackBits (32773), fax (4)
    int orientation = 0;  ///< 0 writes none
    int bits = 8;         ///< 16 doubles each sample's byte
    uint32_t rowsPerStrip = 5;
    uint32_t tile = 0;  ///< side of the tiles; 0 writes strips
    bool planar = false;
    bool bigEndian = false;
    bool big = false;
    uint32_t pages = 1;  ///< the same picture again and again
};

/// The alpha of TiffKind::RgbAlpha (already multiplied into the colors) at a place.
[[nodiscard]] uint8_t tiffAlphaAt(uint32_t x, uint32_t y);

/// RGBX32 for the color kinds, Gray8 for the others. One-bit kinds keep what is 128 or more.
[[nodiscard]] std::vector<uint8_t> makeTiff(const PixelBuffer& picture, const TiffRecipe& recipe);

}  // namespace fi::test

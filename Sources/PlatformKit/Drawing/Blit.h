// SPDX-License-Identifier: Apache-2.0
// Whole-pixel drawing without filtering: copies, filled rectangles, and masks of coverage.
#pragma once

#include <cstdint>
#include <span>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi {

struct PixelColor {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;
};

/// A rectangle of whole pixels; rows count from the top. It may lie partly or wholly outside.
struct PixelRect {
    int64_t x = 0;
    int64_t y = 0;
    uint32_t width = 0;
    uint32_t height = 0;
};

/// One byte a pixel: 0 leaves what is there, 255 covers it.
struct CoverageMask {
    std::span<const uint8_t> bytes;
    size_t rowBytes = 0;
    uint32_t width = 0;
    uint32_t height = 0;
};

/// Copies `source` so that its top left pixel lands on (x, y), cut to the destination. Gray becomes
/// three equal components. False, and nothing drawn, for colour into gray: that needs a colour profile.
[[nodiscard]] bool copyInto(PixelBuffer& destination, int64_t x, int64_t y, const PixelBuffer& source);

/// Fills the part of `rect` that lies inside. A gray picture takes the green component.
void fill(PixelBuffer& destination, const PixelRect& rect, PixelColor color);

/// Lays `color` over the picture as far as the mask covers, its top left at (x, y), cut to the picture.
/// False, and nothing drawn, when the mask's bytes are fewer than its sides say.
[[nodiscard]] bool drawMask(PixelBuffer& destination, int64_t x, int64_t y, const CoverageMask& mask,
                            PixelColor color);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Middle gray, opaque.
#include "PlatformKit/Codecs/UnreadRows.h"

#include <cstring>

namespace fi {

namespace {
constexpr uint8_t kUnreadLevel = 128;
}

void markUnread(PixelBuffer& pixels, uint32_t first, uint32_t count) {
    const size_t bytes = size_t{pixels.width()} * bytesPerPixel(pixels.layout());
    for (uint32_t y = first; y < first + count; ++y) {
        uint8_t* row = pixels.row(y);
        std::memset(row, kUnreadLevel, bytes);
        if (pixels.layout() == PixelLayout::Gray8) continue;
        for (size_t i = 3; i < bytes; i += 4)
            row[i] = 255;
    }
}

bool isOneColor(const PixelBuffer& pixels) {
    const size_t pixelBytes = bytesPerPixel(pixels.layout());
    const size_t rowBytes = pixelBytes * pixels.width();
    const uint8_t* first = pixels.row(0);
    for (uint32_t y = 0; y < pixels.height(); ++y) {
        const uint8_t* row = pixels.row(y);
        // A row that equals itself one pixel on, and begins like the first, is of one color.
        if (std::memcmp(row, first, pixelBytes) != 0) return false;
        if (std::memcmp(row, row + pixelBytes, rowBytes - pixelBytes) != 0) return false;
    }
    return true;
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Middle gray, opaque, and white where there is no gray.
#include "PlatformKit/Codecs/UnreadRows.h"

#include <cstring>

namespace fi {

namespace {
constexpr uint8_t kUnreadLevel = 128;  // of a word, in both of its bytes
constexpr uint8_t kWhiteBits = 0xFF;
}  // namespace

void markUnread(PixelBuffer& pixels, uint32_t first, uint32_t count) {
    const PixelLayout layout = pixels.layout();
    const auto bytes = static_cast<size_t>(bytesOfRow(pixels.width(), layout));
    const size_t pixelBytes = bytesPerPixel(layout);
    // What is opaque in a pixel of four samples; ARGB32 has it in front.
    const size_t sampleBytes = pixelBytes / 4;
    const size_t opaque = layout == PixelLayout::ARGB32 ? 0 : 3 * sampleBytes;
    for (uint32_t y = first; y < first + count; ++y) {
        uint8_t* row = pixels.row(y);
        std::memset(row, layout == PixelLayout::Gray1 ? kWhiteBits : kUnreadLevel, bytes);
        for (size_t i = opaque; sampleBytes > 0 && i < bytes; i += pixelBytes)
            std::memset(row + i, 255, sampleBytes);
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

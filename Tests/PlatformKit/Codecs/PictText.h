// SPDX-License-Identifier: Apache-2.0
// Decoded pictures in a form that tests can compare and read.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "PlatformKit/Codecs/PictReader.h"

namespace fi::test {

using Rgb = std::array<uint8_t, 3>;

[[nodiscard]] inline CodecResult<DecodedPicture> decodePictBytes(const std::vector<uint8_t>& bytes) {
    MemorySource source(bytes);
    return decodePict(source, {});
}

[[nodiscard]] inline CodecResult<ImageHeader> pictHeader(const std::vector<uint8_t>& bytes) {
    MemorySource source(bytes);
    return readPictHeader(source);
}

/// Of a picture in any of the layouts that a PICT file decodes to.
[[nodiscard]] inline Rgb colorAt(const PixelBuffer& pixels, uint32_t x, uint32_t y) {
    const uint8_t* row = pixels.row(y);
    if (pixels.layout() == PixelLayout::RGBX32) return {row[4 * x], row[4 * x + 1], row[4 * x + 2]};
    const bool isBit = pixels.layout() == PixelLayout::Gray1;
    const uint8_t gray = isBit ? static_cast<uint8_t>((row[x / 8] >> (7 - x % 8) & 1) * 255) : row[x];
    return {gray, gray, gray};
}

/// A line a row: '.' white, '#' black, 'r', 'g', 'b' plain colors, '?' anything else.
[[nodiscard]] inline std::string pictText(const PixelBuffer& pixels) {
    const auto letter = [](const Rgb& color) {
        if (color == Rgb{255, 255, 255}) return '.';
        if (color == Rgb{0, 0, 0}) return '#';
        if (color == Rgb{255, 0, 0}) return 'r';
        if (color == Rgb{0, 255, 0}) return 'g';
        return color == Rgb{0, 0, 255} ? 'b' : '?';
    };
    std::string text;
    for (uint32_t y = 0; y < pixels.height(); ++y) {
        for (uint32_t x = 0; x < pixels.width(); ++x)
            text += letter(colorAt(pixels, x, y));
        text += '\n';
    }
    return text;
}

}  // namespace fi::test

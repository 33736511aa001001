// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/PlainPixels.h"

#include <cstring>
#include <utility>

namespace fi {

namespace {

constexpr uint8_t kOpaque = 255;

/// 65535 is 257 times 255: the nearest byte.
uint8_t byteOfWord(const uint8_t* at) {
    uint16_t word = 0;
    std::memcpy(&word, at, sizeof(word));
    return static_cast<uint8_t>((word + 128U) / 257U);
}

void spreadBits(const uint8_t* from, uint8_t* to, uint32_t width) {
    for (uint32_t x = 0; x < width; ++x)
        to[x] = (from[x / 8] << (x % 8) & 0x80) != 0 ? 255 : 0;
}

void reduceGray(const uint8_t* from, uint8_t* to, uint32_t width) {
    for (uint32_t x = 0; x < width; ++x)
        to[x] = byteOfWord(from + size_t{x} * 2);
}

void reduceColor(const uint8_t* from, uint8_t* to, uint32_t width) {
    for (uint32_t x = 0; x < width; ++x, from += 8, to += 4) {
        for (uint32_t c = 0; c < 3; ++c)
            to[c] = byteOfWord(from + size_t{c} * 2);
        to[3] = kOpaque;
    }
}

/// What is multiplied already needs only what shines through. A colour beyond its alpha is cut.
void layOnWhite(const uint8_t* from, uint8_t* to, uint32_t width, uint32_t firstColor, uint32_t alpha) {
    for (uint32_t x = 0; x < width; ++x, from += 4, to += 4) {
        const uint32_t through = kOpaque - from[alpha];
        uint8_t pixel[4] = {0, 0, 0, kOpaque};
        for (uint32_t c = 0; c < 3; ++c) {
            const uint32_t sum = from[firstColor + c] + through;
            pixel[c] = static_cast<uint8_t>(sum > kOpaque ? kOpaque : sum);
        }
        std::memcpy(to, pixel, sizeof(pixel));
    }
}

void convertRow(const uint8_t* from, uint8_t* to, uint32_t width, PixelLayout layout) {
    switch (layout) {
        case PixelLayout::Gray1:
            return spreadBits(from, to, width);
        case PixelLayout::Gray16:
            return reduceGray(from, to, width);
        case PixelLayout::RGBX64:
            return reduceColor(from, to, width);
        case PixelLayout::RGBA32:
            return layOnWhite(from, to, width, 0, 3);
        case PixelLayout::ARGB32:
            return layOnWhite(from, to, width, 1, 0);
        case PixelLayout::Gray8:
        case PixelLayout::RGBX32:
            return;
    }
}

}  // namespace

std::optional<PixelBuffer> plainPixels(PixelBuffer picture) {
    const PixelLayout layout = picture.layout();
    if (layout == PixelLayout::Gray8 || layout == PixelLayout::RGBX32) return picture;
    const bool gray = layout == PixelLayout::Gray1 || layout == PixelLayout::Gray16;
    auto plain = PixelBuffer::create(picture.width(), picture.height(),
                                     gray ? PixelLayout::Gray8 : PixelLayout::RGBX32);
    if (!plain) return std::nullopt;
    for (uint32_t y = 0; y < picture.height(); ++y)
        convertRow(picture.row(y), plain->row(y), picture.width(), layout);
    return plain;
}

}  // namespace fi

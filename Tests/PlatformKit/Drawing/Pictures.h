// SPDX-License-Identifier: Apache-2.0
// Small pictures for the drawing tests, and single samples of them.
#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <utility>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi::test {

/// A component of a picture at (x, y).
using Sampler = std::function<uint8_t(uint32_t x, uint32_t y, uint32_t component)>;

/// A picture with the components that `sampler` gives; the fourth of colour is 255.
inline PixelBuffer pictureOf(uint32_t width, uint32_t height, PixelLayout layout, const Sampler& sampler) {
    auto picture = PixelBuffer::create(width, height, layout);
    if (!picture) throw std::bad_alloc();
    const uint32_t components = bytesPerPixel(layout);
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            for (uint32_t c = 0; c < components; ++c) {
                picture->row(y)[x * components + c] = c == 3 ? 255 : sampler(x, y, c);
            }
        }
    }
    return std::move(*picture);
}

/// Bytes without any pattern, the same in every run.
inline PixelBuffer noise(uint32_t width, uint32_t height, PixelLayout layout) {
    uint32_t state = 12345;
    return pictureOf(width, height, layout, [&](uint32_t, uint32_t, uint32_t) {
        state = state * 1664525u + 1013904223u;
        return static_cast<uint8_t>(state >> 24);
    });
}

inline uint8_t sample(const PixelBuffer& picture, uint32_t x, uint32_t y, uint32_t component = 0) {
    return picture.row(y)[size_t{x} * bytesPerPixel(picture.layout()) + component];
}

inline bool samePixels(const PixelBuffer& a, const PixelBuffer& b) {
    if (a.width() != b.width() || a.height() != b.height() || a.layout() != b.layout()) return false;
    for (uint32_t y = 0; y < a.height(); ++y) {
        if (std::memcmp(a.row(y), b.row(y), size_t{a.width()} * bytesPerPixel(a.layout())) != 0)
            return false;
    }
    return true;
}

}  // namespace fi::test

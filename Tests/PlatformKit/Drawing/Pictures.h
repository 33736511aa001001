// SPDX-License-Identifier: Apache-2.0
// Small pictures for the drawing tests, and single samples of them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <utility>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi::test {

constexpr PixelLayout kLayouts[] = {PixelLayout::Gray1,  PixelLayout::Gray8,  PixelLayout::Gray16,
                                    PixelLayout::RGBX32, PixelLayout::RGBA32, PixelLayout::ARGB32,
                                    PixelLayout::RGBX64};

/// For the names of tests over layouts.
inline std::string nameOfLayout(const testing::TestParamInfo<PixelLayout>& info) {
    constexpr const char* kNames[] = {"Gray1", "Gray8", "Gray16", "RGBX32", "RGBA32", "ARGB32", "RGBX64"};
    return kNames[static_cast<size_t>(info.param)];
}

/// A component of a picture at (x, y).
using Sampler = std::function<uint8_t(uint32_t x, uint32_t y, uint32_t component)>;

/// Whether a byte of a pixel has no meaning.
inline bool isFiller(PixelLayout layout, uint32_t byte) {
    return (layout == PixelLayout::RGBX32 && byte == 3) || (layout == PixelLayout::RGBX64 && byte >= 6);
}

/// A picture with the components that `sampler` gives; bytes without a meaning are 255.
inline PixelBuffer pictureOf(uint32_t width, uint32_t height, PixelLayout layout, const Sampler& sampler) {
    auto picture = PixelBuffer::create(width, height, layout);
    if (!picture) throw std::bad_alloc();
    const uint32_t components = bytesPerPixel(layout);
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            for (uint32_t c = 0; c < components; ++c) {
                picture->row(y)[x * components + c] = isFiller(layout, c) ? 255 : sampler(x, y, c);
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

/// Whether the pixels are equal; what lies behind them in their rows does not count.
inline bool samePixels(const PixelBuffer& a, const PixelBuffer& b) {
    if (a.width() != b.width() || a.height() != b.height() || a.layout() != b.layout()) return false;
    const uint64_t bits = uint64_t{a.width()} * bitsPerPixel(a.layout());
    const auto wholeBytes = static_cast<size_t>(bits / 8);
    for (uint32_t y = 0; y < a.height(); ++y) {
        if (std::memcmp(a.row(y), b.row(y), wholeBytes) != 0) return false;
        if (bits % 8 != 0 && ((a.row(y)[wholeBytes] ^ b.row(y)[wholeBytes]) & 0xFF00U >> (bits % 8)) != 0)
            return false;
    }
    return true;
}

}  // namespace fi::test

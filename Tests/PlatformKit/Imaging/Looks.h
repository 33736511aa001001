// SPDX-License-Identifier: Apache-2.0
// How the imaging tests look at images: single pixels, corners, and how far two of them are apart.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "PlatformKit/CGImage.h"
#include "PlatformKit/ImageSource.h"
#include "Support/MakePictures.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

using Rgb = std::array<uint8_t, 3>;

/// Rows count from the top.
inline Rgb pixelAt(const CGImage& image, uint32_t x, uint32_t y) {
    const uint32_t bytes = image.bitsPerPixel() / 8;
    const uint8_t* at = image.data() + image.bytesPerRow() * y + size_t{x} * bytes;
    return bytes == 1 ? Rgb{at[0], at[0], at[0]} : Rgb{at[0], at[1], at[2]};
}

/// True when every component is within `tolerance`.
inline bool isClose(const Rgb& a, const Rgb& b, int tolerance = 12) {
    for (size_t i = 0; i < 3; ++i) {
        if (std::abs(int{a[i]} - int{b[i]}) > tolerance) return false;
    }
    return true;
}

/// True when the middles of the four corner patches have their colours: the picture is upright.
inline testing::AssertionResult looksUpright(const CGImage* image) {
    if (image == nullptr) return testing::AssertionFailure() << "no image";
    const uint32_t width = image->width();
    const uint32_t height = image->height();
    const auto shade = [&](const Rgb& color) {
        return image->bitsPerPixel() == 8 ? Rgb{color[1], color[1], color[1]} : color;
    };
    const struct {
        const char* name;
        uint32_t x, y;
        Rgb color;
    } kExpected[] = {
        {"top left", width / 8, height / 8, kCorners.topLeft},
        {"top right", width - 1 - width / 8, height / 8, kCorners.topRight},
        {"bottom right", width - 1 - width / 8, height - 1 - height / 8, kCorners.bottomRight},
        {"bottom left", width / 8, height - 1 - height / 8, kCorners.bottomLeft},
    };
    for (const auto& corner : kExpected) {
        const Rgb seen = pixelAt(*image, corner.x, corner.y);
        if (isClose(seen, shade(corner.color))) continue;
        return testing::AssertionFailure() << corner.name << " is " << int{seen[0]} << "," << int{seen[1]}
                                           << "," << int{seen[2]} << " of " << width << "x" << height;
    }
    return testing::AssertionSuccess();
}

/// Mean absolute difference of the components; a large number when the sizes differ.
inline double meanDifference(const CGImage& a, const CGImage& b) {
    if (a.width() != b.width() || a.height() != b.height()) return 1e9;
    double sum = 0;
    for (uint32_t y = 0; y < a.height(); ++y) {
        for (uint32_t x = 0; x < a.width(); ++x) {
            const Rgb left = pixelAt(a, x, y);
            const Rgb right = pixelAt(b, x, y);
            for (size_t c = 0; c < 3; ++c) {
                sum += std::abs(int{left[c]} - int{right[c]});
            }
        }
    }
    return sum / (3.0 * a.width() * a.height());
}

/// A source on bytes in memory; null when they are not recognised.
inline Ref<ImageSource> sourceOf(const Bytes& bytes, ImageFailure* failure = nullptr) {
    return ImageSource::openData(CFData::create(bytes).get(), failure);
}

/// A source on a file.
inline Ref<ImageSource> sourceAt(const std::string& path, ImageFailure* failure = nullptr) {
    return ImageSource::open(CFURL::createFromPath(path).get(), failure);
}

}  // namespace fi::test

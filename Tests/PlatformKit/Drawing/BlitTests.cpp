// SPDX-License-Identifier: Apache-2.0
// Copies, filled rectangles and masks: what lies inside is drawn, what lies outside is not.
#include "PlatformKit/Drawing/Blit.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "PlatformKit/Drawing/Pictures.h"

namespace fi::test {
namespace {

PixelBuffer blank(uint32_t width, uint32_t height, PixelLayout layout) {
    return pictureOf(width, height, layout, [](uint32_t, uint32_t, uint32_t) { return uint8_t{7}; });
}

TEST(Blit, CopiesAreCutAtEverySide) {
    const PixelBuffer source = noise(5, 4, PixelLayout::RGBX32);
    for (int64_t x = -7; x <= 11; ++x) {
        for (int64_t y = -6; y <= 9; ++y) {
            PixelBuffer picture = blank(10, 8, PixelLayout::RGBX32);
            ASSERT_TRUE(copyInto(picture, x, y, source));
            for (uint32_t py = 0; py < 8; ++py) {
                for (uint32_t px = 0; px < 10; ++px) {
                    const int64_t sx = px - x;
                    const int64_t sy = py - y;
                    const bool inside = sx >= 0 && sx < 5 && sy >= 0 && sy < 4;
                    const uint8_t expected =
                        inside ? sample(source, static_cast<uint32_t>(sx), static_cast<uint32_t>(sy), 1)
                               : 7;
                    ASSERT_EQ(sample(picture, px, py, 1), expected) << x << "," << y;
                }
            }
        }
    }
}

TEST(Blit, PlacesFarOutsideDrawNothing) {
    constexpr int64_t kLow = std::numeric_limits<int64_t>::min();
    constexpr int64_t kHigh = std::numeric_limits<int64_t>::max();
    const PixelBuffer source = noise(3, 3, PixelLayout::Gray8);
    const PixelBuffer before = noise(6, 6, PixelLayout::Gray8);
    PixelBuffer picture = noise(6, 6, PixelLayout::Gray8);
    for (const int64_t far : {kLow, kLow + 1, kHigh - 1, kHigh}) {
        EXPECT_TRUE(copyInto(picture, far, 0, source));
        EXPECT_TRUE(copyInto(picture, 0, far, source));
        fill(picture, {far, far, UINT32_MAX, UINT32_MAX}, {1, 2, 3});
    }
    EXPECT_TRUE(samePixels(picture, before));
}

TEST(Blit, GrayBecomesThreeEqualComponents) {
    const PixelBuffer gray = noise(9, 5, PixelLayout::Gray8);
    auto picture = PixelBuffer::create(9, 5, PixelLayout::RGBX32).value();
    ASSERT_TRUE(copyInto(picture, 0, 0, gray));
    for (uint32_t c = 0; c < 3; ++c) {
        EXPECT_EQ(sample(picture, 8, 4, c), sample(gray, 8, 4));
        EXPECT_EQ(sample(picture, 2, 1, c), sample(gray, 2, 1));
    }
    EXPECT_EQ(sample(picture, 2, 1, 3), 255);
}

TEST(Blit, ColourIntoGrayIsRefusedAndDrawsNothing) {
    PixelBuffer gray = blank(4, 4, PixelLayout::Gray8);
    EXPECT_FALSE(copyInto(gray, 0, 0, noise(4, 4, PixelLayout::RGBX32)));
    EXPECT_TRUE(samePixels(gray, blank(4, 4, PixelLayout::Gray8)));
}

TEST(Blit, FillCoversTheRectangleAndNothingElse) {
    PixelBuffer picture = blank(8, 6, PixelLayout::RGBX32);
    fill(picture, {5, -2, 100, 5}, {10, 20, 30});
    for (uint32_t y = 0; y < 6; ++y) {
        for (uint32_t x = 0; x < 8; ++x) {
            const bool inside = x >= 5 && y < 3;
            EXPECT_EQ(sample(picture, x, y, 0), inside ? 10 : 7);
            EXPECT_EQ(sample(picture, x, y, 1), inside ? 20 : 7);
            EXPECT_EQ(sample(picture, x, y, 2), inside ? 30 : 7);
            EXPECT_EQ(sample(picture, x, y, 3), 255);
        }
    }
}

TEST(Blit, FullCoverageGivesTheColourAndNoCoverageLeavesThePicture) {
    for (const PixelLayout layout : {PixelLayout::Gray8, PixelLayout::RGBX32}) {
        for (int below = 0; below < 256; ++below) {
            PixelBuffer picture = pictureOf(
                3, 1, layout, [&](uint32_t, uint32_t, uint32_t) { return static_cast<uint8_t>(below); });
            const std::vector<uint8_t> coverage = {0, 255, 128};
            ASSERT_TRUE(drawMask(picture, 0, 0, {coverage, 3, 3, 1}, {200, 200, 200}));
            EXPECT_EQ(sample(picture, 0, 0), below);
            EXPECT_EQ(sample(picture, 1, 0), 200);
            EXPECT_NEAR(sample(picture, 2, 0), (below * 127.0 + 200 * 128.0) / 255, 0.5);
        }
    }
}

TEST(Blit, MasksAreCutAndUseTheirOwnStride) {
    std::vector<uint8_t> coverage(5 * 4, 0);
    coverage[5 * 2 + 1] = 255;  // column 1 of row 2; a row is 5 bytes, 3 of them meant
    PixelBuffer picture = blank(4, 4, PixelLayout::RGBX32);
    ASSERT_TRUE(drawMask(picture, -1, -1, {coverage, 5, 3, 4}, {255, 0, 0}));
    for (uint32_t y = 0; y < 4; ++y) {
        for (uint32_t x = 0; x < 4; ++x) {
            EXPECT_EQ(sample(picture, x, y), x == 0 && y == 1 ? 255 : 7);
        }
    }
}

TEST(Blit, MasksWithTooFewBytesAreRefused) {
    const std::vector<uint8_t> coverage(11, 255);
    PixelBuffer picture = blank(4, 4, PixelLayout::Gray8);
    EXPECT_FALSE(drawMask(picture, 0, 0, {coverage, 4, 4, 3}, {}));
    EXPECT_FALSE(drawMask(picture, 0, 0, {coverage, 3, 4, 2}, {}));
    EXPECT_FALSE(drawMask(picture, 0, 0, {coverage, 4, 4, UINT32_MAX}, {}));
    EXPECT_TRUE(samePixels(picture, blank(4, 4, PixelLayout::Gray8)));
    EXPECT_TRUE(drawMask(picture, 0, 0, {coverage, 4, 3, 3}, {}));
}

}  // namespace
}  // namespace fi::test

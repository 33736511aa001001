// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/PlainPixels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace fi::test {

namespace {

PixelBuffer rowOf(uint32_t width, PixelLayout layout, const std::vector<uint8_t>& bytes) {
    auto picture = PixelBuffer::create(width, 1, layout);
    EXPECT_TRUE(picture);
    EXPECT_EQ(bytes.size(), bytesOfRow(width, layout));
    std::memcpy(picture->row(0), bytes.data(), bytes.size());
    return std::move(*picture);
}

std::vector<uint8_t> plainRow(PixelBuffer picture, PixelLayout expected) {
    const auto plain = plainPixels(std::move(picture));
    EXPECT_TRUE(plain && plain->layout() == expected);
    const uint8_t* row = plain->row(0);
    return {row, row + bytesOfRow(plain->width(), expected)};
}

using Bytes = std::vector<uint8_t>;

TEST(PlainPixels, OfTheTwoPlainLayoutsStayWhereTheyAre) {
    for (const PixelLayout layout : {PixelLayout::Gray8, PixelLayout::RGBX32}) {
        auto picture = PixelBuffer::create(3, 2, layout);
        ASSERT_TRUE(picture);
        const uint8_t* place = picture->row(0);
        const auto plain = plainPixels(std::move(*picture));
        ASSERT_TRUE(plain);
        EXPECT_EQ(plain->row(0), place);
    }
}

TEST(PlainPixels, OfBitsAreBlackAndWhiteFromTheHighestOn) {
    EXPECT_EQ(plainRow(rowOf(10, PixelLayout::Gray1, {0xA1, 0x40}), PixelLayout::Gray8),
              (Bytes{255, 0, 255, 0, 0, 0, 0, 255, 0, 255}));
}

TEST(PlainPixels, OfWordsAreTheNearestBytes) {
    // 128 is half of 257, less a half: it goes down, 129 goes up.
    EXPECT_EQ(plainRow(rowOf(4, PixelLayout::Gray16, {0, 0, 128, 0, 129, 0, 255, 255}), PixelLayout::Gray8),
              (Bytes{0, 0, 1, 255}));
    EXPECT_EQ(plainRow(rowOf(1, PixelLayout::RGBX64, {0x01, 0x01, 0, 0x80, 0xFF, 0xFF, 9, 9}),
                       PixelLayout::RGBX32),
              (Bytes{1, 128, 255, 255}));
}

TEST(PlainPixels, ThatAreTransparentLieOnWhite) {
    const Bytes white = {255, 255, 255, 255};
    EXPECT_EQ(plainRow(rowOf(1, PixelLayout::RGBA32, {0, 0, 0, 0}), PixelLayout::RGBX32), white);
    EXPECT_EQ(plainRow(rowOf(1, PixelLayout::ARGB32, {0, 0, 0, 0}), PixelLayout::RGBX32), white);
    EXPECT_EQ(plainRow(rowOf(1, PixelLayout::RGBA32, {100, 50, 0, 200}), PixelLayout::RGBX32),
              (Bytes{155, 105, 55, 255}));
    EXPECT_EQ(plainRow(rowOf(1, PixelLayout::ARGB32, {200, 100, 50, 0}), PixelLayout::RGBX32),
              (Bytes{155, 105, 55, 255}));
    EXPECT_EQ(plainRow(rowOf(1, PixelLayout::RGBA32, {10, 20, 30, 255}), PixelLayout::RGBX32),
              (Bytes{10, 20, 30, 255}));
}

TEST(PlainPixels, ThatShineBeyondTheirAlphaAreCut) {
    EXPECT_EQ(plainRow(rowOf(1, PixelLayout::RGBA32, {255, 0, 0, 128}), PixelLayout::RGBX32),
              (Bytes{255, 127, 127, 255}));
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Memory of pictures: alignment, zeros, and sizes that cannot be had.
#include "PlatformKit/Base/PixelBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace fi::test {

namespace {

TEST(PixelBuffer, RowsAreAlignedZeroedAndApart) {
    for (const PixelLayout layout : {PixelLayout::Gray8, PixelLayout::RGBX32}) {
        for (const uint32_t width : {1U, 15U, 16U, 17U, 64U, 65U}) {
            auto buffer = PixelBuffer::create(width, 3, layout);
            ASSERT_TRUE(buffer);
            EXPECT_EQ(buffer->width(), width);
            EXPECT_EQ(buffer->height(), 3U);
            EXPECT_EQ(buffer->rowBytes() % 64, 0U);
            EXPECT_GE(buffer->rowBytes(), width * bytesPerPixel(layout));
            for (uint32_t y = 0; y < 3; ++y) {
                uint8_t* row = buffer->row(y);
                EXPECT_EQ(reinterpret_cast<uintptr_t>(row) % 64, 0U);
                EXPECT_TRUE(
                    std::all_of(row, row + buffer->rowBytes(), [](uint8_t byte) { return byte == 0; }));
                std::fill_n(row, buffer->rowBytes(), uint8_t{0xFF});
            }
        }
    }
}

TEST(PixelBuffer, MovingKeepsThePixelsInPlace) {
    auto buffer = PixelBuffer::create(4, 4, PixelLayout::Gray8);
    ASSERT_TRUE(buffer);
    const uint8_t* place = buffer->row(2);
    const PixelBuffer moved = std::move(*buffer);
    EXPECT_EQ(moved.row(2), place);
}

TEST(PixelBuffer, ImpossibleSizesAreRefused) {
    EXPECT_FALSE(PixelBuffer::create(UINT32_MAX, UINT32_MAX, PixelLayout::RGBX32));
    EXPECT_FALSE(PixelBuffer::create(UINT32_MAX, 0x8000'0000U, PixelLayout::RGBX32));
}

TEST(PixelBuffer, EmptyPictureIsAllowed) {
    EXPECT_TRUE(PixelBuffer::create(0, 0, PixelLayout::Gray8));
    EXPECT_TRUE(PixelBuffer::create(0, 5, PixelLayout::RGBX32));
}

}  // namespace

}  // namespace fi::test

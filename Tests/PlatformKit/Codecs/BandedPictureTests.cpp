// SPDX-License-Identifier: Apache-2.0
// Pictures that become smaller while their bands come in.
#include "PlatformKit/Codecs/BandedPicture.h"

#include <gtest/gtest.h>

#include <cstring>

#include "PlatformKit/Codecs/CodecPictures.h"

namespace fi::test {

namespace {

constexpr PixelLayout kLayouts[] = {PixelLayout::Gray8,  PixelLayout::Gray16, PixelLayout::RGBX32,
                                    PixelLayout::RGBA32, PixelLayout::ARGB32, PixelLayout::RGBX64};

bool hasNoMeaning(PixelLayout layout, size_t byte) {
    if (layout == PixelLayout::RGBX64) return byte % 8 >= 6;
    return layout == PixelLayout::RGBX32 && byte % 4 == 3;
}

/// Wild bytes; those without meaning are set in full.
PixelBuffer makeNoise(uint32_t width, uint32_t height, PixelLayout layout) {
    auto picture = PixelBuffer::create(width, height, layout);
    if (!picture) throw std::bad_alloc();
    const auto bytes = static_cast<size_t>(bytesOfRow(width, layout));
    for (uint32_t y = 0; y < height; ++y) {
        for (size_t i = 0; i < bytes; ++i) {
            const auto noise = static_cast<uint8_t>((i * 7919 + y * 104'729) * 2'654'435'761U >> 24);
            picture->row(y)[i] = hasNoMeaning(layout, i) ? 255 : noise;
        }
    }
    return std::move(*picture);
}

PixelBuffer throughBands(const PixelBuffer& picture, uint32_t bandRows, SizeFloor floor) {
    auto banded =
        BandedPicture::create({picture.width(), picture.height(), picture.layout(), bandRows}, floor);
    EXPECT_TRUE(banded);
    for (uint32_t top = 0; !banded->isComplete();) {
        const BandedPicture::Band band = banded->begin();
        EXPECT_GT(band.rows, 0U);
        EXPECT_LE(band.rows, bandRows);
        const auto bytes = static_cast<size_t>(bytesOfRow(picture.width(), picture.layout()));
        for (uint32_t i = 0; i < band.rows; ++i)
            std::memcpy(band.row(i), picture.row(top + i), bytes);
        banded->finish(band);
        top += band.rows;
    }
    return banded->takeResult();
}

}  // namespace

TEST(BandedPicture, WithoutAFloorThePictureStaysAsItIs) {
    for (const PixelLayout layout : {PixelLayout::Gray8, PixelLayout::RGBX32}) {
        const PixelBuffer picture = makePicture(37, 23, layout);
        for (const SizeFloor floor : {SizeFloor{}, SizeFloor{0, 5}, SizeFloor{5, 0}, SizeFloor{37, 23},
                                      SizeFloor{20, 1}, SizeFloor{9999, 9999}}) {
            for (const uint32_t bandRows : {1U, 7U, 23U})
                EXPECT_EQ(meanDifference(throughBands(picture, bandRows, floor), picture), 0);
        }
    }
}

TEST(BandedPicture, TheResultIsTheSmallestByAWholeFactorThatReachesTheFloor) {
    const PixelBuffer picture = makePicture(100, 60, PixelLayout::Gray8);
    for (uint32_t wide = 1; wide <= 100; ++wide) {
        for (uint32_t high = 1; high <= 60; ++high) {
            const PixelBuffer small = throughBands(picture, 60, {wide, high});
            ASSERT_GE(small.width(), wide);
            ASSERT_GE(small.height(), high);
            const uint32_t next = 100 / small.width() + 1;
            ASSERT_TRUE(100 / next < wide || 60 / next < high || 100 / next == small.width());
        }
    }
    EXPECT_EQ(throughBands(picture, 60, {25, 15}).width(), 25U);
}

TEST(BandedPicture, EveryPixelIsTheExactMeanOfThoseThatItCovers) {
    for (const PixelLayout layout : kLayouts) {
        const PixelBuffer picture = makeNoise(101, 67, layout);
        for (const SizeFloor floor :
             {SizeFloor{50, 33}, SizeFloor{10, 10}, SizeFloor{7, 3}, SizeFloor{1, 1}}) {
            for (const uint32_t bandRows : {1U, 10U, 67U}) {
                const PixelBuffer small = throughBands(picture, bandRows, floor);
                EXPECT_TRUE(isBlockMeanOf(small, picture)) << floor.width << " " << bandRows;
            }
        }
    }
}

TEST(BandedPicture, BlackAndWhiteIsKeptInFull) {
    const PixelBuffer picture = makeNoise(101, 67, PixelLayout::Gray1);
    for (const SizeFloor floor : {SizeFloor{}, SizeFloor{1, 1}}) {
        const PixelBuffer kept = throughBands(picture, 10, floor);
        ASSERT_EQ(kept.width(), 101U);
        ASSERT_EQ(kept.height(), 67U);
        for (uint32_t y = 0; y < 67; ++y)
            EXPECT_EQ(std::memcmp(kept.row(y), picture.row(y), 13), 0) << y;
        EXPECT_EQ(BandedPicture::bytesNeeded({101, 67, PixelLayout::Gray1, 10}, floor), 64U * 67);
    }
}

TEST(BandedPicture, MemoryIsThatOfTheBandAndTheResult) {
    const BandedPicture::Shape shape{10'240, 10'000, PixelLayout::RGBX32, 16};
    EXPECT_EQ(BandedPicture::bytesNeeded(shape, {}), 10'240ULL * 10'000 * 4);
    EXPECT_EQ(BandedPicture::bytesNeeded(shape, {160, 156}), 10'240ULL * 16 * 4 + 160ULL * 4 * 156);
    EXPECT_FALSE(BandedPicture::bytesNeeded({UINT32_MAX, UINT32_MAX, PixelLayout::RGBX32, 1}, {}));
}

}  // namespace fi::test

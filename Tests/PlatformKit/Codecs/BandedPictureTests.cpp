// SPDX-License-Identifier: Apache-2.0
// Pictures that become smaller while their bands come in.
#include "PlatformKit/Codecs/BandedPicture.h"

#include <gtest/gtest.h>

#include <cstring>

#include "PlatformKit/Codecs/CodecPictures.h"

namespace fi::test {

namespace {

PixelBuffer throughBands(const PixelBuffer& picture, uint32_t bandRows, SizeFloor floor) {
    auto banded =
        BandedPicture::create({picture.width(), picture.height(), picture.layout(), bandRows}, floor);
    EXPECT_TRUE(banded);
    for (uint32_t top = 0; !banded->isComplete();) {
        const BandedPicture::Band band = banded->begin();
        EXPECT_GT(band.rows, 0U);
        EXPECT_LE(band.rows, bandRows);
        const size_t bytes = size_t{picture.width()} * bytesPerPixel(picture.layout());
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
    for (const PixelLayout layout : {PixelLayout::Gray8, PixelLayout::RGBX32}) {
        const PixelBuffer picture = makePicture(101, 67, layout);
        for (const SizeFloor floor :
             {SizeFloor{50, 33}, SizeFloor{10, 10}, SizeFloor{7, 3}, SizeFloor{1, 1}}) {
            for (const uint32_t bandRows : {1U, 10U, 67U}) {
                const PixelBuffer small = throughBands(picture, bandRows, floor);
                EXPECT_TRUE(isBlockMeanOf(small, picture)) << floor.width << " " << bandRows;
            }
        }
    }
}

TEST(BandedPicture, MemoryIsThatOfTheBandAndTheResult) {
    const BandedPicture::Shape shape{10'240, 10'000, PixelLayout::RGBX32, 16};
    EXPECT_EQ(BandedPicture::bytesNeeded(shape, {}), 10'240ULL * 10'000 * 4);
    EXPECT_EQ(BandedPicture::bytesNeeded(shape, {160, 156}), 10'240ULL * 16 * 4 + 160ULL * 4 * 156);
    EXPECT_FALSE(BandedPicture::bytesNeeded({UINT32_MAX, UINT32_MAX, PixelLayout::RGBX32, 1}, {}));
}

}  // namespace fi::test

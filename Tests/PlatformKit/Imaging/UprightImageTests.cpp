// SPDX-License-Identifier: Apache-2.0
// Upright pictures that fit a box: every orientation, every kind of file, every awkward size.
#include "PlatformKit/UprightImage.h"

#include <gtest/gtest.h>

#include "PlatformKit/Imaging/FlakySource.h"
#include "PlatformKit/Imaging/Looks.h"

namespace fi::test {
namespace {

class EveryOrientation : public testing::TestWithParam<uint16_t> {};

std::vector<Bytes> filesWith(uint16_t orientation) {
    const PixelBuffer color = storedFor(testPicture(240, 160), orientation);
    const PixelBuffer gray = storedFor(testPicture(240, 160, PixelLayout::Gray8), orientation);
    return {withExif(jpegOf(color), {.orientation = orientation}, ByteOrder::Little),
            withExif(jpegOf(gray), {.orientation = orientation}, ByteOrder::Big),
            tiffOf(color, orientation, ByteOrder::Big), tiffOf(gray, orientation, ByteOrder::Little)};
}

TEST_P(EveryOrientation, ComesOutUprightInFullSize) {
    for (const Bytes& file : filesWith(GetParam())) {
        const auto image = createUprightImage(*sourceOf(file), 0, 0, 0);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->width(), 240u);
        EXPECT_EQ(image->height(), 160u);
        EXPECT_TRUE(looksUpright(image.get()));
    }
}

TEST_P(EveryOrientation, ComesOutUprightInABox) {
    for (const Bytes& file : filesWith(GetParam())) {
        const auto image = createUprightImage(*sourceOf(file), 0, 90, 500);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->width(), 90u);
        EXPECT_EQ(image->height(), 60u);
        EXPECT_TRUE(looksUpright(image.get()));
    }
}

TEST_P(EveryOrientation, TurnsTheDensityWithThePicture) {
    const Bytes jpeg = jpegOf(storedFor(testPicture(40, 30), GetParam()), 0.9, Density{300, 100});
    const auto image = createUprightImage(*sourceOf(withExif(jpeg, {.orientation = GetParam()})), 0, 0, 0);
    const bool quarter = GetParam() >= 5;
    EXPECT_EQ(image->density(), (quarter ? NSSize{100, 300} : NSSize{300, 100}));
}

INSTANTIATE_TEST_SUITE_P(Exif, EveryOrientation, testing::Range(uint16_t{1}, uint16_t{9}));

TEST(UprightImage, AFailingReadNeverGivesAWrongPicture) {
    for (const Bytes& file : filesWith(6)) {
        const auto whole = createUprightImage(*sourceOf(file), 0, 50, 50);
        bool failed = true;
        for (int read = 0; failed; ++read) {
            ImageFailure failure;
            const auto source = flakySource(file, read, failed, &failure);
            const auto image = source ? createUprightImage(*source, 0, 50, 50, &failure) : nullptr;
            if (image) {
                EXPECT_EQ(meanDifference(*image, *whole), 0.0) << read;
            } else {
                EXPECT_EQ(failure.code, ImageError::ReadFailed) << read;
            }
        }
    }
}

TEST(UprightImage, FilesWithoutOrientationAreLeftAsStored) {
    for (const Bytes& file : {jpegOf(testPicture(60, 40)), tiffOf(testPicture(60, 40))}) {
        EXPECT_TRUE(looksUpright(createUprightImage(*sourceOf(file), 0, 0, 0).get()));
    }
}

TEST(UprightImage, FillsTheBoxOnOneSideAndKeepsTheShape) {
    const auto source = sourceOf(jpegOf(testPicture(1000, 600)));
    const auto sizeIn = [&](uint32_t width, uint32_t height) {
        const auto image = createUprightImage(*source, 0, width, height);
        return image ? std::pair(image->width(), image->height()) : std::pair(0u, 0u);
    };
    EXPECT_EQ(sizeIn(100, 100), std::pair(100u, 60u));
    EXPECT_EQ(sizeIn(100, 60), std::pair(100u, 60u));
    EXPECT_EQ(sizeIn(100, 30), std::pair(50u, 30u));
    EXPECT_EQ(sizeIn(500, 0), std::pair(500u, 300u));
    EXPECT_EQ(sizeIn(0, 60), std::pair(100u, 60u));
    EXPECT_EQ(sizeIn(999, 999), std::pair(999u, 599u));
    EXPECT_EQ(sizeIn(333, 1), std::pair(2u, 1u));
    EXPECT_EQ(sizeIn(1, 1), std::pair(1u, 1u));
}

TEST(UprightImage, NeverEnlarges) {
    const auto source = sourceOf(withExif(jpegOf(testPicture(100, 60)), {.orientation = 6}));
    for (const uint32_t side : {100u, 101u, 4000u, UINT32_MAX}) {
        const auto image = createUprightImage(*source, 0, side, side);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->width(), 60u);
        EXPECT_EQ(image->height(), 100u);
    }
}

TEST(UprightImage, SidesOfOnePixelSurvive) {
    const std::pair<uint32_t, uint32_t> sizes[] = {{1, 1}, {1, 500}, {500, 1}, {2, 300}, {3000, 2}};
    for (const auto& [width, height] : sizes) {
        for (const uint16_t orientation : {uint16_t{1}, uint16_t{6}, uint16_t{7}}) {
            const Bytes file = withExif(jpegOf(testPicture(width, height)), {.orientation = orientation});
            const auto image = createUprightImage(*sourceOf(file), 0, 50, 50);
            ASSERT_TRUE(image) << width << "x" << height;
            EXPECT_LE(image->width(), 50u);
            EXPECT_LE(image->height(), 50u);
            EXPECT_GE(image->width(), 1u);
            EXPECT_GE(image->height(), 1u);
        }
    }
}

TEST(UprightImage, SmallPicturesLookLikeTheLargeOne) {
    const auto source = sourceOf(jpegOf(testPicture(1600, 1200), 1.0));
    for (const uint32_t side : {32u, 96u, 120u, 199u, 201u, 256u, 400u, 640u, 1024u, 1599u}) {
        const auto image = createUprightImage(*source, 0, side, side);
        ASSERT_TRUE(image);
        EXPECT_TRUE(looksUpright(image.get()));
        const auto drawn = sourceOf(tiffOf(testPicture(image->width(), image->height())))->createImage(0);
        EXPECT_LT(meanDifference(*image, *drawn), 4.0) << side;
    }
}

TEST(UprightImage, CutFilesShowWhatIsThere) {
    const Bytes whole = withExif(jpegOf(storedFor(testPicture(400, 300), 3), 1.0), {.orientation = 3});
    const Bytes cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(whole.size() / 2));
    const auto image = createUprightImage(*sourceOf(cut), 0, 200, 200);
    ASSERT_TRUE(image);
    EXPECT_TRUE(image->isDamaged());
    EXPECT_TRUE(isClose(pixelAt(*image, 175, 131), kCorners.bottomRight));
}

TEST(UprightImage, FailuresHaveAReason) {
    const auto source = sourceOf(jpegOf(testPicture(20, 20)));
    ImageFailure failure;
    EXPECT_FALSE(createUprightImage(*source, 1, 10, 10, &failure));
    EXPECT_EQ(failure.code, ImageError::NoSuchImage);
    const Bytes onlyTheMark = {0xFF, 0xD8, 0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0};
    EXPECT_FALSE(createUprightImage(*sourceOf(onlyTheMark), 0, 10, 10, &failure));
    EXPECT_EQ(failure.code, ImageError::Damaged);
    EXPECT_TRUE(failure.text);
}

}  // namespace
}  // namespace fi::test

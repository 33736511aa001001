// SPDX-License-Identifier: Apache-2.0
// Drawing on a page: the origin at the bottom left, exact copies, scaling, masks.
#include "PlatformKit/CGContext.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "PlatformKit/Imaging/ImagePixels.h"
#include "PlatformKit/Imaging/Looks.h"

namespace fi::test {
namespace {

constexpr CGContextColor kWhite{255, 255, 255};

Ref<const CGImage> imageOf(PixelBuffer picture) {
    return ImagePixels::makeImage(std::move(picture), {});
}

TEST(CGContext, BeginsBlackAndTellsItsFormat) {
    const auto color = CGContext::create(5, 3, CGContextFormat::RGBX32)->createImage();
    EXPECT_EQ(color->width(), 5u);
    EXPECT_EQ(color->height(), 3u);
    EXPECT_EQ(color->bitsPerPixel(), 32u);
    EXPECT_EQ(color->colorSpace(), CGColorSpace::SRGB);
    EXPECT_EQ(pixelAt(*color, 4, 2), (Rgb{0, 0, 0}));
    const auto gray = CGContext::create(5, 3, CGContextFormat::Gray8)->createImage();
    EXPECT_EQ(gray->bitsPerPixel(), 8u);
    EXPECT_EQ(gray->colorSpace(), CGColorSpace::GenericGrayGamma22);
}

TEST(CGContext, PagesWithoutAreaOrBeyondTheLimitsAreRefused) {
    EXPECT_FALSE(CGContext::create(0, 5, CGContextFormat::Gray8));
    EXPECT_FALSE(CGContext::create(5, 0, CGContextFormat::Gray8));
    EXPECT_FALSE(CGContext::create(UINT32_MAX, UINT32_MAX, CGContextFormat::RGBX32));
    EXPECT_FALSE(CGContext::create(65000, 65000, CGContextFormat::Gray8));
}

TEST(CGContext, RectanglesCountFromTheBottomLeft) {
    const auto context = CGContext::create(6, 4, CGContextFormat::RGBX32);
    context->fillRect({0, 0, 6, 4}, kWhite);
    context->fillRect({1, 0, 2, 1}, {255, 0, 0});
    const auto page = context->createImage();
    EXPECT_EQ(pixelAt(*page, 1, 3), (Rgb{255, 0, 0}));
    EXPECT_EQ(pixelAt(*page, 2, 3), (Rgb{255, 0, 0}));
    EXPECT_EQ(pixelAt(*page, 3, 3), (Rgb{255, 255, 255}));
    EXPECT_EQ(pixelAt(*page, 1, 2), (Rgb{255, 255, 255}));
    EXPECT_EQ(pixelAt(*page, 0, 0), (Rgb{255, 255, 255}));
}

TEST(CGContext, ImagesOfTheSameSizeAreCopiedExactly) {
    const auto image = imageOf(testPicture(20, 10));
    const auto context = CGContext::create(40, 30, CGContextFormat::RGBX32);
    ASSERT_TRUE(context->drawImage(*image, {7, 5, 20, 10}));
    const auto page = context->createImage();
    for (uint32_t y = 0; y < 30; ++y) {
        for (uint32_t x = 0; x < 40; ++x) {
            const bool inside = x >= 7 && x < 27 && y >= 15 && y < 25;
            EXPECT_EQ(pixelAt(*page, x, y), inside ? pixelAt(*image, x - 7, y - 15) : (Rgb{0, 0, 0}));
        }
    }
}

TEST(CGContext, ImagesOfOtherSizesAreScaledIntoTheirRectangle) {
    const auto context = CGContext::create(100, 80, CGContextFormat::RGBX32);
    context->fillRect({0, 0, 100, 80}, kWhite);
    ASSERT_TRUE(context->drawImage(*imageOf(testPicture(400, 300)), {20, 10, 60, 45}));
    const auto page = context->createImage();
    // The rectangle's top is row 80 - 10 - 45 = 25.
    EXPECT_TRUE(isClose(pixelAt(*page, 25, 30), kCorners.topLeft));
    EXPECT_TRUE(isClose(pixelAt(*page, 75, 30), kCorners.topRight));
    EXPECT_TRUE(isClose(pixelAt(*page, 75, 65), kCorners.bottomRight));
    EXPECT_TRUE(isClose(pixelAt(*page, 25, 65), kCorners.bottomLeft));
    EXPECT_EQ(pixelAt(*page, 19, 40), (Rgb{255, 255, 255}));
    EXPECT_EQ(pixelAt(*page, 80, 40), (Rgb{255, 255, 255}));
    EXPECT_EQ(pixelAt(*page, 50, 24), (Rgb{255, 255, 255}));
    EXPECT_EQ(pixelAt(*page, 50, 70), (Rgb{255, 255, 255}));
}

TEST(CGContext, DrawingBeyondThePageIsCut) {
    constexpr int64_t kLow = std::numeric_limits<int64_t>::min();
    constexpr int64_t kHigh = std::numeric_limits<int64_t>::max();
    const auto image = imageOf(testPicture(8, 8));
    const auto context = CGContext::create(8, 8, CGContextFormat::RGBX32);
    const std::vector<uint8_t> coverage(64, 255);
    for (const int64_t far : {kLow, kLow + 8, int64_t{-9}, int64_t{9}, kHigh - 8, kHigh}) {
        EXPECT_TRUE(context->drawImage(*image, {far, 0, 8, 8}));
        EXPECT_TRUE(context->drawImage(*image, {0, far, 8, 8}));
        context->fillRect({0, far, 8, 8}, kWhite);
        EXPECT_TRUE(context->drawMask({0, far, 8, 8}, coverage, 8, kWhite));
    }
    const auto page = context->createImage();
    for (uint32_t i = 0; i < 8; ++i) {
        EXPECT_EQ(pixelAt(*page, i, i), (Rgb{0, 0, 0}));
    }
    EXPECT_TRUE(context->drawImage(*image, {-4, -4, 8, 8}));
    EXPECT_EQ(pixelAt(*context->createImage(), 0, 7), pixelAt(*image, 4, 3));
}

TEST(CGContext, RectanglesWithoutAreaDrawNothing) {
    const auto context = CGContext::create(4, 4, CGContextFormat::RGBX32);
    EXPECT_TRUE(context->drawImage(*imageOf(testPicture(8, 8)), {0, 0, 0, 4}));
    EXPECT_EQ(pixelAt(*context->createImage(), 0, 0), (Rgb{0, 0, 0}));
}

TEST(CGContext, GrayImagesCanBeDrawnOnAColourPageButNotTheOtherWay) {
    const auto gray = imageOf(testPicture(8, 8, PixelLayout::Gray8));
    const auto color = imageOf(testPicture(8, 8));
    const auto colorPage = CGContext::create(8, 8, CGContextFormat::RGBX32);
    const auto grayPage = CGContext::create(8, 8, CGContextFormat::Gray8);
    EXPECT_TRUE(colorPage->drawImage(*gray, {0, 0, 8, 8}));
    EXPECT_EQ(pixelAt(*colorPage->createImage(), 0, 0), pixelAt(*gray, 0, 0));
    EXPECT_TRUE(grayPage->drawImage(*gray, {0, 0, 8, 8}));
    EXPECT_FALSE(grayPage->drawImage(*color, {0, 0, 8, 8}));
}

TEST(CGContext, MasksLayAColourOverThePage) {
    const auto context = CGContext::create(4, 3, CGContextFormat::RGBX32);
    context->fillRect({0, 0, 4, 3}, kWhite);
    const std::vector<uint8_t> coverage = {255, 0, 9, 128, 0, 9};  // two columns of two rows, stride 3
    ASSERT_TRUE(context->drawMask({1, 0, 2, 2}, coverage, 3, {0, 0, 0}));
    const auto page = context->createImage();
    EXPECT_EQ(pixelAt(*page, 1, 1), (Rgb{0, 0, 0}));
    EXPECT_EQ(pixelAt(*page, 2, 1), (Rgb{255, 255, 255}));
    EXPECT_EQ(pixelAt(*page, 1, 2), (Rgb{127, 127, 127}));
    EXPECT_FALSE(context->drawMask({0, 0, 4, 3}, coverage, 4, {0, 0, 0}));
}

TEST(CGContext, SnapshotsDoNotChangeWithThePage) {
    const auto context = CGContext::create(2, 2, CGContextFormat::RGBX32);
    const auto before = context->createImage();
    context->fillRect({0, 0, 2, 2}, kWhite);
    EXPECT_EQ(pixelAt(*before, 0, 0), (Rgb{0, 0, 0}));
    EXPECT_EQ(pixelAt(*context->createImage(), 0, 0), (Rgb{255, 255, 255}));
}

}  // namespace
}  // namespace fi::test

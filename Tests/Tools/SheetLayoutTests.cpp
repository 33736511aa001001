// SPDX-License-Identifier: Apache-2.0
#include "SheetLayout.h"

#include <gtest/gtest.h>

namespace fi::test {
namespace {

constexpr size_t kCounts[] = {1, 2, 3, 5, 8, 13, 50, 200, 312, 400, 1000, 2500, 5000, 20'000, 100'000};
constexpr uint32_t kColumns[] = {0, 1, 2, 7, 40, 500};

/// Calls `check(layout)` for many photos and columns.
template <typename Check>
void forManyLayouts(Check check) {
    for (const size_t photos : kCounts) {
        for (const uint32_t columns : kColumns) {
            SCOPED_TRACE(testing::Message() << photos << " photos, columns asked for: " << columns);
            const auto layout = SheetLayout::forPhotos(photos, columns);
            ASSERT_TRUE(layout);
            check(*layout, photos, columns);
        }
    }
}

TEST(SheetLayout, HasAPlaceForEveryPhotoAndNoEmptyRow) {
    forManyLayouts([](const SheetLayout& layout, size_t photos, uint32_t) {
        EXPECT_GE(uint64_t{layout.columns()} * layout.rows(), photos);
        EXPECT_LT(uint64_t{layout.columns()} * (layout.rows() - 1), photos);
    });
}

TEST(SheetLayout, KeepsEveryCellOnThePageWithTheSameMargins) {
    forManyLayouts([](const SheetLayout& layout, size_t, uint32_t) {
        const auto first = layout.picture(0);
        const size_t cells = size_t{layout.columns()} * layout.rows();
        const auto last = layout.picture(cells - 1);
        EXPECT_EQ(first.x, first.y);
        EXPECT_EQ(last.x + layout.pictureSide() + first.x, layout.pageWidth());
        const uint32_t bottom = layout.hasCaptions()
                                    ? layout.captionLine(cells - 1, 1).y + layout.lineHeight()
                                    : last.y + layout.pictureSide();
        EXPECT_EQ(bottom + first.y, layout.pageHeight());
    });
}

TEST(SheetLayout, GoesFromLeftToRightAndThenDown) {
    const auto layout = SheetLayout::forPhotos(10, 4);
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->picture(3).y, layout->picture(0).y);
    EXPECT_GT(layout->picture(1).x, layout->picture(0).x + layout->pictureSide());
    EXPECT_EQ(layout->picture(4).x, layout->picture(0).x);
    EXPECT_GT(layout->picture(4).y, layout->captionLine(0, 1).y + layout->lineHeight());
}

TEST(SheetLayout, NoSideIsLongerThanThePageMayBe) {
    forManyLayouts([](const SheetLayout& layout, size_t, uint32_t) {
        EXPECT_LE(layout.pageWidth(), SheetLayout::kLongestSide);
        EXPECT_LE(layout.pageHeight(), SheetLayout::kLongestSide);
    });
}

TEST(SheetLayout, TakesNoMorePixelsThanItMayUnlessPicturesAreAsSmallAsCanBe) {
    forManyLayouts([](const SheetLayout& layout, size_t, uint32_t) {
        if (layout.pictureSide() == SheetLayout::kSmallestPicture) return;
        EXPECT_LE(uint64_t{layout.pageWidth()} * layout.pageHeight(), SheetLayout::kMostPixels);
    });
}

TEST(SheetLayout, ShowsPicturesInFullSizeWhileTheyFit) {
    EXPECT_EQ(SheetLayout::forPhotos(1, 0)->pictureSide(), SheetLayout::kLargestPicture);
    EXPECT_EQ(SheetLayout::forPhotos(350, 0)->pictureSide(), SheetLayout::kLargestPicture);
    EXPECT_LT(SheetLayout::forPhotos(1000, 0)->pictureSide(), SheetLayout::kLargestPicture);
    EXPECT_EQ(SheetLayout::forPhotos(100'000, 0)->pictureSide(), SheetLayout::kSmallestPicture);
}

TEST(SheetLayout, DropsCaptionsThatCouldNotBeRead) {
    EXPECT_TRUE(SheetLayout::forPhotos(1000, 0)->hasCaptions());
    const auto small = SheetLayout::forPhotos(5000, 0);
    EXPECT_LT(small->pictureSide(), SheetLayout::kSmallestCaptioned);
    EXPECT_FALSE(small->hasCaptions());
    EXPECT_EQ(small->lineHeight(), 0U);
}

TEST(SheetLayout, ChoosesColumnsForAPageOfFourByThree) {
    for (const size_t photos : {12U, 50U, 200U, 312U, 1000U, 5000U}) {
        const auto layout = SheetLayout::forPhotos(photos, 0);
        const double shape = double{1} * layout->pageWidth() / layout->pageHeight();
        EXPECT_NEAR(shape, 4.0 / 3.0, 0.25) << photos;
    }
    EXPECT_EQ(SheetLayout::forPhotos(1, 0)->columns(), 1U);
}

TEST(SheetLayout, AvoidsALastRowThatIsNearlyEmpty) {
    EXPECT_EQ(SheetLayout::forPhotos(2, 0)->columns(), 2U);
    EXPECT_EQ(SheetLayout::forPhotos(12, 0)->columns(), 4U);
    EXPECT_EQ(SheetLayout::forPhotos(15, 0)->columns(), 5U);
}

TEST(SheetLayout, TakesTheColumnsThatAreAskedFor) {
    EXPECT_EQ(SheetLayout::forPhotos(312, 5)->columns(), 5U);
    EXPECT_EQ(SheetLayout::forPhotos(3, 7)->columns(), 7U);
    EXPECT_EQ(SheetLayout::forPhotos(312, 1)->rows(), 312U);
}

TEST(SheetLayout, TakesMoreColumnsRatherThanAPageThatIsTooHigh) {
    const auto layout = SheetLayout::forPhotos(20'000, 1);
    EXPECT_GT(layout->columns(), 1U);
    EXPECT_EQ(layout->pictureSide(), SheetLayout::kSmallestPicture);
}

TEST(SheetLayout, RefusesWhatNoPageCanHold) {
    EXPECT_FALSE(SheetLayout::forPhotos(0, 0));
    EXPECT_FALSE(SheetLayout::forPhotos(400'000, 0));
    EXPECT_FALSE(SheetLayout::forPhotos(SIZE_MAX, 0));
}

TEST(SheetLayout, KnowsThePagesOfAllSheetsAndFewOtherSizes) {
    for (size_t photos = 1; photos < 20'000; photos += 1 + photos / 7) {
        for (const uint32_t columns : {0U, 1U, 7U, 100U}) {
            const auto layout = SheetLayout::forPhotos(photos, columns);
            if (!layout) continue;
            EXPECT_TRUE(SheetLayout::isPageSize(layout->pageWidth(), layout->pageHeight()))
                << photos << " in " << columns;
        }
    }
    constexpr int64_t kSizesOfPhotos[][2] = {
        {0, 0},       {160, 120},   {320, 240},   {640, 480},   {800, 600},   {1024, 768},  {1280, 960},
        {1600, 1200}, {1920, 1080}, {2048, 1536}, {2592, 1944}, {3008, 2000}, {3264, 2448}, {3456, 2304},
        {4000, 3000}, {4032, 3024}, {4608, 3456}, {6000, 4000}, {1240, 1754}, {2480, 3508}};
    for (const auto& size : kSizesOfPhotos) {
        EXPECT_FALSE(SheetLayout::isPageSize(size[0], size[1])) << size[0] << " x " << size[1];
        EXPECT_FALSE(SheetLayout::isPageSize(size[1], size[0])) << size[1] << " x " << size[0];
    }
}

}  // namespace
}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Run-length coded BMP files: runs, stretches, jumps, ends, and what breaks them off.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "PlatformKit/Codecs/BmpReader.h"
#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/MakeBmp.h"
#include "PlatformKit/Codecs/ScopedLimits.h"

namespace fi::test {
namespace {

using Bytes = std::vector<uint8_t>;

/// The colors are gray, ten times their index, so that a picture's bytes tell its indices.
BmpRecipe recipeOf(uint16_t bits, int32_t width, int32_t height, Bytes codes) {
    BmpRecipe recipe;
    recipe.bits = bits;
    recipe.width = width;
    recipe.height = height;
    recipe.compression = bits == 8 ? 1 : 2;
    for (uint8_t i = 0; i < 16; ++i) {
        const auto level = static_cast<uint8_t>(i * 10 + 5);
        recipe.palette.push_back({level, level, level});
    }
    recipe.pixels = std::move(codes);
    return recipe;
}

/// The indices of the picture, row by row from the top, as digits; '-' for rows that are missing. A '!'
/// stands before a damaged picture.
std::string decoded(const BmpRecipe& recipe) {
    const Bytes file = makeBmp(recipe);
    MemorySource source(file);
    const auto picture = decodeBmp(source, {});
    if (!picture) return picture.reason().text;
    std::string text = picture->damaged ? "!" : "";
    for (uint32_t y = 0; y < picture->pixels.height(); ++y) {
        if (y > 0) text += '/';
        for (uint32_t x = 0; x < picture->pixels.width(); ++x) {
            const uint8_t level = picture->pixels.row(y)[x];
            text += level == 128 ? '-' : static_cast<char>('0' + (level - 5) / 10);
        }
    }
    return text;
}

TEST(BmpRuns, EightBitRunsAndStretchesFillRowsFromTheBottom) {
    EXPECT_EQ(decoded(recipeOf(8, 5, 2, {3, 1, 2, 2, 0, 0, 0, 5, 1, 2, 3, 4, 5, 0, 0, 0, 0, 1})),
              "12345/11122");
}

TEST(BmpRuns, FourBitRunsAlternateAndStretchesArePacked) {
    EXPECT_EQ(decoded(recipeOf(4, 7, 2, {7, 0x12, 0, 0, 0, 7, 0x12, 0x34, 0x56, 0x70, 0, 0, 0, 1})),
              "1234567/1212121");
}

TEST(BmpRuns, AStretchFillsAnEvenNumberOfBytes) {
    EXPECT_EQ(decoded(recipeOf(4, 9, 1, {0, 5, 0x12, 0x34, 0x50, 0xEE, 4, 0x66, 0, 1})), "123456666");
    EXPECT_EQ(decoded(recipeOf(8, 6, 1, {0, 3, 1, 2, 3, 0xEE, 3, 4, 0, 1})), "123444");
    EXPECT_EQ(decoded(recipeOf(8, 8, 1, {0, 4, 1, 2, 3, 4, 4, 5, 0, 1})), "12345555");
}

TEST(BmpRuns, TopDownFilesAreReadTheSameWay) {
    EXPECT_EQ(decoded(recipeOf(8, 2, -2, {2, 1, 0, 0, 2, 2, 0, 1})), "11/22");
}

TEST(BmpRuns, PixelsThatAreLeftOutHaveTheFirstColor) {
    EXPECT_EQ(decoded(recipeOf(8, 4, 3, {1, 7, 0, 2, 1, 1, 1, 8, 0, 0, 2, 9, 0, 1})), "9900/0080/7000");
}

TEST(BmpRuns, ColorsComeFromThePalette) {
    BmpRecipe recipe = recipeOf(8, 2, 1, {1, 1, 1, 0, 0, 1});
    recipe.palette[1] = {30, 20, 10};
    const Bytes file = makeBmp(recipe);
    MemorySource source(file);
    const auto picture = decodeBmp(source, {});
    ASSERT_TRUE(picture);
    ASSERT_EQ(picture->pixels.layout(), PixelLayout::RGBX32);
    EXPECT_THAT(Bytes(picture->pixels.row(0), picture->pixels.row(0) + 8),
                testing::ElementsAre(10, 20, 30, 255, 5, 5, 5, 255));
}

TEST(BmpRuns, RunsThatPassTheEndOfTheirRowAreCutThere) {
    EXPECT_EQ(decoded(recipeOf(8, 2, 2, {9, 1, 5, 3, 0, 0, 0, 3, 2, 2, 2, 0, 0, 1})), "22/11");
    EXPECT_EQ(decoded(recipeOf(4, 3, 1, {255, 0x12, 0, 1})), "121");
}

TEST(BmpRuns, TheEndMarkMayBeMissingWhenThePictureIsComplete) {
    EXPECT_EQ(decoded(recipeOf(8, 2, 2, {2, 1, 0, 0, 2, 2})), "22/11");
    EXPECT_EQ(decoded(recipeOf(8, 2, 2, {2, 1, 0, 0, 2, 2, 0, 0})), "22/11");
    EXPECT_EQ(decoded(recipeOf(8, 3, 1, {0, 3, 1, 2, 3})), "123");
}

TEST(BmpRuns, RowsBehindABreakAreGray) {
    EXPECT_EQ(decoded(recipeOf(8, 2, 3, {2, 1, 0, 0, 1, 2})), "!--/20/11");
    EXPECT_EQ(decoded(recipeOf(8, 2, 3, {2, 1, 0, 0})), "!--/--/11");
    EXPECT_EQ(decoded(recipeOf(8, 2, 3, {2, 1, 0})), "!--/--/11");
    EXPECT_EQ(decoded(recipeOf(8, 4, 2, {0, 4, 1, 2})), "!----/1200");
    EXPECT_EQ(decoded(recipeOf(8, 2, 2, {2, 1, 0, 2, 0})), "!--/11");
    EXPECT_EQ(decoded(recipeOf(8, 2, 2, {2})), "The file ends before the picture begins.");
}

TEST(BmpRuns, AJumpOutOfThePictureBreaksItOff) {
    EXPECT_EQ(decoded(recipeOf(8, 2, 3, {2, 1, 0, 2, 0, 3, 2, 2, 0, 1})), "!--/--/11");
    EXPECT_EQ(decoded(recipeOf(8, 2, 3, {1, 1, 0, 2, 2, 0, 2, 2, 0, 1})), "!--/--/10");
    EXPECT_EQ(decoded(recipeOf(8, 2, 3, {1, 1, 0, 2, 1, 2, 0, 1})), "00/00/10");
}

TEST(BmpRuns, AnEndlessStreamIsNotReadToItsEnd) {
    BmpRecipe recipe = recipeOf(8, 2, 2, {});
    for (int i = 0; i < 500'000; ++i) {
        recipe.pixels.push_back(1);
        recipe.pixels.push_back(3);
    }
    EXPECT_EQ(decoded(recipe), "!--/33");
    const Bytes file = makeBmp(recipe);
    CountingSource source(file);
    ASSERT_TRUE(decodeBmp(source, {}));
    EXPECT_LT(source.bytesRead(), 5000U);
}

TEST(BmpRuns, AFloorLeavesThemInFull) {
    const Bytes file = makeBmp(recipeOf(8, 4, 2, {4, 1, 0, 0, 4, 2, 0, 1}));
    MemorySource source(file);
    const auto picture = decodeBmp(source, {1, 1});
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->pixels.width(), 4U);
}

TEST(BmpRuns, HarmedFilesAreHarmless) {
    const BmpRecipe recipes[] = {
        recipeOf(8, 5, 2, {3, 1, 2, 2, 0, 0, 0, 5, 1, 2, 3, 4, 5, 0, 0, 0, 0, 1}),
        recipeOf(4, 7, 2, {7, 0x12, 0, 0, 0, 7, 0x12, 0x34, 0x56, 0x70, 0, 0, 0, 1})};
    const ScopedLimits limits([](DecodeLimits& l) { l.maximumPixels = 1 << 16; });
    for (const BmpRecipe& recipe : recipes) {
        const Bytes file = makeBmp(recipe);
        for (uint32_t seed = 0; seed < 2000; ++seed) {
            const Bytes harmed = mutated(file, seed, 4);
            MemorySource source(harmed);
            const auto picture = decodeBmp(source, {});
            EXPECT_TRUE(picture || !picture.reason().text.empty());
        }
    }
}

}  // namespace
}  // namespace fi::test

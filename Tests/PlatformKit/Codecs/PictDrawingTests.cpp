// SPDX-License-Identifier: Apache-2.0
// Where and how the parts of a QuickDraw picture are drawn: rectangles, regions, modes and colors.
#include <gtest/gtest.h>

#include "PlatformKit/Codecs/PictBytes.h"
#include "PlatformKit/Codecs/PictText.h"

namespace fi::test {

namespace {

constexpr int16_t kEnd = 0x7FFF;

std::string drawn(PictBytes& pict) {
    const auto picture = decodePictBytes(pict.end().bytes());
    if (!picture) return picture.reason().text;
    if (picture->damaged || picture->partial) return "damaged or partial";
    return pictText(picture->pixels);
}

/// All black.
PictMapRecipe block(const PictRect& bounds) {
    PictMapRecipe recipe;
    recipe.bounds = bounds;
    const size_t rowBytes = (bounds.width() + 15) / 16 * 2;
    recipe.rows.assign(bounds.height(), std::vector<uint8_t>(rowBytes, 0xFF));
    return recipe;
}

/// One pixel of the color, as wide as the target.
PictMapRecipe colored(const PictRect& target, const Rgb& color, uint16_t mode = 0) {
    PictMapRecipe recipe;
    recipe.bounds = {0, 0, 1, 1};
    recipe.target = target;
    recipe.bits = 32;
    recipe.mode = mode;
    recipe.rows = {{0, color[0], color[1], color[2]}};
    return recipe;
}

}  // namespace

TEST(PictDrawing, WhatIsNotDrawnIsWhite) {
    PictBytes pict(2, {0, 0, 3, 6});
    EXPECT_EQ(drawn(pict.map(block({1, 2, 2, 4}))), "......\n..##..\n......\n");
}

TEST(PictDrawing, TheFrameIsTheOriginAndCutsWhatLiesOutside) {
    PictBytes pict(2, {10, 20, 13, 26});
    pict.map(block({8, 18, 11, 22})).map(block({12, 25, 30, 60})).map(block({100, 100, 110, 110}));
    EXPECT_EQ(drawn(pict), "##....\n......\n.....#\n");
}

TEST(PictDrawing, BandsMakeOnePicture) {
    PictBytes pict(2, {0, 0, 4, 8});
    for (const int32_t top : {2, 0, 3, 1}) {  // in any order
        PictMapRecipe band = bitMap(8, {{static_cast<uint8_t>(0x80 >> top), 0}});
        band.bounds = {top, 0, top + 1, 8};
        pict.map(band);
    }
    EXPECT_EQ(drawn(pict), "#.......\n.#......\n..#.....\n...#....\n");
}

TEST(PictDrawing, ThePartThatTheSourceNamesIsDrawn) {
    PictMapRecipe recipe = bitMap(16, {{0x00, 0x00}, {0x15, 0x00}, {0x0A, 0x00}});
    recipe.bounds = {100, 200, 103, 216};
    recipe.source = PictRect{101, 203, 103, 208};
    recipe.target = PictRect{1, 1, 3, 6};
    PictBytes pict(2, {0, 0, 4, 8});
    EXPECT_EQ(drawn(pict.map(recipe)), "........\n.#.#.#..\n..#.#...\n........\n");
}

TEST(PictDrawing, ASourceThatReachesBeyondTheMapDrawsNothingThere) {
    PictMapRecipe recipe = block({0, 0, 2, 2});
    recipe.source = PictRect{-1, -1, 3, 3};
    recipe.target = PictRect{0, 0, 4, 4};
    PictBytes pict(2, {0, 0, 4, 4});
    EXPECT_EQ(drawn(pict.map(recipe)), "....\n.##.\n.##.\n....\n");
}

TEST(PictDrawing, ATargetOfAnotherSizeScalesToTheNearestPixel) {
    PictMapRecipe recipe = bitMap(2, {{0x40, 0}, {0x80, 0}});
    recipe.target = PictRect{0, 0, 4, 6};
    PictBytes larger(2, {0, 0, 4, 6});
    EXPECT_EQ(drawn(larger.map(recipe)), "...###\n...###\n###...\n###...\n");
    PictMapRecipe wide = bitMap(6, {{0x4C, 0}, {0xFF, 0}, {0x30, 0}});
    wide.target = PictRect{0, 0, 1, 3};
    PictBytes smaller(2, {0, 0, 1, 3});
    EXPECT_EQ(drawn(smaller.map(wide)), "###\n") << "the middle row";
    wide.target = PictRect{0, 0, 3, 2};
    PictBytes narrower(2, {0, 0, 3, 2});
    EXPECT_EQ(drawn(narrower.map(wide)), "##\n##\n..\n") << "columns 1 and 4";
}

TEST(PictDrawing, ADrawingAtAnotherResolutionIsScaledToTheFramesPixels) {
    PictBytes pict(2, {0, 0, 1, 2});
    pict.extendedHeader(144 << 16, 144 << 16, {}).map(bitMap(2, {{0x40, 0}}));
    EXPECT_EQ(drawn(pict), "..##\n..##\n");
}

TEST(PictDrawing, ASpaceOfTheDrawingStandsForTheFrame) {
    PictBytes pict(2, {0, 0, 2, 3});
    pict.extendedHeader(72 << 16, 72 << 16, {10, 10, 12, 13}).map(block({11, 11, 12, 12}));
    EXPECT_EQ(drawn(pict), "...\n.#.\n");
}

TEST(PictDrawing, ARegionIsAMask) {
    PictMapRecipe recipe = block({0, 0, 4, 8});
    // From row 0: columns 1 to 5; from row 1: 1 and 4 to 5; row 2: 4 to 6; from row 3: 6.
    recipe.mask = {0, 1, 4, 7, 0, 1, 6, kEnd, 1, 2, 4, kEnd, 2, 1, 2, 6, 7, kEnd, 3, 4, 6, kEnd, kEnd};
    for (const bool packed : {false, true}) {
        recipe.packed = packed;
        PictBytes pict(2, {0, 0, 4, 8});
        EXPECT_EQ(drawn(pict.map(recipe)), ".#####..\n.#..##..\n....###.\n......#.\n");
    }
    recipe.mask = {1, 5, 3, 100};
    PictBytes rectangle(1, {0, 0, 4, 8});
    EXPECT_EQ(drawn(rectangle.map(recipe)), "........\n.....###\n.....###\n........\n");
}

TEST(PictDrawing, AMaskBelongsToTheTarget) {
    PictMapRecipe recipe = colored({0, 0, 4, 4}, {255, 0, 0});
    recipe.mask = {2, 2, 3, 4};
    PictBytes pict(2, {0, 0, 4, 4});
    EXPECT_EQ(drawn(pict.map(recipe)), "....\n....\n..rr\n....\n");
}

TEST(PictDrawing, TheClipHoldsForAllThatFollows) {
    PictBytes pict(2, {0, 0, 3, 6});
    pict.opcode(1).word(10).rect({0, 0, 2, 3}).map(block({1, 1, 3, 6}));
    // Columns 4 and 5 from row 0 on.
    pict.opcode(1).word(10 + 16 + 2).rect({0, 4, 3, 6});
    for (const int word : {0, 4, 6, 0x7FFF, 3, 4, 6, 0x7FFF, 0x7FFF})
        pict.word(static_cast<uint32_t>(word));
    pict.map(block({0, 0, 1, 6}));
    EXPECT_EQ(drawn(pict), "....##\n.##...\n......\n");
}

TEST(PictDrawing, TheOriginMovesWhatFollows) {
    PictBytes pict(2, {0, 0, 3, 6});
    pict.opcode(0x0C).word(10).word(20).opcode(0x0C).word(5).word(0xFFFF);
    PictMapRecipe recipe = block({19, 15, 22, 21});
    recipe.mask = {20, 16, 21, 30};
    EXPECT_EQ(drawn(pict.map(recipe)), "......\n.#####\n......\n");
}

TEST(PictDrawing, AClipStaysWhereItWasWhenTheOriginMoves) {
    PictBytes pict(2, {0, 0, 1, 6});
    pict.opcode(1).word(10).rect({0, 0, 1, 3}).opcode(0x0C).word(1).word(0).map(block({0, 0, 1, 6}));
    EXPECT_EQ(drawn(pict), "###...\n");
}

TEST(PictDrawing, BitMapsHaveTheColorsOfTheDrawing) {
    PictBytes pict(2, {0, 0, 3, 2});
    const auto row = [](int32_t top, uint16_t mode) {
        PictMapRecipe recipe = bitMap(2, {{0x80, 0}});
        recipe.target = PictRect{top, 0, top + 1, 2};
        recipe.mode = mode;
        return recipe;
    };
    pict.opcode(0x1A).word(0xFFFF).word(0).word(0).opcode(0x1B).word(0).word(0).word(0xFFFF);
    pict.map(row(0, 0)).map(row(1, 1));
    pict.opcode(0x0E).longWord(341).opcode(0x0F).longWord(33).map(row(2, 0));
    EXPECT_EQ(drawn(pict), "rb\nr.\ng#\n");
}

TEST(PictDrawing, EveryModeCombinesAsItIsDefined) {
    const Rgb below{200, 100, 0};
    const Rgb above{100, 200, 255};
    const struct {
        uint16_t mode;
        Rgb result;
    } cases[] = {
        {0, above},
        {1, {200 & 100, 100 & 200, 0}},
        {2, {200 ^ 155, 100 ^ 55, 0}},
        {3, {200 | 155, 100 | 55, 0}},
        {4, {155, 55, 0}},
        {5, {200 & 155, 100 & 55, 0}},
        {6, {200 ^ 100, 100 ^ 200, 255}},
        {7, {200 | 100, 100 | 200, 255}},
        {8, above},             // patterns have no pixels to draw with
        {32, {160, 140, 102}},  // 40 percent
        {33, {102, 102, 102}},  // at most the operand
        {34, {44, 44, 255}},    // modulo 256
        {35, {102, 102, 102}},  // at least the operand
        {36, above},
        {37, {200, 200, 255}},
        {38, {100, 156, 1}},
        {39, {100, 100, 0}},
        {64, above},  // dithered
        {64 + 37, {200, 200, 255}},
    };
    for (const auto& c : cases) {
        PictBytes pict(2, {0, 0, 1, 1});
        pict.opcode(0x1F).word(0x6600).word(0x6600).word(0x6600);
        pict.map(colored({0, 0, 1, 1}, below)).map(colored({0, 0, 1, 1}, above, c.mode));
        const auto picture = decodePictBytes(pict.end().bytes());
        ASSERT_TRUE(picture);
        EXPECT_EQ(colorAt(picture->pixels, 0, 0), c.result) << c.mode;
    }
}

TEST(PictDrawing, TransparentDrawingLeavesTheBackgroundColorOut) {
    PictBytes pict(2, {0, 0, 1, 2});
    pict.opcode(0x1B).word(0).word(0).word(0xFFFF).map(colored({0, 0, 1, 2}, {0, 255, 0}));
    pict.map(colored({0, 0, 1, 1}, {0, 0, 255}, 36)).map(colored({0, 1, 1, 2}, {255, 0, 0}, 36));
    EXPECT_EQ(drawn(pict), "gr\n");
}

TEST(PictDrawing, BitMapsOfBlackAndWhiteStayBitsInBooleanModes) {
    const auto row = [](uint8_t bits, uint16_t mode) {
        PictMapRecipe recipe = bitMap(4, {{bits, 0}});
        recipe.mode = mode;
        return recipe;
    };
    const std::pair<uint16_t, const char*> cases[] = {{0, "#.#.\n"}, {1, "###.\n"}, {2, ".##.\n"},
                                                      {3, ".#..\n"}, {4, ".#.#\n"}, {5, "##.#\n"}};
    for (const auto& [mode, text] : cases) {
        PictBytes pict(2, {0, 0, 1, 4});
        pict.map(row(0xC0, 0)).map(row(0xA0, mode));
        const auto picture = decodePictBytes(pict.end().bytes());
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->pixels.layout(), PixelLayout::Gray1);
        EXPECT_EQ(pictText(picture->pixels), text) << mode;
    }
}

TEST(PictDrawing, BlendingBlackAndWhiteNeedsGrays) {
    PictBytes pict(2, {0, 0, 1, 8});
    pict.opcode(0x1F).word(0x8000).word(0x8000).word(0x8000);
    PictMapRecipe recipe = block({0, 0, 1, 8});
    recipe.mode = 32;
    const auto picture = decodePictBytes(pict.map(recipe).end().bytes());
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->pixels.layout(), PixelLayout::Gray8);
    EXPECT_EQ(picture->pixels.row(0)[0], 127);
}

}  // namespace fi::test

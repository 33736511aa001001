// SPDX-License-Identifier: Apache-2.0
// QuickDraw pictures: every kind of map, packing and depth, and what a picture's head says.
#include <gtest/gtest.h>

#include <cmath>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/PictBytes.h"
#include "PlatformKit/Codecs/PictReader.h"
#include "PlatformKit/Codecs/PictText.h"

namespace fi::test {

namespace {

constexpr PictRect kFrame{0, 0, 2, 16};
const std::vector<std::vector<uint8_t>> kTwoRows = {{0xF0, 0x01}, {0x80, 0xFF}};
constexpr const char* kTwoRowsText = "####...........#\n#.......########\n";

PictMapRecipe indexed(uint16_t bits, const std::vector<uint16_t>& colors, std::vector<uint8_t> row,
                      uint16_t width) {
    PictMapRecipe recipe;
    recipe.bounds = {0, 0, 1, width};
    recipe.bits = bits;
    recipe.colors = colors;
    recipe.rows = {std::move(row)};
    return recipe;
}

/// Words that no packing leaves as they are: a run, then different ones.
std::vector<uint8_t> wordsOfRow(uint32_t width) {
    std::vector<uint8_t> row;
    for (uint32_t x = 0; x < width; ++x) {
        const uint32_t word = x < width / 2 ? 0x7C00 : (x * 1057U) & 0x7FFF;
        row.push_back(static_cast<uint8_t>(word >> 8));
        row.push_back(static_cast<uint8_t>(word & 0xFF));
    }
    return row;
}

uint8_t widened(uint32_t five) {
    return static_cast<uint8_t>(five << 3 | five >> 2);
}

}  // namespace

TEST(PictReader, RecognisesBothVersionsWithAndWithoutTheFileHeader) {
    for (const uint32_t version : {1U, 2U}) {
        for (const bool fileHeader : {false, true}) {
            PictBytes pict(version, kFrame, fileHeader);
            pict.end();
            EXPECT_TRUE(looksLikePict(ByteView(pict.bytes()))) << version << fileHeader;
            EXPECT_FALSE(looksLikePict(ByteView(firstBytes(pict.bytes(), fileHeader ? 522 : 10))));
        }
    }
}

TEST(PictReader, RecognisesNoOtherBytes) {
    EXPECT_FALSE(looksLikePict({}));
    EXPECT_FALSE(looksLikePict(ByteView(PictBytes(2, {0, 0, 0, 16}).end().bytes()))) << "an empty frame";
    EXPECT_FALSE(looksLikePict(ByteView(PictBytes(2, {5, 9, 6, 8}).end().bytes()))) << "a frame inside out";
    EXPECT_FALSE(looksLikePict(ByteView(PictBytes(1, kFrame).byte(0x13).bytes())))
        << "an opcode that version 1 does not have";
    EXPECT_FALSE(looksLikePict(ByteView(std::vector<uint8_t>(600))));
    const auto failure = decodePictBytes(std::vector<uint8_t>(600));
    ASSERT_FALSE(failure);
    EXPECT_EQ(failure.reason().code, CodecError::NotThisFormat);
}

TEST(PictReader, DrawsBitMapsOfBothVersionsAsBlackOnWhite) {
    for (const uint32_t version : {1U, 2U}) {
        for (const bool fileHeader : {false, true}) {
            for (const bool packed : {false, true}) {
                PictBytes pict(version, kFrame, fileHeader);
                if (version == 2) pict.plainHeader();
                PictMapRecipe recipe = bitMap(16, kTwoRows);
                recipe.packed = packed;
                const auto picture = decodePictBytes(pict.map(recipe).end().bytes());
                ASSERT_TRUE(picture);
                EXPECT_EQ(picture->pixels.layout(), PixelLayout::Gray1);
                EXPECT_EQ(pictText(picture->pixels), kTwoRowsText);
                EXPECT_FALSE(picture->damaged || picture->partial);
            }
        }
    }
}

TEST(PictReader, UnpacksRowsFromEightBytesOn) {
    for (const size_t rowBytes : {6U, 8U, 20U, 250U, 252U, 1000U}) {
        std::vector<uint8_t> row(rowBytes, 0xFF);
        row[1] = 0x0F;
        row[rowBytes - 1] = 0xFE;
        const auto width = static_cast<uint16_t>(rowBytes * 8);
        const auto picture =
            decodePictBytes(PictBytes(2, {0, 0, 2, width}).map(bitMap(width, {row, row})).end().bytes());
        ASSERT_TRUE(picture);
        ASSERT_FALSE(picture->damaged) << rowBytes;
        const PixelBuffer& pixels = picture->pixels;
        EXPECT_EQ(pixels.row(1)[0], 0x00);
        EXPECT_EQ(pixels.row(1)[1], 0xF0) << rowBytes;
        EXPECT_EQ(pixels.row(1)[rowBytes - 1], 0x01) << rowBytes;
    }
}

TEST(PictReader, RowsOfUpTo250BytesAreReadWithEitherLengthThatWritersGiveThem) {
    for (const unsigned countBytes : {1U, 2U}) {
        std::vector<uint8_t> row(216, 0);
        for (size_t i = 0; i < row.size(); i += 3)
            row[i] = static_cast<uint8_t>(i);
        PictMapRecipe recipe = indexed(8, {}, row, 216);
        for (uint16_t i = 0; i < 256; ++i) {
            const uint16_t level = static_cast<uint16_t>(i << 8);
            recipe.colors.insert(recipe.colors.end(), {i, level, level, level});
        }
        recipe.countBytes = countBytes;
        const auto picture = decodePictBytes(PictBytes(2, recipe.bounds).map(recipe).end().bytes());
        ASSERT_TRUE(picture);
        ASSERT_EQ(picture->pixels.layout(), PixelLayout::Gray8);
        EXPECT_FALSE(picture->damaged);
        EXPECT_TRUE(std::equal(row.begin(), row.end(), picture->pixels.row(0))) << countBytes;
    }
}

TEST(PictReader, EveryDepthOfIndicesLooksItsColorsUp) {
    // Color number n is (n, 2n, 3n).
    std::vector<uint16_t> colors;
    for (uint16_t i = 0; i < 16; ++i) {
        colors.insert(colors.end(), {i, static_cast<uint16_t>(i << 8), static_cast<uint16_t>(i << 9),
                                     static_cast<uint16_t>(i * 768)});
    }
    const struct {
        uint16_t bits;
        std::vector<uint8_t> row;
        std::vector<uint8_t> indices;
    } cases[] = {
        {1, {0xA5, 0}, {1, 0, 1, 0, 0, 1, 0, 1}},
        {2, {0x1B, 0xE4}, {0, 1, 2, 3, 3, 2, 1, 0}},
        {4, {0x0F, 0x5A, 0x81, 0xC3}, {0, 15, 5, 10, 8, 1, 12, 3}},
        {8, {7, 0, 15, 1, 2, 3, 9, 4}, {7, 0, 15, 1, 2, 3, 9, 4}},
    };
    for (const auto& c : cases) {
        const std::vector<uint16_t> known(colors.begin(), colors.begin() + (4 << std::min<int>(c.bits, 4)));
        for (const bool packed : {false, true}) {
            PictMapRecipe recipe = indexed(c.bits, known, c.row, 8);
            recipe.packed = packed;
            const auto picture = decodePictBytes(PictBytes(2, {0, 0, 1, 8}).map(recipe).end().bytes());
            ASSERT_TRUE(picture);
            ASSERT_EQ(picture->pixels.layout(), PixelLayout::RGBX32);
            for (uint32_t x = 0; x < 8; ++x) {
                const uint8_t n = c.indices[x];
                EXPECT_EQ(colorAt(picture->pixels, x, 0), (Rgb{n, uint8_t(2 * n), uint8_t(3 * n)}))
                    << c.bits;
            }
        }
    }
}

TEST(PictReader, ColorTablesAreReadByNumberOrInOrder) {
    const uint16_t red[] = {0xFFFF, 0, 0};
    const uint16_t blue[] = {0, 0, 0xFFFF};
    const auto table = [&](uint16_t first, uint16_t second) {
        return std::vector<uint16_t>{first, red[0], red[1], red[2], second, blue[0], blue[1], blue[2]};
    };
    const Rgb kRed{255, 0, 0};
    const Rgb kBlue{0, 0, 255};
    const struct {
        uint16_t flags;
        std::vector<uint16_t> colors;
        Rgb zero;
        Rgb one;
    } cases[] = {
        {0, table(0, 1), kRed, kBlue},
        {0, table(1, 0), kBlue, kRed},       // numbered; no case of numbers that are all zero
        {0x8000, table(1, 0), kRed, kBlue},  // a device's colors stand in order
        {0, table(0, 0), kRed, kBlue},       // numbers that were left at zero
    };
    for (const auto& c : cases) {
        PictMapRecipe recipe = indexed(1, c.colors, {0x40, 0}, 2);
        recipe.colorFlags = c.flags;
        const auto picture = decodePictBytes(PictBytes(2, {0, 0, 1, 2}).map(recipe).end().bytes());
        ASSERT_TRUE(picture);
        EXPECT_EQ(colorAt(picture->pixels, 0, 0), c.zero) << c.flags << c.colors[0];
        EXPECT_EQ(colorAt(picture->pixels, 1, 0), c.one) << c.flags << c.colors[0];
    }
}

TEST(PictReader, TheLayoutIsTheSimplestForAllParts) {
    const std::vector<uint16_t> blackAndWhite = {0, 0xFFFF, 0xFFFF, 0xFFFF, 1, 0, 0, 0};
    const std::vector<uint16_t> grays = {0, 0xFFFF, 0xFFFF, 0xFFFF, 1, 0x8000, 0x8000, 0x8000};
    const std::vector<uint16_t> colors = {0, 0xFFFF, 0xFFFF, 0xFFFF, 1, 0x8000, 0x8000, 0x8100};
    const auto part = [&](const std::vector<uint16_t>& table) { return indexed(1, table, {0x80, 0}, 8); };
    const struct {
        std::vector<PictMapRecipe> parts;
        PixelLayout layout;
        uint32_t bits;
        uint32_t components;
    } cases[] = {
        {{bitMap(16, kTwoRows)}, PixelLayout::Gray1, 1, 1},
        {{part(blackAndWhite), bitMap(16, kTwoRows)}, PixelLayout::Gray1, 1, 1},
        {{part(grays)}, PixelLayout::Gray8, 8, 1},
        {{bitMap(16, kTwoRows), part(grays)}, PixelLayout::Gray8, 8, 1},
        {{indexed(8, blackAndWhite, std::vector<uint8_t>(8), 8)}, PixelLayout::Gray8, 8, 1},
        {{bitMap(16, kTwoRows), part(grays), part(colors)}, PixelLayout::RGBX32, 8, 3},
    };
    for (const auto& c : cases) {
        PictBytes pict(2, kFrame);
        for (const PictMapRecipe& recipe : c.parts)
            pict.map(recipe);
        const auto picture = decodePictBytes(pict.end().bytes());
        const auto header = pictHeader(pict.bytes());
        ASSERT_TRUE(picture && header);
        EXPECT_EQ(picture->pixels.layout(), c.layout);
        EXPECT_EQ(header->bitsPerComponent, c.bits);
        EXPECT_EQ(header->components, c.components);
        EXPECT_EQ(header->model, c.components == 1 ? ColorModel::Gray : ColorModel::RGB);
        EXPECT_EQ(header->pages, 1U);
    }
}

TEST(PictReader, SixteenBitsAreReadPackedAndUnpacked) {
    for (const uint16_t packType : std::initializer_list<uint16_t>{0, 1, 3}) {
        for (const uint16_t width : {uint16_t{3}, uint16_t{9}, uint16_t{200}}) {
            PictMapRecipe recipe;
            recipe.bounds = {0, 0, 1, width};
            recipe.bits = 16;
            recipe.packType = packType;
            recipe.rows = {wordsOfRow(width)};
            const auto picture = decodePictBytes(PictBytes(2, recipe.bounds).map(recipe).end().bytes());
            ASSERT_TRUE(picture);
            for (uint32_t x = 0; x < width; ++x) {
                const uint32_t word = x < width / 2U ? 0x7C00 : (x * 1057U) & 0x7FFF;
                const Rgb expected{widened(word >> 10), widened(word >> 5 & 31), widened(word & 31)};
                ASSERT_EQ(colorAt(picture->pixels, x, 0), expected) << packType << " " << width << " " << x;
            }
        }
    }
}

TEST(PictReader, ThirtyTwoBitsAreReadInEveryPacking) {
    for (const uint16_t width : {uint16_t{1}, uint16_t{5}, uint16_t{100}}) {
        for (const uint16_t packType : std::initializer_list<uint16_t>{0, 1, 2, 4}) {
            for (const uint16_t planes : std::initializer_list<uint16_t>{3, 4}) {
                // One pixel in a row is less than eight bytes, and never packed.
                const bool inPlanes = (packType == 0 || packType == 4) && width > 1;
                if (width == 1 && packType == 2) continue;
                std::vector<uint8_t> row;
                const auto component = [&](uint32_t x, uint32_t c) {
                    return static_cast<uint8_t>(x * 7 + c * 50);
                };
                for (uint32_t c = planes == 4 ? 0 : 1; c < 4 && inPlanes; ++c) {
                    for (uint32_t x = 0; x < width; ++x)
                        row.push_back(component(x, c));
                }
                for (uint32_t x = 0; x < width && !inPlanes; ++x) {
                    for (uint32_t c = packType == 2 ? 1 : 0; c < 4; ++c)
                        row.push_back(component(x, c));
                }
                PictMapRecipe recipe;
                recipe.bounds = {0, 0, 2, width};
                recipe.bits = 32;
                recipe.packType = packType;
                recipe.planes = planes;
                recipe.rows = {row, row};
                const auto picture = decodePictBytes(PictBytes(2, recipe.bounds).map(recipe).end().bytes());
                ASSERT_TRUE(picture);
                EXPECT_FALSE(picture->damaged);
                for (uint32_t x = 0; x < width; ++x) {
                    const Rgb expected{component(x, 1), component(x, 2), component(x, 3)};
                    ASSERT_EQ(colorAt(picture->pixels, x, 1), expected) << packType << planes << " " << x;
                }
            }
        }
    }
}

TEST(PictReader, WithoutAResolutionAPointIsAPixel) {
    for (const uint32_t version : {1U, 2U}) {
        PictBytes pict(version, {-5, 10, 45, 110});
        if (version == 2) pict.plainHeader();
        const auto header = pictHeader(pict.end().bytes());
        ASSERT_TRUE(header);
        EXPECT_EQ(header->width, 100U);
        EXPECT_EQ(header->height, 50U);
        EXPECT_FALSE(header->density);
    }
}

TEST(PictReader, AResolutionGivesPixelsAndTheFrameCanBeFoundFromThem) {
    constexpr uint32_t kUnit = 65536;
    const struct {
        const char* what;
        uint32_t x;
        uint32_t y;
        PictRect space;
        uint32_t width;
        uint32_t height;
        double densityX;
    } cases[] = {
        {"72", 72 * kUnit, 72 * kUnit, {0, 0, 50, 100}, 100, 50, 72},
        {"144", 144 * kUnit, 144 * kUnit, {0, 0, 100, 200}, 200, 100, 144},
        {"300, the drawing rounded", 300 * kUnit, 300 * kUnit, {0, 0, 208, 417}, 417, 208, 300},
        {"a drawing elsewhere", 72 * kUnit, 144 * kUnit, {-50, 7, 50, 107}, 100, 100, 72},
        {"no drawing's space", 144 * kUnit, 72 * kUnit, {}, 200, 50, 144},
        {"a drawing that contradicts", 1000 * kUnit, 1000 * kUnit, {0, 0, 50, 100}, 100, 50, 72},
        {"no resolution, a larger drawing", 0, 0, {0, 0, 100, 200}, 200, 100, 144},
    };
    for (const auto& c : cases) {
        PictBytes pict(2, {0, 0, 50, 100});
        const auto header = pictHeader(pict.extendedHeader(c.x, c.y, c.space).end().bytes());
        ASSERT_TRUE(header) << c.what;
        EXPECT_EQ(header->width, c.width) << c.what;
        EXPECT_EQ(header->height, c.height) << c.what;
        ASSERT_TRUE(header->density) << c.what;
        EXPECT_DOUBLE_EQ(header->density->x, c.densityX) << c.what;
        EXPECT_EQ(std::lround(header->width * 72 / header->density->x), 100) << c.what;
        EXPECT_EQ(std::lround(header->height * 72 / header->density->y), 50) << c.what;
    }
}

TEST(PictReader, AResolutionOfZeroIsNone) {
    PictBytes pict(2, {0, 0, 50, 100});
    const auto header = pictHeader(pict.extendedHeader(0, 0, {0, 0, 50, 100}).end().bytes());
    ASSERT_TRUE(header);
    EXPECT_EQ(header->width, 100U);
    EXPECT_FALSE(header->density);
}

}  // namespace fi::test

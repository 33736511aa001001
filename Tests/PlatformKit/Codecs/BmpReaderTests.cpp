// SPDX-License-Identifier: Apache-2.0
// Headers, palettes, masks and rows of BMP files; limits and harm.
#include "PlatformKit/Codecs/BmpReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/MakeBmp.h"
#include "PlatformKit/Codecs/ScopedLimits.h"
#include "Support/FailingAllocations.h"

namespace fi::test {
namespace {

using Bytes = std::vector<uint8_t>;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr StoredColor kBlack = {0, 0, 0};
constexpr StoredColor kWhite = {255, 255, 255};
constexpr StoredColor kColor = {30, 20, 10};  // red 10, green 20, blue 30

DecodedPicture decoded(const Bytes& file, SizeFloor floor = {}) {
    MemorySource source(file);
    auto picture = decodeBmp(source, floor);
    EXPECT_TRUE(picture) << picture.reason().text;
    return picture ? std::move(*picture) : DecodedPicture{};
}

ImageHeader headerOf(const Bytes& file) {
    MemorySource source(file);
    const auto header = readBmpHeader(source);
    EXPECT_TRUE(header) << header.reason().text;
    return header ? *header : ImageHeader{};
}

CodecFailure failureOf(const Bytes& file) {
    MemorySource source(file);
    const auto picture = decodeBmp(source, {});
    EXPECT_FALSE(picture);
    return picture ? CodecFailure{} : picture.reason();
}

Bytes rowOf(const PixelBuffer& pixels, uint32_t y) {
    return Bytes(pixels.row(y), pixels.row(y) + bytesOfRow(pixels.width(), pixels.layout()));
}

BmpRecipe recipeOf(uint16_t bits, int32_t width, int32_t height, Bytes pixels) {
    BmpRecipe recipe;
    recipe.bits = bits;
    recipe.width = width;
    recipe.height = height;
    recipe.pixels = std::move(pixels);
    return recipe;
}

/// One pixel of 16 or 32 bits under masks.
BmpRecipe fieldsOf(uint16_t bits, std::vector<uint32_t> masks, uint32_t word) {
    BmpRecipe recipe = recipeOf(bits, 1, 1, {});
    for (int i = 0; i < 4; ++i)
        recipe.pixels.push_back(static_cast<uint8_t>(word >> (8 * i)));
    recipe.headerBytes = 124;
    recipe.compression = 3;
    recipe.masks = std::move(masks);
    return recipe;
}

TEST(BmpReader, IsRecognisedByItsFirstSixteenBytes) {
    const Bytes file = makeBmp(recipeOf(24, 1, 1, Bytes(4)));
    EXPECT_TRUE(looksLikeBmp(ByteView(firstBytes(file, 16))));
    EXPECT_FALSE(looksLikeBmp(ByteView(firstBytes(file, 15))));
    EXPECT_FALSE(looksLikeBmp(ByteView(bytesOf("BMW is not a picture"))));
    EXPECT_FALSE(looksLikeBmp(ByteView(bytesOf("BA is none either, no"))));
    EXPECT_FALSE(looksLikeBmp(ByteView()));
    EXPECT_EQ(failureOf(bytesOf("II*")).code, CodecError::NotThisFormat);
    EXPECT_EQ(failureOf({}).code, CodecError::NotThisFormat);
}

TEST(BmpReader, RowsAreStoredFromTheBottomOrFromTheTopWithANegativeHeight) {
    const Bytes rows = {1, 2, 3, 0, 4, 5, 6, 0};
    const auto up = decoded(makeBmp(recipeOf(24, 1, 2, rows)));
    EXPECT_EQ(up.pixels.layout(), PixelLayout::RGBX32);
    EXPECT_THAT(rowOf(up.pixels, 0), ElementsAre(6, 5, 4, 255));
    EXPECT_THAT(rowOf(up.pixels, 1), ElementsAre(3, 2, 1, 255));
    EXPECT_FALSE(up.damaged);
    const Bytes file = makeBmp(recipeOf(24, 1, -2, rows));
    EXPECT_EQ(headerOf(file).height, 2U);
    const auto down = decoded(file);
    EXPECT_THAT(rowOf(down.pixels, 0), ElementsAre(3, 2, 1, 255));
    EXPECT_THAT(rowOf(down.pixels, 1), ElementsAre(6, 5, 4, 255));
}

TEST(BmpReader, BlackAndWhiteIsOneBitAndWhiteIsSet) {
    BmpRecipe recipe = recipeOf(1, 10, 1, {0b10110001, 0b01111111, 0, 0});
    recipe.palette = {kBlack, kWhite};
    const auto plain = decoded(makeBmp(recipe));
    EXPECT_EQ(plain.pixels.layout(), PixelLayout::Gray1);
    EXPECT_THAT(rowOf(plain.pixels, 0), ElementsAre(0b10110001, 0b01000000));
    recipe.palette = {kWhite, kBlack};
    EXPECT_THAT(rowOf(decoded(makeBmp(recipe)).pixels, 0), ElementsAre(0b01001110, 0b10000000));
    const ImageHeader header = headerOf(makeBmp(recipe));
    EXPECT_EQ(header.bitsPerComponent, 1U);
    EXPECT_EQ(header.components, 1U);
    EXPECT_EQ(header.model, ColorModel::Gray);
}

TEST(BmpReader, OneBitOfOtherColorsIsColor) {
    for (const std::vector<StoredColor>& palette :
         {std::vector{kColor, kWhite}, std::vector{kBlack, StoredColor{254, 254, 254}}}) {
        BmpRecipe recipe = recipeOf(1, 2, 1, {0b01000000, 0, 0, 0});
        recipe.palette = palette;
        const auto picture = decoded(makeBmp(recipe));
        ASSERT_EQ(picture.pixels.layout(), PixelLayout::RGBX32);
        EXPECT_THAT(rowOf(picture.pixels, 0),
                    ElementsAre(palette[0].red, palette[0].green, palette[0].blue, 255, palette[1].red,
                                palette[1].green, palette[1].blue, 255));
        const ImageHeader header = headerOf(makeBmp(recipe));
        EXPECT_EQ(header.bitsPerComponent * header.components, 1U);
        EXPECT_EQ(header.model, ColorModel::RGB);
    }
}

TEST(BmpReader, IndicesOfTwoFourAndEightBitsStandFromTheHighestBit) {
    const struct {
        uint16_t bits;
        Bytes row;
    } cases[] = {
        {2, {0b00011011, 0b01000000, 0, 0}}, {4, {0x01, 0x23, 0x10, 0}}, {8, {0, 1, 2, 3, 1, 0, 0, 0}}};
    for (const auto& c : cases) {
        BmpRecipe recipe = recipeOf(c.bits, 5, 1, c.row);
        recipe.palette = {{1, 1, 1}, {2, 2, 2}, {3, 3, 3}, {4, 4, 4}};
        const auto gray = decoded(makeBmp(recipe));
        ASSERT_EQ(gray.pixels.layout(), PixelLayout::Gray8);
        EXPECT_THAT(rowOf(gray.pixels, 0), ElementsAre(1, 2, 3, 4, 2)) << c.bits;
        EXPECT_EQ(headerOf(makeBmp(recipe)).model, ColorModel::Gray);
        EXPECT_EQ(headerOf(makeBmp(recipe)).bitsPerComponent, c.bits);
        recipe.palette = {{1, 1, 1}, kColor, {3, 3, 3}, {4, 4, 4}};
        const auto color = decoded(makeBmp(recipe));
        ASSERT_EQ(color.pixels.layout(), PixelLayout::RGBX32);
        EXPECT_THAT(rowOf(color.pixels, 0),
                    ElementsAre(1, 1, 1, 255, 10, 20, 30, 255, 3, 3, 3, 255, 4, 4, 4, 255, 10, 20, 30, 255))
            << c.bits;
        EXPECT_EQ(headerOf(makeBmp(recipe)).model, ColorModel::RGB);
        EXPECT_EQ(headerOf(makeBmp(recipe)).components, 1U);
    }
}

TEST(BmpReader, IndicesThatAShortPaletteLacksAreBlack) {
    BmpRecipe recipe = recipeOf(8, 3, 1, {0, 1, 2, 0});
    recipe.palette = {kColor, kWhite};
    EXPECT_THAT(rowOf(decoded(makeBmp(recipe)).pixels, 0),
                ElementsAre(10, 20, 30, 255, 255, 255, 255, 255, 0, 0, 0, 255));
}

TEST(BmpReader, OfAPaletteThatIsTooLongTheFirstColorsCount) {
    BmpRecipe recipe = recipeOf(1, 2, 1, {0b01000000, 0, 0, 0});
    recipe.palette = {kBlack, kWhite, kColor, kColor};
    const auto picture = decoded(makeBmp(recipe));
    EXPECT_EQ(picture.pixels.layout(), PixelLayout::Gray1);
    EXPECT_THAT(rowOf(picture.pixels, 0), ElementsAre(0b01000000));
}

TEST(BmpReader, ACountOfColorsThatCannotBeIsIgnored) {
    for (const uint32_t colorsUsed : {0U, 5U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        BmpRecipe recipe = recipeOf(1, 2, 1, {0b01000000, 0, 0, 0});
        recipe.palette = {kBlack, kWhite};
        recipe.colorsUsed = colorsUsed;
        EXPECT_THAT(rowOf(decoded(makeBmp(recipe)).pixels, 0), ElementsAre(0b01000000)) << colorsUsed;
    }
}

TEST(BmpReader, PixelsFollowThePaletteWhenTheirOffsetLeavesItNoRoom) {
    for (const uint32_t offset : {0U, 14U, 54U, 5000U, 0xFFFFFFFFU}) {
        BmpRecipe recipe = recipeOf(8, 2, 1, {1, 0, 0, 0});
        recipe.palette = {kColor, kWhite, kBlack};
        recipe.pixelOffset = offset;
        EXPECT_THAT(rowOf(decoded(makeBmp(recipe)).pixels, 0),
                    ElementsAre(255, 255, 255, 255, 10, 20, 30, 255))
            << offset;
    }
    BmpRecipe plain = recipeOf(24, 1, 1, {30, 20, 10, 0});
    plain.pixelOffset = 0;
    EXPECT_THAT(rowOf(decoded(makeBmp(plain)).pixels, 0), ElementsAre(10, 20, 30, 255));
    plain.palette = {kWhite};
    EXPECT_THAT(rowOf(decoded(makeBmp(plain)).pixels, 0), ElementsAre(10, 20, 30, 255));
}

TEST(BmpReader, APaletteEndsWhereThePixelsBegin) {
    BmpRecipe recipe = recipeOf(8, 2, 1, {1, 0, 9, 9});
    recipe.headerBytes = 12;
    recipe.palette = {kColor};
    EXPECT_THAT(rowOf(decoded(makeBmp(recipe)).pixels, 0), ElementsAre(0, 0, 0, 255, 10, 20, 30, 255));
}

TEST(BmpReader, SizesOfTheFileAreNotAskedFor) {
    for (const uint32_t bytes : {0U, 20U, 0xDDDDDDDDU}) {
        BmpRecipe recipe = recipeOf(24, 1, 1, {30, 20, 10, 0});
        recipe.fileBytes = bytes;
        EXPECT_THAT(rowOf(decoded(makeBmp(recipe)).pixels, 0), ElementsAre(10, 20, 30, 255)) << bytes;
    }
}

TEST(BmpReader, EveryKindOfHeaderIsRead) {
    for (const uint32_t bytes : {12U, 16U, 20U, 24U, 40U, 44U, 48U, 52U, 56U, 60U, 64U, 66U, 108U, 124U}) {
        BmpRecipe recipe = recipeOf(8, 3, 2, {0, 1, 0, 0, 1, 1, 0, 0});
        recipe.headerBytes = bytes;
        recipe.palette = {kColor, kWhite};
        for (const bool array : {false, true}) {
            recipe.array = array;
            const Bytes file = makeBmp(recipe);
            EXPECT_TRUE(looksLikeBmp(ByteView(file))) << bytes;
            EXPECT_EQ(headerOf(file).width, 3U) << bytes;
            EXPECT_EQ(headerOf(file).height, 2U) << bytes;
            EXPECT_EQ(headerOf(file).pages, 1U) << bytes;
            EXPECT_THAT(rowOf(decoded(file).pixels, 1),
                        ElementsAre(10, 20, 30, 255, 255, 255, 255, 255, 10, 20, 30, 255))
                << bytes;
        }
    }
}

TEST(BmpReader, HeadersOfOtherSizesAreUnsupported) {
    for (const uint32_t bytes : {0U, 11U, 13U, 15U, 125U, 168U, 0xFFFFFFFFU}) {
        Bytes file = makeBmp(recipeOf(24, 1, 1, Bytes(200)));
        for (size_t i = 0; i < 4; ++i)
            file[14 + i] = static_cast<uint8_t>(bytes >> (8 * i));
        EXPECT_EQ(failureOf(file).code, CodecError::Unsupported) << bytes;
    }
}

TEST(BmpReader, SixteenBitsAreFiveForEachColorUnlessMasksSayOtherwise) {
    const Bytes file = makeBmp(recipeOf(16, 2, 1, {0b01100001, 0b10000100, 0xFF, 0x7F}));
    // 1, 3 and 1 of 31, and the highest bit means nothing.
    EXPECT_THAT(rowOf(decoded(file).pixels, 0), ElementsAre(8, 25, 8, 255, 255, 255, 255, 255));
    EXPECT_EQ(headerOf(file).components, 3U);
    EXPECT_EQ(headerOf(file).bitsPerComponent, 8U);
    EXPECT_EQ(headerOf(file).model, ColorModel::RGB);
    const Bytes fields = makeBmp(fieldsOf(16, {0xF800, 0x07E0, 0x001F, 0}, 0b00001'000011'00001));
    EXPECT_THAT(rowOf(decoded(fields).pixels, 0), ElementsAre(8, 12, 8, 255));
}

TEST(BmpReader, FieldsOfAnyWidthAreScaledToTheNearestLevel) {
    const struct {
        std::vector<uint32_t> masks;
        uint32_t word;
        Bytes expected;
    } cases[] = {
        {{0x3FF00000, 0x000FFC00, 0x000003FF}, 1U << 20 | 2U << 10 | 512, {0, 0, 128, 255}},
        {{0x3FF00000, 0x000FFC00, 0x000003FF}, 1023U << 20 | 3U << 10 | 511, {255, 1, 127, 255}},
        {{0x80000000, 0x60000000, 0x1C000000}, 0b101'011U << 26, {255, 85, 109, 255}},
        {{0xFFFFFFFF, 0, 0}, 0x80000000, {128, 0, 0, 255}},
        {{0x00FFFF00, 0x000000FF, 0xFF000000}, 0x40800011, {128, 17, 64, 255}},
        {{0x000000FF, 0x0000FF00, 0x00FF0000}, 0x00030201, {1, 2, 3, 255}},
    };
    for (const auto& c : cases)
        EXPECT_THAT(rowOf(decoded(makeBmp(fieldsOf(32, c.masks, c.word))).pixels, 0),
                    ElementsAreArray(c.expected))
            << c.masks[0];
}

TEST(BmpReader, MasksWithHolesStayWithinTheLevels) {
    const Bytes file = makeBmp(fieldsOf(32, {0xF00000F0, 0x81, 0x5}, 0xFFFFFFFF));
    EXPECT_THAT(rowOf(decoded(file).pixels, 0), ElementsAre(255, 255, 255, 255));
}

TEST(BmpReader, MasksStandInTheHeaderOrBehindTheShortOne) {
    const struct {
        uint32_t headerBytes;
        uint32_t compression;
        bool alpha;
    } cases[] = {{40, 3, false}, {40, 6, true},  {52, 3, false}, {52, 6, false},
                 {56, 3, true},  {108, 3, true}, {124, 6, true}};
    for (const auto& c : cases) {
        BmpRecipe recipe = fieldsOf(32, {0xFF, 0xFF00, 0xFF0000, 0xFF000000}, 0x33040302);
        recipe.headerBytes = c.headerBytes;
        recipe.compression = c.compression;
        if (!c.alpha) recipe.masks.pop_back();
        const auto picture = decoded(makeBmp(recipe));
        EXPECT_EQ(picture.pixels.layout(), c.alpha ? PixelLayout::RGBA32 : PixelLayout::RGBX32)
            << c.headerBytes;
        EXPECT_EQ(headerOf(makeBmp(recipe)).components, c.alpha ? 4U : 3U) << c.headerBytes;
        const Bytes expected = c.alpha ? Bytes{0, 1, 1, 51} : Bytes{2, 3, 4, 255};
        EXPECT_THAT(rowOf(picture.pixels, 0), ElementsAreArray(expected)) << c.headerBytes;
    }
}

TEST(BmpReader, ColorsAreMultipliedWithAlpha) {
    const struct {
        uint8_t alpha;
        Bytes expected;
    } cases[] = {{0, {0, 0, 0, 0}}, {128, {100, 50, 1, 128}}, {255, {200, 100, 1, 255}}};
    for (const auto& c : cases) {
        const uint32_t word = uint32_t{c.alpha} << 24 | 200U << 16 | 100U << 8 | 1;
        const Bytes file = makeBmp(fieldsOf(32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}, word));
        EXPECT_THAT(rowOf(decoded(file).pixels, 0), ElementsAreArray(c.expected));
    }
}

TEST(BmpReader, TheFourthByteOfPlainPixelsMeansNothing) {
    BmpRecipe recipe = recipeOf(32, 1, 1, {30, 20, 10, 77});
    for (const uint32_t headerBytes : {40U, 124U}) {
        recipe.headerBytes = headerBytes;
        if (headerBytes == 124) recipe.masks = {0xFF, 0xFF00, 0xFF0000, 0xFF000000};
        const auto picture = decoded(makeBmp(recipe));
        EXPECT_EQ(picture.pixels.layout(), PixelLayout::RGBX32);
        EXPECT_THAT(rowOf(picture.pixels, 0), ElementsAre(10, 20, 30, 255));
    }
}

TEST(BmpReader, DensityComesFromPixelsPerMetre) {
    const struct {
        int32_t x;
        int32_t y;
        std::optional<Density> expected;
    } cases[] = {{11811, 5906, Density{299.9994, 150.0124}},
                 {10000, 0, Density{254, 254}},
                 {-5, 10000, Density{254, 254}},
                 {0, 0, std::nullopt},
                 {-1, -1, std::nullopt}};
    for (const auto& c : cases) {
        BmpRecipe recipe = recipeOf(24, 1, 1, Bytes(4));
        recipe.perMetreX = c.x;
        recipe.perMetreY = c.y;
        const auto density = headerOf(makeBmp(recipe)).density;
        ASSERT_EQ(density.has_value(), c.expected.has_value()) << c.x;
        if (!density) continue;
        EXPECT_DOUBLE_EQ(density->x, c.expected->x);
        EXPECT_DOUBLE_EQ(density->y, c.expected->y);
    }
}

TEST(BmpReader, AnEmbeddedProfileIsReadFromTheLongestHeaderAlone) {
    BmpRecipe recipe = recipeOf(24, 1, 1, Bytes(4));
    recipe.headerBytes = 124;
    recipe.profile = bytesOf("a profile");
    const Bytes file = makeBmp(recipe);
    EXPECT_EQ(headerOf(file).iccProfile, recipe.profile);
    EXPECT_TRUE(headerOf(firstBytes(file, file.size() - 1)).iccProfile.empty());
    Bytes linked = file;
    linked[14 + 56] = 0x4B;  // "LINK"
    linked[14 + 57] = 0x4E;
    linked[14 + 58] = 0x49;
    linked[14 + 59] = 0x4C;
    EXPECT_TRUE(headerOf(linked).iccProfile.empty());
    recipe.headerBytes = 108;
    EXPECT_TRUE(headerOf(makeBmp(recipe)).iccProfile.empty());
}

TEST(BmpReader, AProfileThatCannotBeReadInFullIsNone) {
    BmpRecipe recipe = recipeOf(24, 1, 1, Bytes(8000));
    recipe.headerBytes = 124;
    recipe.profile = Bytes(5000, 7);
    const Bytes file = makeBmp(recipe);
    CountingSource source(file);
    source.failFrom(file.size() - 1);
    const auto header = readBmpHeader(source);
    ASSERT_TRUE(header);
    EXPECT_TRUE(header->iccProfile.empty());
    for (const size_t field : {size_t{14 + 112}, size_t{14 + 116}}) {
        Bytes wrong = file;
        wrong[field + 3] = 0x7F;  // two thousand million
        EXPECT_TRUE(headerOf(wrong).iccProfile.empty());
    }
}

TEST(BmpReader, OsTwoKnowsNoPngAndNoMasks) {
    for (const uint32_t compression : {5U, 6U}) {
        BmpRecipe recipe = recipeOf(32, 1, 1, Bytes(100));
        recipe.headerBytes = 64;
        recipe.compression = compression;
        EXPECT_THAT(failureOf(makeBmp(recipe)).text,
                    testing::HasSubstr("kind of compression is not known"));
    }
}

TEST(BmpReader, KindsThatAreNotReadAreDescribedAndRefusedByName) {
    const struct {
        uint32_t headerBytes;
        uint32_t compression;
        uint16_t bits;
        const char* name;
    } cases[] = {
        {64, 3, 1, "Huffman"}, {64, 4, 24, "24-bit run-length"}, {124, 4, 0, "JPEG"}, {40, 5, 24, "PNG"}};
    for (const auto& c : cases) {
        BmpRecipe recipe = recipeOf(c.bits, 7, 5, Bytes(100));
        recipe.headerBytes = c.headerBytes;
        recipe.compression = c.compression;
        const CodecFailure failure = failureOf(makeBmp(recipe));
        EXPECT_EQ(failure.code, CodecError::Unsupported) << c.name;
        EXPECT_THAT(failure.text, testing::HasSubstr(c.name));
        EXPECT_EQ(headerOf(makeBmp(recipe)).width, 7U) << c.name;
        EXPECT_EQ(headerOf(makeBmp(recipe)).height, 5U) << c.name;
    }
}

TEST(BmpReader, HeadersWithoutSenseAreRefused) {
    struct Case {
        void (*change)(BmpRecipe&);
        CodecError code;
    };
    const Case cases[] = {
        {[](BmpRecipe& r) { r.width = 0; }, CodecError::Damaged},
        {[](BmpRecipe& r) { r.width = -1; }, CodecError::Damaged},
        {[](BmpRecipe& r) { r.height = 0; }, CodecError::Damaged},
        {[](BmpRecipe& r) { r.planes = 3; }, CodecError::Damaged},
        {[](BmpRecipe& r) { r.bits = 3; }, CodecError::Unsupported},
        {[](BmpRecipe& r) { r.bits = 64; }, CodecError::Unsupported},
        {[](BmpRecipe& r) { r.compression = 7; }, CodecError::Unsupported},
        {[](BmpRecipe& r) { r.compression = 1; }, CodecError::Unsupported},
        {[](BmpRecipe& r) { r.compression = 2; }, CodecError::Unsupported},
        {[](BmpRecipe& r) { r.compression = 3; }, CodecError::Unsupported},
        {[](BmpRecipe& r) { r.headerBytes = 64, r.compression = 5; }, CodecError::Unsupported},
        {[](BmpRecipe& r) {
             r.bits = 32, r.compression = 3, r.masks = {0, 0, 0};
         },
         CodecError::Damaged},
        {[](BmpRecipe& r) { r.height = INT32_MIN; }, CodecError::LimitExceeded},
        {[](BmpRecipe& r) { r.width = INT32_MAX; }, CodecError::LimitExceeded},
    };
    for (const Case& c : cases) {
        BmpRecipe recipe = recipeOf(24, 1, 1, Bytes(100));
        c.change(recipe);
        EXPECT_EQ(failureOf(makeBmp(recipe)).code, c.code) << (&c - cases);
    }
}

TEST(BmpReader, LimitsAreNamed) {
    const Bytes file = makeBmp(recipeOf(24, 100, 50, Bytes(size_t{300} * 50)));
    const struct {
        void (*change)(DecodeLimits&);
        const char* word;
    } cases[] = {{[](DecodeLimits& l) { l.maximumSide = 99; }, "side"},
                 {[](DecodeLimits& l) { l.maximumPixels = 4999; }, "pixels"},
                 {[](DecodeLimits& l) { l.maximumBytes = 448 * 50 - 1; }, "memory"}};
    for (const auto& c : cases) {
        const ScopedLimits limits(c.change);
        const CodecFailure failure = failureOf(file);
        EXPECT_EQ(failure.code, CodecError::LimitExceeded);
        EXPECT_THAT(failure.text, testing::HasSubstr(c.word));
    }
    const ScopedLimits enough([](DecodeLimits& l) {
        l.maximumSide = 100;
        l.maximumPixels = 5000;
        l.maximumBytes = 448 * 50;
    });
    EXPECT_FALSE(decoded(file).damaged);
}

TEST(BmpReader, OneBitPicturesAskForTheirMemoryToo) {
    BmpRecipe recipe = recipeOf(1, 513, 10, Bytes(size_t{68} * 10));
    recipe.palette = {kBlack, kWhite};
    const ScopedLimits limits([](DecodeLimits& l) { l.maximumBytes = 128 * 10 - 1; });
    EXPECT_EQ(failureOf(makeBmp(recipe)).code, CodecError::LimitExceeded);
}

TEST(BmpReader, AHeadThatPromisesAHugePictureIsRefusedBeforeMemoryIsTaken) {
    EXPECT_EQ(failureOf(makeBmp(recipeOf(24, 10000, 10000, Bytes(1000)))).code, CodecError::Damaged);
    BmpRecipe runs = recipeOf(8, 10000, 10000, {255, 0, 255, 0, 255, 0, 0, 1});
    runs.compression = 1;
    runs.palette = {kBlack};
    EXPECT_EQ(failureOf(makeBmp(runs)).code, CodecError::Damaged);
}

TEST(BmpReader, RowsThatAreMissingAreGrayAndTheOthersAreKept) {
    Bytes file = makeBmp(recipeOf(24, 1, 3, {1, 1, 1, 0, 2, 2, 2, 0, 3, 3, 3, 0}));
    file.pop_back();  // the last row lacks what only fills it up
    EXPECT_FALSE(decoded(file).damaged);
    file.pop_back();
    const auto cut = decoded(file);
    EXPECT_TRUE(cut.damaged);
    EXPECT_THAT(rowOf(cut.pixels, 0), ElementsAre(128, 128, 128, 255));
    EXPECT_THAT(rowOf(cut.pixels, 1), ElementsAre(2, 2, 2, 255));
    EXPECT_THAT(rowOf(cut.pixels, 2), ElementsAre(1, 1, 1, 255));
    EXPECT_EQ(failureOf(firstBytes(file, 56)).code, CodecError::Damaged);
}

TEST(BmpReader, MissingRowsOfOneBitAreWhite) {
    BmpRecipe recipe = recipeOf(1, 8, 2, {0x55, 0, 0, 0, 0x55, 0, 0, 0});
    recipe.palette = {kBlack, kWhite};
    const Bytes file = makeBmp(recipe);
    const auto cut = decoded(firstBytes(file, file.size() - 4));
    EXPECT_TRUE(cut.damaged);
    EXPECT_THAT(rowOf(cut.pixels, 0), ElementsAre(0xFF));
    EXPECT_THAT(rowOf(cut.pixels, 1), ElementsAre(0x55));
}

TEST(BmpReader, EveryCutOfAFileIsHarmless) {
    BmpRecipe recipe = recipeOf(4, 9, 6, Bytes(size_t{8} * 6, 0x21));
    recipe.headerBytes = 124;
    recipe.palette = {kBlack, kWhite, kColor};
    recipe.profile = bytesOf("profile");
    const Bytes file = makeBmp(recipe);
    const size_t pixelStart = file.size() - 7 - 48;
    for (size_t count = 0; count < file.size(); ++count) {
        const Bytes cut = firstBytes(file, count);
        MemorySource source(cut);
        const auto picture = decodeBmp(source, {});
        EXPECT_EQ(picture.ok(), count >= pixelStart + 5) << count;
        EXPECT_EQ(picture && !picture->damaged, count >= file.size() - 7 - 3) << count;
        (void)readBmpHeader(source);
    }
}

TEST(BmpReader, HarmedFilesAreHarmless) {
    BmpRecipe recipe = recipeOf(8, 9, 6, Bytes(size_t{12} * 6, 1));
    recipe.headerBytes = 124;
    recipe.palette = {kBlack, kWhite, kColor};
    const Bytes file = makeBmp(recipe);
    const ScopedLimits limits([](DecodeLimits& l) { l.maximumPixels = 1 << 18; });
    for (uint32_t seed = 0; seed < 2000; ++seed) {
        Bytes harmed = mutated(firstBytes(file, 60), seed, 3);
        harmed = joined(harmed, Bytes(file.begin() + 60, file.end()));
        MemorySource source(harmed);
        const auto header = readBmpHeader(source);
        const auto picture = decodeBmp(source, {});
        if (!picture) continue;
        ASSERT_TRUE(header);
        EXPECT_EQ(picture->pixels.width(), header->width);
        EXPECT_EQ(picture->pixels.height(), header->height);
    }
}

TEST(BmpReader, AFloorReducesByTheLargestWholeFactor) {
    Bytes pixels(size_t{300} * 60);
    std::iota(pixels.begin(), pixels.end(), uint8_t{0});
    const Bytes file = makeBmp(recipeOf(24, 100, 60, pixels));
    const auto whole = decoded(file);
    const auto small = decoded(file, {30, 19});
    EXPECT_EQ(small.pixels.width(), 33U);
    EXPECT_EQ(small.pixels.height(), 20U);
    EXPECT_TRUE(isBlockMeanOf(small.pixels, whole.pixels));
    EXPECT_EQ(decoded(file, {101, 61}).pixels.width(), 100U);
}

TEST(BmpReader, PicturesOfOneBitAndWithAlphaComeInFullWhateverTheFloor) {
    BmpRecipe bits = recipeOf(1, 8, 4, Bytes(16, 0x0F));
    bits.palette = {kBlack, kWhite};
    EXPECT_EQ(decoded(makeBmp(bits), {2, 1}).pixels.width(), 8U);
    BmpRecipe alpha = fieldsOf(32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}, 0);
    alpha.width = 4;
    alpha.pixels.resize(16, 0x40);
    EXPECT_EQ(decoded(makeBmp(alpha), {1, 1}).pixels.width(), 4U);
}

TEST(BmpReader, LargePicturesAreReadInPieces) {
    const uint32_t rowBytes = 3000;
    Bytes pixels(size_t{rowBytes} * 400);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<uint8_t>(i / rowBytes + i);
    const Bytes file = makeBmp(recipeOf(24, 1000, 400, pixels));
    CountingSource source(file);
    const auto picture = decodeBmp(source, {});
    ASSERT_TRUE(picture);
    EXPECT_LE(source.largestRead(), size_t{256} << 10);
    for (uint32_t y = 0; y < 400; ++y) {
        const uint8_t* stored = pixels.data() + size_t{rowBytes} * (399 - y);
        const Bytes expected = {stored[2], stored[1], stored[0], 255};
        ASSERT_THAT(Bytes(picture->pixels.row(y), picture->pixels.row(y) + 4), ElementsAreArray(expected))
            << y;
    }
}

TEST(BmpReader, AHeaderIsReadWithoutPixels) {
    const Bytes file = makeBmp(recipeOf(24, 1000, 400, Bytes(size_t{3000} * 400)));
    CountingSource source(file);
    ASSERT_TRUE(readBmpHeader(source));
    EXPECT_LE(source.bytesRead(), 4096U);
}

TEST(BmpReader, AHoleInTheFileCostsItsRowsOnly) {
    const Bytes file = makeBmp(recipeOf(24, 1000, 400, Bytes(size_t{3000} * 400, 9)));
    CountingSource source(file);
    source.makeHole(54, 54 + 3000);
    const auto picture = decodeBmp(source, {});
    ASSERT_TRUE(picture);
    EXPECT_TRUE(picture->damaged);
    EXPECT_EQ(picture->pixels.row(0)[0], 9);
    EXPECT_EQ(picture->pixels.row(399)[0], 128);
}

TEST(BmpReader, ShortMemoryIsSaid) {
    const Bytes file = makeBmp(fieldsOf(32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}, 0));
    MemorySource source(file);
    bool happened = true;
    int successes = 0;
    for (; happened && successes < 100; ++successes) {
        std::optional<CodecResult<DecodedPicture>> picture;
        {
            const FailingAllocations failing(successes);
            picture = decodeBmp(source, {});
            happened = failing.happened();
        }
        ASSERT_EQ(picture->ok(), !happened);
        EXPECT_TRUE(!happened || picture->reason().code == CodecError::NoMemory);
    }
    EXPECT_GT(successes, 1);
    EXPECT_FALSE(happened);
}

}  // namespace
}  // namespace fi::test

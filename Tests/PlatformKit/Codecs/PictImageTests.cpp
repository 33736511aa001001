// SPDX-License-Identifier: Apache-2.0
// Images that QuickTime put into pictures, and the substitutes behind them.
#include <gtest/gtest.h>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/JpegReader.h"
#include "PlatformKit/Codecs/PictBytes.h"
#include "PlatformKit/Codecs/PictText.h"
#include "PlatformKit/Codecs/ScopedLimits.h"

namespace fi::test {

namespace {

constexpr uint32_t kOne = 0x10000;

struct ImageRecipe {
    uint32_t codec = 0x6A706567;  // 'jpeg'
    uint16_t width = 0;
    uint16_t height = 0;
    uint16_t depth = 24;
    std::vector<uint8_t> bytes;
    uint32_t dataSize = UINT32_MAX;  ///< as many as there are
    PictRect source;
    std::array<uint32_t, 9> matrix = {kOne, 0, 0, 0, kOne, 0, 0, 0, 0x40000000};
    std::vector<uint8_t> matte;
    std::vector<int16_t> mask;
};

std::vector<uint8_t> imageData(const ImageRecipe& recipe) {
    PictBytes data(1, {}, false);
    const size_t head = data.bytes().size();
    data.word(0);
    for (const uint32_t element : recipe.matrix)
        data.longWord(element);
    data.longWord(static_cast<uint32_t>(recipe.matte.size()))
        .rect({})
        .word(0)
        .rect(recipe.source)
        .longWord(0);
    data.longWord(recipe.mask.empty() ? 0 : static_cast<uint32_t>(recipe.mask.size() * 2 + 2));
    data.data(recipe.matte);
    if (!recipe.mask.empty()) data.word(static_cast<uint32_t>(recipe.mask.size() * 2 + 2));
    for (const int16_t value : recipe.mask)
        data.word(static_cast<uint16_t>(value));
    data.longWord(86).longWord(recipe.codec).longWord(0).longWord(0).longWord(0).longWord(0).longWord(0);
    data.longWord(0).word(recipe.width).word(recipe.height).longWord(72 << 16).longWord(72 << 16);
    data.longWord(recipe.dataSize == UINT32_MAX ? static_cast<uint32_t>(recipe.bytes.size())
                                                : recipe.dataSize);
    data.word(1);
    for (int i = 0; i < 8; ++i)
        data.longWord(0);
    data.word(recipe.depth).word(0xFFFF).data(recipe.bytes);
    return {data.bytes().begin() + static_cast<std::ptrdiff_t>(head), data.bytes().end()};
}

PictBytes& addImage(PictBytes& pict, const ImageRecipe& recipe) {
    const auto data = imageData(recipe);
    return pict.opcode(0x8200).longWord(static_cast<uint32_t>(data.size())).data(data);
}

ImageRecipe jpegImage(const PixelBuffer& picture) {
    ImageRecipe recipe;
    recipe.width = static_cast<uint16_t>(picture.width());
    recipe.height = static_cast<uint16_t>(picture.height());
    recipe.bytes = jpegOf(picture);
    recipe.depth = picture.layout() == PixelLayout::Gray8 ? 40 : 24;
    return recipe;
}

/// Two by one pixels, red and blue.
ImageRecipe rawImage() {
    ImageRecipe recipe;
    recipe.codec = 0x72617720;  // 'raw '
    recipe.width = 2;
    recipe.height = 1;
    recipe.bytes = {255, 0, 0, 0, 0, 255};
    return recipe;
}

std::string drawn(PictBytes& pict) {
    const auto picture = decodePictBytes(pict.end().bytes());
    if (!picture) return picture.reason().text;
    if (picture->damaged || picture->partial) return "damaged or partial";
    return pictText(picture->pixels);
}

/// What stands behind an image for systems without QuickTime.
PictMapRecipe placard(const PictRect& target) {
    PictMapRecipe recipe = bitMap(16, {{0xFF, 0xFF}});
    recipe.target = target;
    return recipe;
}

}  // namespace

TEST(PictImages, AJpegIsDrawnAsItsDecoderGivesIt) {
    for (const PixelLayout layout : {PixelLayout::RGBX32, PixelLayout::Gray8}) {
        const ImageRecipe recipe = jpegImage(makePicture(40, 24, layout));
        PictBytes pict(2, {0, 0, 24, 40});
        addImage(pict, recipe).end();
        MemorySource jpeg(recipe.bytes);
        const auto expected = decodeJpeg(jpeg, {});
        const auto picture = decodePictBytes(pict.bytes());
        ASSERT_TRUE(expected && picture);
        EXPECT_FALSE(picture->damaged || picture->partial);
        ASSERT_EQ(picture->pixels.layout(), layout);
        EXPECT_EQ(meanDifference(picture->pixels, expected->pixels), 0);
        const auto header = pictHeader(pict.bytes());
        ASSERT_TRUE(header);
        EXPECT_EQ(header->components, layout == PixelLayout::Gray8 ? 1U : 3U);
    }
}

TEST(PictImages, RawPixelsOfEveryDepthAreDrawn) {
    const std::pair<uint16_t, std::vector<uint8_t>> cases[] = {
        {16, {0x7C, 0x00, 0x00, 0x1F}},
        {24, {255, 0, 0, 0, 0, 255}},
        {32, {9, 255, 0, 0, 9, 0, 0, 255}},
    };
    for (const auto& [depth, bytes] : cases) {
        ImageRecipe recipe = rawImage();
        recipe.depth = depth;
        recipe.bytes = bytes;
        PictBytes pict(2, {0, 0, 1, 2});
        EXPECT_EQ(drawn(addImage(pict, recipe)), "rb\n") << depth;
    }
}

TEST(PictImages, TheMatrixPlacesAndScalesTheSource) {
    ImageRecipe recipe = rawImage();
    recipe.matrix[0] = 2 * kOne;
    recipe.matrix[6] = 1 * kOne;
    recipe.matrix[7] = 2 * kOne;
    PictBytes pict(2, {0, 0, 4, 6});
    EXPECT_EQ(drawn(addImage(pict, recipe)), "......\n......\n.rrbb.\n......\n");
    recipe.source = {0, 1, 1, 2};
    PictBytes part(2, {0, 0, 4, 6});
    EXPECT_EQ(drawn(addImage(part, recipe)), "......\n......\n...bb.\n......\n");
}

TEST(PictImages, MatteAndMaskAreSteppedOverAndTheMaskHolds) {
    ImageRecipe recipe = rawImage();
    recipe.matte = {1, 2, 3, 4, 5, 6};
    recipe.mask = {0, 1, 1, 2};
    PictBytes pict(2, {0, 0, 1, 2});
    EXPECT_EQ(drawn(addImage(pict, recipe)), ".b\n");
}

TEST(PictImages, AnUnknownSizeOfTheDataIsTheRestOfTheOpcode) {
    ImageRecipe recipe = jpegImage(makePicture(16, 8, PixelLayout::RGBX32));
    recipe.dataSize = 0;
    PictBytes pict(2, {0, 0, 8, 16});
    const auto picture = decodePictBytes(addImage(pict, recipe).end().bytes());
    ASSERT_TRUE(picture);
    EXPECT_FALSE(picture->damaged);
}

TEST(PictImages, TheBitMapForSystemsWithoutQuickTimeIsLeftOut) {
    PictBytes pict(2, {0, 0, 1, 2});
    EXPECT_EQ(drawn(addImage(pict, rawImage()).map(placard({0, 0, 1, 2}))), "rb\n");
    PictBytes elsewhere(2, {0, 0, 1, 2});
    EXPECT_EQ(drawn(addImage(elsewhere, rawImage()).map(placard({0, 0, 1, 1}))), "#b\n")
        << "one with another target is a part of the picture";
    PictBytes later(2, {0, 0, 1, 2});
    EXPECT_EQ(drawn(addImage(later, rawImage()).opcode(0).map(placard({0, 0, 1, 2}))), "##\n");
}

TEST(PictImages, TheTextForSystemsWithoutQuickTimeIsLeftOut) {
    PictBytes pict(2, {0, 0, 1, 2});
    addImage(pict, rawImage()).opcode(7).word(0x00AE).word(14);
    pict.opcode(0x28).longWord(0).byte(2).byte('Q').byte('T').byte(0).opcode(0x30 + 8).opcode(0x38);
    EXPECT_EQ(drawn(pict), "rb\n");
    PictBytes pen(2, {0, 0, 1, 2});
    addImage(pen, rawImage()).opcode(0).opcode(7).word(0x00AE).word(4).opcode(0).opcode(0x38);
    EXPECT_EQ(drawn(pen), "damaged or partial") << "a pen like any other when no image stands before it";
}

TEST(PictImages, AnImageThatIsNotReadIsSaid) {
    ImageRecipe recipe = rawImage();
    recipe.codec = 0x726C6520;
    PictBytes alone(2, {0, 0, 1, 2});
    const auto refused = decodePictBytes(addImage(alone, recipe).end().bytes());
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.reason().code, CodecError::Unsupported);
    EXPECT_EQ(refused.reason().text, "The picture's image has a compression that is not read.");
    PictBytes both(2, {0, 0, 1, 2});
    const auto partial = decodePictBytes(addImage(both, recipe).map(placard({0, 0, 1, 2})).end().bytes());
    ASSERT_TRUE(partial);
    EXPECT_TRUE(partial->partial);
    EXPECT_EQ(pictText(partial->pixels), "##\n") << "its substitute is drawn";
}

TEST(PictImages, ATurnedOrMirroredImageIsNotRead) {
    for (const size_t element : {0U, 1U, 3U}) {
        ImageRecipe recipe = rawImage();
        recipe.matrix[element] = 0xFFFF0000;
        PictBytes pict(2, {0, 0, 1, 2});
        const auto picture = decodePictBytes(addImage(pict, recipe).end().bytes());
        ASSERT_FALSE(picture) << element;
        EXPECT_EQ(picture.reason().code, CodecError::Unsupported);
    }
}

TEST(PictImages, PixelMapsInAnUncompressedImageAreDrawn) {
    PictMapRecipe recipe = bitMap(2, {{0x80, 0}});
    PictBytes data(1, {}, false);
    const size_t head = data.bytes().size();
    data.word(0);
    for (const uint32_t element : {kOne, 0U, 0U, 0U, kOne, 0U, kOne, 0U, 0x40000000U})
        data.longWord(element);
    data.longWord(4).rect({}).longWord(0xDEADBEEF).word(PictBytes::mapOpcode(recipe)).mapData(recipe);
    data.longWord(0x00980098);  // what follows the pixels belongs to the opcode
    const auto payload = std::span(data.bytes()).subspan(head);
    PictBytes pict(2, {0, 0, 1, 4});
    pict.opcode(0x8201).longWord(static_cast<uint32_t>(payload.size())).data(payload);
    EXPECT_EQ(drawn(pict), ".#..\n");
}

TEST(PictImages, ACutJpegGivesItsRowsAndIsMarked) {
    ImageRecipe recipe = jpegImage(makePicture(64, 64, PixelLayout::RGBX32));
    recipe.bytes.resize(recipe.bytes.size() * 2 / 3);
    PictBytes pict(2, {0, 0, 64, 64});
    const auto picture = decodePictBytes(addImage(pict, recipe).end().bytes());
    ASSERT_TRUE(picture);
    EXPECT_TRUE(picture->damaged);
}

TEST(PictImages, AJpegThatCannotBeReadIsTheReason) {
    ImageRecipe recipe = jpegImage(makePicture(64, 64, PixelLayout::RGBX32));
    recipe.bytes.assign(500, 0x55);
    PictBytes pict(2, {0, 0, 64, 64});
    const auto picture = decodePictBytes(addImage(pict, recipe).end().bytes());
    ASSERT_FALSE(picture);
    EXPECT_EQ(picture.reason().text, "The file is not a JPEG file.");
}

TEST(PictImages, AJpegBesideTheCanvasKeepsTheLimitOfMemory) {
    const ImageRecipe recipe = jpegImage(makePicture(64, 64, PixelLayout::RGBX32));
    PictBytes pict(2, {0, 0, 64, 64});
    addImage(pict, recipe).end();
    const uint64_t each = 64 * 64 * 4;
    ScopedLimits enough([](DecodeLimits& limits) { limits.maximumBytes = 2 * each; });
    EXPECT_TRUE(decodePictBytes(pict.bytes()));
    ScopedLimits tooLittle([](DecodeLimits& limits) { limits.maximumBytes = 2 * each - 1; });
    const auto picture = decodePictBytes(pict.bytes());
    ASSERT_FALSE(picture);
    EXPECT_EQ(picture.reason().code, CodecError::LimitExceeded);
}

}  // namespace fi::test

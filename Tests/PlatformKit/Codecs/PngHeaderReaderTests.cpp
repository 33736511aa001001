// SPDX-License-Identifier: Apache-2.0
// Facts of PNG files, read without a decoder.
#include <gtest/gtest.h>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/MakePng.h"
#include "PlatformKit/Codecs/PngReader.h"
#include "PlatformKit/Codecs/TiffBytes.h"
#include "PlatformKit/Codecs/TiffField.h"

namespace fi::test {

namespace {

using Bytes = std::vector<uint8_t>;

CodecResult<ImageHeader> header(const Bytes& bytes) {
    MemorySource source(bytes);
    return readPngHeader(source);
}

ImageHeader headerWith(std::string_view name, const Bytes& data) {
    const auto facts =
        header(withPngChunk(makePng({19, 11, 8, PngKind::Color, false}), "IDAT", name, data));
    EXPECT_TRUE(facts);
    return facts ? *facts : ImageHeader{};
}

Bytes perMetre(uint8_t x, uint8_t y, uint8_t unit) {
    return {0, 0, x, 0, 0, 0, y, 0, unit};
}

/// A profile of the length, which stands in its first four bytes.
Bytes profileOf(uint32_t length) {
    Bytes profile(length);
    for (uint32_t i = 0; i < length; ++i)
        profile[i] = static_cast<uint8_t>(i < 4 ? length >> (24 - 8 * i) : i * i % 251);
    return profile;
}

Bytes exifWithDensity() {
    TiffBytes tiff(ByteOrder::Big);
    const uint64_t dots = tiff.addRational(300, 1);
    tiff.setFirst(tiff.addDirectory({{0x011A, kTiffRational, 1, dots},
                                     {0x011B, kTiffRational, 1, dots},
                                     {0x0128, kTiffShort, 1, tiff.inlineShort(2)}}));
    return tiff.bytes();
}

}  // namespace

TEST(PngHeader, TellsSizeModelAndDepthOfEveryKind) {
    struct Case {
        PngKind kind;
        uint8_t bits;
        ColorModel model;
        uint32_t components;
    };
    for (const Case& c :
         {Case{PngKind::Gray, 1, ColorModel::Gray, 1}, Case{PngKind::Gray, 16, ColorModel::Gray, 1},
          Case{PngKind::GrayAlpha, 8, ColorModel::Gray, 2}, Case{PngKind::Color, 8, ColorModel::RGB, 3},
          Case{PngKind::Color, 16, ColorModel::RGB, 3}, Case{PngKind::ColorAlpha, 8, ColorModel::RGB, 4},
          Case{PngKind::Palette, 4, ColorModel::RGB, 1}}) {
        for (const bool interlaced : {false, true}) {
            const auto facts = header(makePng({19, 11, c.bits, c.kind, interlaced}));
            ASSERT_TRUE(facts);
            EXPECT_EQ(facts->width, 19U);
            EXPECT_EQ(facts->height, 11U);
            EXPECT_EQ(facts->bitsPerComponent, c.bits);
            EXPECT_EQ(facts->components, c.components);
            EXPECT_EQ(facts->model, c.model);
            EXPECT_EQ(facts->pages, 1U);
            EXPECT_EQ(facts->tiffCompression, 0U);
            EXPECT_FALSE(facts->density);
            EXPECT_TRUE(facts->exifBlock.empty());
            EXPECT_TRUE(facts->iccProfile.empty());
        }
    }
}

TEST(PngHeader, DensityIsThatPerInchOfDotsPerMetre) {
    const auto density = headerWith("pHYs", {0, 0, 0x2E, 0x23, 0, 0, 0x17, 0x12, 1}).density;
    ASSERT_TRUE(density);
    EXPECT_DOUBLE_EQ(density->x, 11'811 * 0.0254);
    EXPECT_DOUBLE_EQ(density->y, 5'906 * 0.0254);
}

TEST(PngHeader, AnAspectRatioAndZeroDotsAreNoDensity) {
    EXPECT_TRUE(headerWith("pHYs", perMetre(1, 1, 1)).density);
    EXPECT_FALSE(headerWith("pHYs", perMetre(1, 1, 0)).density);
    EXPECT_FALSE(headerWith("pHYs", perMetre(1, 1, 2)).density);
    EXPECT_FALSE(headerWith("pHYs", perMetre(0, 1, 1)).density);
    EXPECT_FALSE(headerWith("pHYs", perMetre(1, 0, 1)).density);
    EXPECT_FALSE(headerWith("pHYs", {0, 0, 1, 0, 0, 0, 1, 0}).density) << "a byte is missing";
}

TEST(PngHeader, TheExifBlockIsKeptWithoutAJpegPrefix) {
    const Bytes exif = exifWithDensity();
    EXPECT_EQ(headerWith("eXIf", exif).exifBlock, exif);
    EXPECT_EQ(headerWith("eXIf", joined(bytesOf({"Exif\0\0", 6}), exif)).exifBlock, exif);
}

TEST(PngHeader, ExifTellsTheDensityOnlyWhenTheFileDoesNot) {
    const Bytes png =
        withPngChunk(makePng({19, 11, 8, PngKind::Color, false}), "IDAT", "eXIf", exifWithDensity());
    const auto fromExif = header(png);
    ASSERT_TRUE(fromExif && fromExif->density);
    EXPECT_DOUBLE_EQ(fromExif->density->x, 300);
    const auto fromFile = header(withPngChunk(png, "IDAT", "pHYs", perMetre(1, 1, 1)));
    ASSERT_TRUE(fromFile && fromFile->density);
    EXPECT_DOUBLE_EQ(fromFile->density->x, 256 * 0.0254);
}

TEST(PngHeader, TheProfileIsUnpacked) {
    for (const uint32_t length : {132U, 3144U, 500'000U}) {
        const Bytes profile = profileOf(length);
        EXPECT_EQ(headerWith("iCCP", pngProfileData(profile)).iccProfile, profile) << length;
    }
}

TEST(PngHeader, AProfileThatGoesOnBehindItsLengthEndsThere) {
    Bytes longer = profileOf(3000);
    longer.resize(4000, 5);
    EXPECT_EQ(headerWith("iCCP", pngProfileData(longer)).iccProfile, profileOf(3000));
}

TEST(PngHeader, ADamagedOrHugeProfileIsLeftOut) {
    const Bytes whole = pngProfileData(profileOf(3144));
    Bytes unknownMethod = whole;
    unknownMethod[5] = 1;
    Bytes wrongChecksum = whole;
    wrongChecksum.back() ^= 1;
    Bytes shorter = profileOf(3144);
    shorter.resize(3000);
    Bytes huge = profileOf(200);
    huge[0] = 0x7F;
    Bytes tiny = profileOf(200);
    tiny[3] = 131;
    Bytes endlessName(200, 'x');
    for (const Bytes& data : {unknownMethod, wrongChecksum, firstBytes(whole, whole.size() / 2),
                              firstBytes(whole, 6), firstBytes(whole, 3), Bytes{}, endlessName,
                              pngProfileData(shorter), pngProfileData(huge), pngProfileData(tiny)}) {
        EXPECT_TRUE(headerWith("iCCP", data).iccProfile.empty());
    }
}

TEST(PngHeader, ReadsNoPixels) {
    const Bytes png = makePng({600, 600, 8, PngKind::Color, false});
    CountingSource source(png);
    ASSERT_TRUE(readPngHeader(source));
    EXPECT_LE(source.bytesRead(), 4'096U);
}

TEST(PngHeader, StepsOverHugeChunksAndStopsAtLengthsThatDoNotExist) {
    Bytes png =
        withPngChunk(makePng({19, 11, 8, PngKind::Color, false}), "IDAT", "pHYs", perMetre(1, 1, 1));
    const Bytes padded = withPngChunk(png, "pHYs", "paDd", Bytes(20 << 20));
    CountingSource source(padded);
    const auto facts = readPngHeader(source);
    ASSERT_TRUE(facts);
    EXPECT_TRUE(facts->density);
    EXPECT_LE(source.bytesRead(), 16'384U);
    png[pngChunkAt(png, "pHYs")] = 0x80;
    const auto stopped = header(png);
    ASSERT_TRUE(stopped);
    EXPECT_FALSE(stopped->density);
}

TEST(PngHeader, EveryCutEndsWithFactsOrAReason) {
    const Bytes png = withPngChunk(makePng({19, 11, 8, PngKind::Color, false}), "IDAT", "iCCP",
                                   pngProfileData(profileOf(3144)));
    for (size_t length = 0; length < pngChunkAt(png, "IDAT"); ++length) {
        const auto facts = header(firstBytes(png, length));
        EXPECT_EQ(facts.ok(), length >= 29) << length;
        if (facts) continue;
        EXPECT_FALSE(facts.reason().text.empty());
    }
}

TEST(PngHeader, AChunkAfterThePictureTellsNothing) {
    const auto facts = header(
        withPngChunk(makePng({19, 11, 8, PngKind::Color, false}), "IEND", "pHYs", perMetre(1, 1, 1)));
    ASSERT_TRUE(facts);
    EXPECT_FALSE(facts->density);
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Facts of JPEG files: what is gathered, and how little is read for it.
#include <gtest/gtest.h>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/JpegReader.h"
#include "PlatformKit/Codecs/JpegWriter.h"
#include "PlatformKit/Codecs/MakeJpeg.h"
#include "PlatformKit/Codecs/TiffBytes.h"
#include "PlatformKit/Codecs/TiffField.h"

namespace fi::test {

namespace {

using namespace std::string_view_literals;

CodecResult<ImageHeader> header(const std::vector<uint8_t>& bytes) {
    MemorySource source(bytes);
    return readJpegHeader(source);
}

/// libjpeg's own JFIF segment taken out: start of image, marker, length of 16.
std::vector<uint8_t> withoutJfif(std::vector<uint8_t> jpeg) {
    jpeg.erase(jpeg.begin() + 2, jpeg.begin() + 20);
    return jpeg;
}

std::vector<uint8_t> jfif(uint8_t unit, uint8_t x, uint8_t y) {
    return joined(bytesOf("JFIF\0\1\2"sv), {unit, 0, x, 0, y, 0, 0});
}

std::vector<uint8_t> exifSegment(const std::vector<uint8_t>& tiff) {
    return joined(bytesOf("Exif\0\0"sv), tiff);
}

std::vector<uint8_t> profilePart(uint8_t number, uint8_t count, std::string_view bytes) {
    return joined(joined(bytesOf("ICC_PROFILE\0"sv), {number, count}), bytesOf(bytes));
}

TiffBytes exifWithDensity(uint32_t density) {
    TiffBytes tiff(ByteOrder::Little);
    const uint64_t value = tiff.addRational(density, 1);
    tiff.setFirst(
        tiff.addDirectory({{0x011A, kTiffRational, 1, value}, {0x011B, kTiffRational, 1, value}}));
    return tiff;
}

}  // namespace

TEST(JpegHeader, TellsSizeDepthAndModelOfEveryKind) {
    JpegRecipe inks;
    inks.cmyk = true;
    const auto gray = header(jpegOf(makePicture(31, 17, PixelLayout::Gray8)));
    const auto color = header(jpegOf(makePicture(1, 700, PixelLayout::RGBX32)));
    const auto cmyk = header(makeJpeg(makePicture(20, 30, PixelLayout::RGBX32), inks));
    ASSERT_TRUE(gray && color && cmyk);
    EXPECT_EQ(gray->width, 31U);
    EXPECT_EQ(gray->height, 17U);
    EXPECT_EQ(gray->components, 1U);
    EXPECT_EQ(gray->bitsPerComponent, 8U);
    EXPECT_EQ(gray->model, ColorModel::Gray);
    EXPECT_EQ(color->width, 1U);
    EXPECT_EQ(color->height, 700U);
    EXPECT_EQ(color->components, 3U);
    EXPECT_EQ(color->model, ColorModel::RGB);
    EXPECT_EQ(color->pages, 1U);
    EXPECT_EQ(color->tiffCompression, 0U);
    EXPECT_EQ(cmyk->components, 4U);
    EXPECT_EQ(cmyk->model, ColorModel::CMYK);
}

TEST(JpegHeader, TellsFactsOfKindsThatAreNotDecoded) {
    const auto twelve = header(makeHollowJpeg(640, 480, 12, 0));
    ASSERT_TRUE(twelve);
    EXPECT_EQ(twelve->bitsPerComponent, 12U);
    EXPECT_EQ(twelve->width, 640U);
}

TEST(JpegHeader, DensityComesFromJfifInInchesOrCentimetres) {
    const auto plain = withoutJfif(jpegOf(makePicture(8, 8, PixelLayout::RGBX32)));
    const auto inches = header(withSegment(plain, 0xE0, jfif(1, 150, 200)));
    const auto centimetres = header(withSegment(plain, 0xE0, jfif(2, 100, 100)));
    const auto aspect = header(withSegment(plain, 0xE0, jfif(0, 1, 1)));
    const auto zero = header(withSegment(plain, 0xE0, jfif(1, 0, 72)));
    const auto none = header(plain);
    ASSERT_TRUE(inches && centimetres && aspect && zero && none);
    ASSERT_TRUE(inches->density && centimetres->density);
    EXPECT_DOUBLE_EQ(inches->density->x, 150);
    EXPECT_DOUBLE_EQ(inches->density->y, 200);
    EXPECT_DOUBLE_EQ(centimetres->density->x, 254);
    EXPECT_FALSE(aspect->density);
    EXPECT_FALSE(zero->density);
    EXPECT_FALSE(none->density);
}

TEST(JpegHeader, DensityComesFromExifOnlyWhereJfifGivesNone) {
    const auto plain = withoutJfif(jpegOf(makePicture(8, 8, PixelLayout::RGBX32)));
    const auto exif = withSegment(plain, 0xE1, exifSegment(exifWithDensity(240).bytes()));
    const auto alone = header(exif);
    const auto aspect = header(withSegment(exif, 0xE0, jfif(0, 1, 1)));
    const auto both = header(withSegment(exif, 0xE0, jfif(1, 99, 99)));
    ASSERT_TRUE(alone && aspect && both);
    EXPECT_DOUBLE_EQ(alone->density.value_or(Density{}).x, 240);
    EXPECT_DOUBLE_EQ(aspect->density.value_or(Density{}).x, 240);
    EXPECT_DOUBLE_EQ(both->density.value_or(Density{}).x, 99);
}

TEST(JpegHeader, GivesTheFirstExifBlockExactly) {
    const auto plain = jpegOf(makePicture(8, 8, PixelLayout::RGBX32));
    const auto second = withSegment(plain, 0xE1, exifSegment(bytesOf("second")));
    const auto xmp = withSegment(withSegment(second, 0xE1, exifSegment(bytesOf("the first"))), 0xE1,
                                 bytesOf("http://ns.adobe.com/xap/1.0/\0<x/>"sv));
    const auto facts = header(xmp);
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->exifBlock, bytesOf("the first"));
    const auto largest = header(withSegment(plain, 0xE1, exifSegment(std::vector<uint8_t>(65527, 'x'))));
    ASSERT_TRUE(largest);
    EXPECT_EQ(largest->exifBlock.size(), 65527U);
}

TEST(JpegHeader, AnExifBlockCutByTheEndKeepsWhatIsThere) {
    // The frame comes first here, so that there is something to tell.
    auto bytes = makeHollowJpeg(8, 8, 8, 0);
    bytes = firstBytes(bytes, bytes.size() - 12);  // scan head and end
    bytes = joined(bytes, {0xFF, 0xE1, 0xF0, 0x00});
    bytes = joined(bytes, exifSegment(bytesOf("only this")));
    const auto facts = header(bytes);
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->exifBlock, bytesOf("only this"));
}

TEST(JpegHeader, ProfilePartsAreJoinedInTheirOrder) {
    const auto plain = jpegOf(makePicture(8, 8, PixelLayout::RGBX32));
    auto bytes = withSegment(plain, 0xE2, profilePart(1, 3, "one "));
    bytes = withSegment(bytes, 0xE2, profilePart(3, 3, "three"));
    bytes = withSegment(bytes, 0xE2, profilePart(2, 3, "two "));
    const auto facts = header(bytes);
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->iccProfile, bytesOf("one two three"));
}

TEST(JpegHeader, ABrokenProfileIsSkipped) {
    const auto plain = jpegOf(makePicture(8, 8, PixelLayout::RGBX32));
    const auto part = [&](uint8_t number, uint8_t count, const std::vector<uint8_t>& onto) {
        return withSegment(onto, 0xE2, profilePart(number, count, "x"));
    };
    for (const auto& bytes : {part(1, 2, plain), part(2, 2, part(2, 2, plain)), part(0, 1, plain),
                              part(2, 3, part(1, 2, plain)), part(1, 0, plain)}) {
        const auto facts = header(bytes);
        ASSERT_TRUE(facts);
        EXPECT_TRUE(facts->iccProfile.empty());
    }
}

TEST(JpegHeader, ReadsTheHeadAloneWhateverTheFilesLength) {
    const auto bytes = jpegOf(makePicture(1500, 1000, PixelLayout::RGBX32));
    ASSERT_GT(bytes.size(), 300'000U);
    CountingSource source(bytes);
    ASSERT_TRUE(readJpegHeader(source));
    EXPECT_LE(source.bytesRead(), 4096U);
}

TEST(JpegHeader, StepsOverSegmentsItDoesNotNeed) {
    auto bytes = jpegOf(makePicture(64, 64, PixelLayout::RGBX32));
    for (int i = 0; i < 20; ++i) {
        bytes = withSegment(bytes, 0xED, std::vector<uint8_t>(60'000, 'x'));
    }
    CountingSource source(bytes);
    ASSERT_TRUE(readJpegHeader(source));
    EXPECT_LE(source.bytesRead(), 22U * 4096);
}

TEST(JpegHeader, ToleratesFillBytesAndStrayBytesBetweenSegments) {
    const auto plain = jpegOf(makePicture(9, 5, PixelLayout::RGBX32));
    for (const auto& stray :
         {std::vector<uint8_t>(7, 0xFF), std::vector<uint8_t>{0xFF, 0x00, 0x41, 0x42}}) {
        std::vector<uint8_t> bytes(plain.begin(), plain.begin() + 20);
        bytes = joined(joined(bytes, stray), std::vector<uint8_t>(plain.begin() + 20, plain.end()));
        const auto facts = header(bytes);
        ASSERT_TRUE(facts);
        EXPECT_EQ(facts->width, 9U);
    }
}

TEST(JpegHeader, ASegmentShorterThanItsOwnLengthIsSteppedOverAsTheDecoderDoes) {
    const auto plain = jpegOf(makePicture(9, 5, PixelLayout::RGBX32));
    for (const uint8_t length : {uint8_t{0}, uint8_t{1}}) {
        const auto bytes = joined({0xFF, 0xD8, 0xFF, 0xE2, 0, length},
                                  std::vector<uint8_t>(plain.begin() + 2, plain.end()));
        MemorySource source(bytes);
        EXPECT_TRUE(decodeJpeg(source, {}));
        EXPECT_TRUE(readJpegHeader(source));
    }
}

TEST(JpegHeader, EndlessJunkIsGivenUp) {
    std::vector<uint8_t> bytes = {0xFF, 0xD8, 0xFF};
    bytes.resize(size_t{20} << 20, 0x41);
    CountingSource junk(bytes);
    EXPECT_FALSE(readJpegHeader(junk));
    EXPECT_LE(junk.bytesRead(), uint64_t{2} << 20);

    std::vector<uint8_t> segments = {0xFF, 0xD8};
    for (int i = 0; i < 400'000; ++i)
        segments.insert(segments.end(), {0xFF, 0xE5, 0, 2});
    CountingSource many(segments);
    EXPECT_FALSE(readJpegHeader(many));
    EXPECT_LE(many.bytesRead(), uint64_t{1} << 19);
}

TEST(JpegHeader, EmptyPicturesAndFilesWithoutFrameAreDamaged) {
    for (const auto& bytes :
         {makeHollowJpeg(0, 5, 8, 0), makeHollowJpeg(5, 0, 8, 0), makeHollowJpeg(5, 5, 0, 0),
          std::vector<uint8_t>{0xFF, 0xD8, 0xFF, 0xD9}, std::vector<uint8_t>{0xFF, 0xD8, 0xFF}}) {
        const auto facts = header(bytes);
        ASSERT_FALSE(facts);
        EXPECT_EQ(facts.reason().code, CodecError::Damaged);
        EXPECT_FALSE(facts.reason().text.empty());
    }
    const auto other = header(bytesOf("not a picture"));
    ASSERT_FALSE(other);
    EXPECT_EQ(other.reason().code, CodecError::NotThisFormat);
}

TEST(JpegHeader, EveryCutAndManyHarmedBytesNeverCrash) {
    auto whole = withSegment(jpegOf(makePicture(20, 20, PixelLayout::RGBX32), 0.3), 0xE1,
                             exifSegment(exifWithDensity(72).bytes()));
    whole = withSegment(whole, 0xE2, profilePart(1, 1, "profile"));
    size_t facts = 0;
    for (size_t length = 0; length <= whole.size(); ++length) {
        const auto cut = firstBytes(whole, length);
        if (header(cut)) ++facts;
    }
    EXPECT_GT(facts, 0U);
    for (uint32_t seed = 0; seed < 3000; ++seed) {
        const auto result = header(mutated(whole, seed, 1 + seed % 6));
        if (!result) continue;
        EXPECT_GT(result->width, 0U);
    }
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Encoding of JPEG: quality, color resolution, density, and sinks that fail.
#include <gtest/gtest.h>

#include <stdexcept>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/JpegReader.h"
#include "PlatformKit/Codecs/JpegWriter.h"

namespace fi::test {

namespace {

/// The sampling byte of the first component in the frame header.
uint8_t firstSampling(const std::vector<uint8_t>& jpeg) {
    for (size_t i = 2; i + 12 < jpeg.size(); ++i) {
        if (jpeg[i] == 0xFF && jpeg[i + 1] == 0xC0) return jpeg[i + 11];
    }
    return 0;
}

/// Sum of the first quantization table: smaller is finer.
unsigned coarseness(const std::vector<uint8_t>& jpeg) {
    for (size_t i = 2; i + 70 < jpeg.size(); ++i) {
        if (jpeg[i] != 0xFF || jpeg[i + 1] != 0xDB) continue;
        unsigned sum = 0;
        for (size_t k = 0; k < 64; ++k)
            sum += jpeg[i + 5 + k];
        return sum;
    }
    return 0;
}

bool discard(std::span<const uint8_t>) {
    return true;
}

}  // namespace

TEST(JpegWriter, BestQualityKeepsEveryStepAndFullColor) {
    const auto bytes = jpegOf(makePicture(64, 64, PixelLayout::RGBX32), 1.0);
    EXPECT_EQ(coarseness(bytes), 64U);
    EXPECT_EQ(firstSampling(bytes), 0x11);
}

TEST(JpegWriter, ColorIsHalvedBelowNineTenths) {
    const PixelBuffer picture = makePicture(64, 64, PixelLayout::RGBX32);
    EXPECT_EQ(firstSampling(jpegOf(picture, 0.9)), 0x11);
    EXPECT_EQ(firstSampling(jpegOf(picture, 0.89)), 0x22);
    EXPECT_EQ(firstSampling(jpegOf(picture, 0.1)), 0x22);
}

TEST(JpegWriter, LowerQualityIsCoarserAndNonsenseIsBounded) {
    const PixelBuffer picture = makePicture(64, 64, PixelLayout::RGBX32);
    EXPECT_LT(coarseness(jpegOf(picture, 0.9)), coarseness(jpegOf(picture, 0.5)));
    EXPECT_LT(coarseness(jpegOf(picture, 0.5)), coarseness(jpegOf(picture, 0.1)));
    EXPECT_EQ(jpegOf(picture, 7.0), jpegOf(picture, 1.0));
    EXPECT_EQ(jpegOf(picture, -3.0), jpegOf(picture, 0.0));
    EXPECT_EQ(jpegOf(picture, std::numeric_limits<double>::quiet_NaN()), jpegOf(picture, 1.0));
}

TEST(JpegWriter, DensityIsReadBackAndAbsentWhenNoneIsGiven) {
    const PixelBuffer picture = makePicture(8, 8, PixelLayout::Gray8);
    struct Case {
        std::optional<Density> given;
        double x;
        double y;
    };
    for (const Case& c :
         {Case{Density{300, 240}, 300, 240}, Case{Density{71.6, 0}, 72, 72},
          Case{Density{1e9, 1e9}, 65535, 65535}, Case{std::nullopt, 0, 0}, Case{Density{-1, 0}, 0, 0}}) {
        std::vector<uint8_t> bytes;
        ASSERT_FALSE(encodeJpeg(picture, JpegOptions{1.0, c.given}, [&](std::span<const uint8_t> piece) {
            bytes.insert(bytes.end(), piece.begin(), piece.end());
            return true;
        }));
        MemorySource source(bytes);
        const auto header = readJpegHeader(source);
        ASSERT_TRUE(header);
        EXPECT_DOUBLE_EQ(header->density.value_or(Density{}).x, c.x);
        EXPECT_DOUBLE_EQ(header->density.value_or(Density{}).y, c.y);
    }
}

TEST(JpegWriter, ASinkThatRefusesEndsTheEncodingAtOnce) {
    const PixelBuffer picture = makePicture(1500, 1000, PixelLayout::RGBX32);
    for (const int accepted : {0, 1}) {
        int calls = 0;
        const auto failure =
            encodeJpeg(picture, {}, [&](std::span<const uint8_t>) { return calls++ < accepted; });
        ASSERT_TRUE(failure);
        EXPECT_EQ(failure->code, CodecError::WriteFailed);
        EXPECT_EQ(calls, accepted + 1);
    }
}

TEST(JpegWriter, ASinkThatThrowsIsASinkThatRefuses) {
    const auto failure =
        encodeJpeg(makePicture(9, 9, PixelLayout::Gray8), {},
                   [](std::span<const uint8_t>) -> bool { throw std::runtime_error("no"); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, CodecError::WriteFailed);
}

TEST(JpegWriter, EmptyAndOverlongPicturesAreRefused) {
    const auto empty = encodeJpeg(PixelBuffer(), {}, discard);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->code, CodecError::Unsupported);
    const auto overlong = encodeJpeg(makePicture(1, 65501, PixelLayout::Gray8), {}, discard);
    ASSERT_TRUE(overlong);
    EXPECT_EQ(overlong->code, CodecError::LimitExceeded);
    EXPECT_FALSE(encodeJpeg(makePicture(1, 65500, PixelLayout::Gray8), {}, discard));
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Encoding of TIFF: exact pixels, strips, density.
#include <gtest/gtest.h>

#include <limits>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/TiffDirectories.h"
#include "PlatformKit/Codecs/TiffReader.h"
#include "PlatformKit/Codecs/TiffWriter.h"

namespace fi::test {

namespace {

std::vector<uint8_t> tiffOf(const PixelBuffer& picture, const TiffOptions& options = {}) {
    auto bytes = encodeTiff(picture, options);
    EXPECT_TRUE(bytes);
    return bytes ? std::move(*bytes) : std::vector<uint8_t>{};
}

}  // namespace

TEST(TiffWriter, EverySizeLayoutAndCompressionComesBackExactly) {
    for (const uint32_t width : {1U, 2U, 63U, 300U}) {
        for (const uint32_t height : {1U, 2U, 77U, 301U}) {
            for (const PixelLayout layout : {PixelLayout::Gray8, PixelLayout::RGBX32}) {
                for (const bool lzw : {false, true}) {
                    const PixelBuffer picture = makePicture(width, height, layout);
                    const auto bytes = tiffOf(picture, TiffOptions{std::nullopt, lzw});
                    MemorySource source(bytes);
                    const auto decoded = decodeTiff(source, 0, {});
                    ASSERT_TRUE(decoded);
                    EXPECT_FALSE(decoded->damaged);
                    EXPECT_EQ(meanDifference(picture, decoded->pixels), 0) << width << "x" << height << lzw;
                }
            }
        }
    }
}

TEST(TiffWriter, DensityIs72UnlessGivenAndNonsenseIs72) {
    const PixelBuffer picture = makePicture(5, 5, PixelLayout::RGBX32);
    struct Case {
        std::optional<Density> given;
        double x;
        double y;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const Case& c :
         {Case{std::nullopt, 72, 72}, Case{Density{300, 150}, 300, 150}, Case{Density{0, nan}, 72, 72}}) {
        const auto bytes = tiffOf(picture, TiffOptions{c.given, false});
        MemorySource source(bytes);
        const auto header = readTiffHeader(source, 0);
        ASSERT_TRUE(header && header->density);
        EXPECT_DOUBLE_EQ(header->density->x, c.x);
        EXPECT_DOUBLE_EQ(header->density->y, c.y);
    }
}

TEST(TiffWriter, StripsHoldAbout64KiB) {
    const auto bytes = tiffOf(makePicture(1000, 500, PixelLayout::RGBX32));
    MemorySource source(bytes);
    const auto set = readTiffDirectories(source);
    ASSERT_TRUE(set);
    const TiffField* rows = findField(set->ifd0, 278);
    const TiffField* strips = findField(set->ifd0, 273);
    ASSERT_TRUE(rows != nullptr && strips != nullptr);
    EXPECT_EQ(rows->asUnsigned(), 21U);
    EXPECT_EQ(strips->count, 24U);
    EXPECT_LT(bytes.size(), 1'500'000U + 4096U);
}

TEST(TiffWriter, LzwMakesASmoothPictureSmaller) {
    const PixelBuffer picture = makePicture(400, 300, PixelLayout::Gray8);
    EXPECT_LT(tiffOf(picture, TiffOptions{std::nullopt, true}).size(), tiffOf(picture).size());
    const auto bytes = tiffOf(picture, TiffOptions{std::nullopt, true});
    MemorySource source(bytes);
    const auto header = readTiffHeader(source, 0);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->tiffCompression, 5U);
}

TEST(TiffWriter, AnEmptyPictureIsRefused) {
    const auto bytes = encodeTiff(PixelBuffer(), {});
    ASSERT_FALSE(bytes);
    EXPECT_EQ(bytes.reason().code, CodecError::Unsupported);
}

}  // namespace fi::test

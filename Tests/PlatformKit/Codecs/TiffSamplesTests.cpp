// SPDX-License-Identifier: Apache-2.0
// Samples of every depth, and whole pages of the depths that are unpacked by ourselves.
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/MakeTiff.h"
#include "PlatformKit/Codecs/TiffReader.h"
#include "PlatformKit/Codecs/TiffSamples.h"

namespace fi::test {

namespace {

uint8_t one(const std::vector<uint8_t>& row, SampleFormat format, uint64_t index) {
    uint8_t out = 77;
    takeSamples(row, format, index, 1, 1, &out, 1);
    return out;
}

template <typename Word>
std::vector<uint8_t> asBytes(Word word) {
    std::vector<uint8_t> bytes(sizeof word);
    std::memcpy(bytes.data(), &word, sizeof word);
    return bytes;
}

/// Values packed from the highest bit on, as TIFF packs depths that are no whole bytes.
std::vector<uint8_t> packed(const std::vector<uint64_t>& values, uint32_t bits) {
    std::vector<uint8_t> out((values.size() * bits + 7) / 8);
    size_t at = 0;
    for (const uint64_t value : values) {
        for (uint32_t bit = bits; bit-- > 0; ++at) {
            if ((value >> bit & 1) != 0) out[at / 8] = static_cast<uint8_t>(out[at / 8] | 0x80 >> at % 8);
        }
    }
    return out;
}

}  // namespace

TEST(TiffSamples, EveryPackedDepthSpansBlackToWhite) {
    for (uint32_t bits = 1; bits < 32; ++bits) {
        if (bits == 8 || bits == 16 || bits == 24) continue;  // whole bytes are not packed
        const uint64_t most = (uint64_t{1} << bits) - 1;
        const auto row = packed({0, most, most / 2, 0, most}, bits);
        const SampleFormat format{bits, false};
        EXPECT_EQ(one(row, format, 0), 0) << bits;
        EXPECT_EQ(one(row, format, 1), 255) << bits;
        EXPECT_EQ(one(row, format, 2), (most / 2 * 255 + most / 2) / most) << bits;
        EXPECT_EQ(one(row, format, 3), 0) << bits;
        EXPECT_EQ(one(row, format, 4), 255) << bits;
    }
}

TEST(TiffSamples, WholeWordsAreReadInThisMachinesOrder) {
    EXPECT_EQ(one({200}, {8, false}, 0), 200);
    EXPECT_EQ(one(asBytes<uint16_t>(200 * 257), {16, false}, 0), 200);
    EXPECT_EQ(one(asBytes<uint32_t>(200 * 0x01010101U), {32, false}, 0), 200);
    EXPECT_EQ(one(asBytes<uint64_t>(200 * 0x0101010101010101U), {64, false}, 0), 200);
    auto three = asBytes<uint32_t>(0x00C8C8C8U);
    if constexpr (std::endian::native == std::endian::big) three.erase(three.begin());
    EXPECT_EQ(one(three, {24, false}, 0), 200);
}

TEST(TiffSamples, FloatingPointIsCutToBlackAndWhite) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(one(asBytes(0.5F), {32, true}, 0), 128);
    EXPECT_EQ(one(asBytes(-3.0F), {32, true}, 0), 0);
    EXPECT_EQ(one(asBytes(1e30F), {32, true}, 0), 255);
    EXPECT_EQ(one(asBytes(infinity), {32, true}, 0), 255);
    EXPECT_EQ(one(asBytes(nan), {32, true}, 0), 0);
    EXPECT_EQ(one(asBytes(0.25), {64, true}, 0), 64);
    EXPECT_EQ(one(asBytes<uint16_t>(0x3800), {16, true}, 0), 128) << "one half";
    EXPECT_EQ(one(asBytes<uint16_t>(0x3C00), {16, true}, 0), 255) << "one";
    EXPECT_EQ(one(asBytes<uint16_t>(0x7C00), {16, true}, 0), 255) << "infinity";
    EXPECT_EQ(one(asBytes<uint16_t>(0x7E00), {16, true}, 0), 0) << "not a number";
    EXPECT_EQ(one(asBytes<uint16_t>(0x0001), {16, true}, 0), 0) << "the smallest of all";
}

TEST(TiffSamples, StepsOverOtherSamplesAndStopsAtTheEndOfTheRow) {
    const std::vector<uint8_t> row = {1, 2, 3, 4, 5, 6, 7};
    uint8_t out[8] = {};
    takeSamples(row, {8, false}, 1, 3, 4, out, 2);
    const uint8_t expected[8] = {2, 0, 5, 0, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(out, expected, 8), 0);
}

TEST(TiffSamples, UnknownDepthsAreTold) {
    EXPECT_FALSE((SampleFormat{0, false}.isKnown()));
    EXPECT_FALSE((SampleFormat{33, false}.isKnown()));
    EXPECT_FALSE((SampleFormat{24, true}.isKnown()));
    EXPECT_TRUE((SampleFormat{12, false}.isKnown()));
    EXPECT_TRUE((SampleFormat{64, true}.isKnown()));
}

TEST(TiffSampleDecoder, DeepPagesOfEveryLayoutComeBackExactly) {
    const PixelBuffer color = makePicture(37, 21, PixelLayout::RGBX32);
    const PixelBuffer gray = makePicture(37, 21, PixelLayout::Gray8);
    for (const TiffKind kind : {TiffKind::Gray, TiffKind::Rgb, TiffKind::RgbMask, TiffKind::Cmyk}) {
        for (const int bits : {16, 24, 32, 64}) {
            for (const uint32_t tile : {0U, 16U}) {
                for (const bool planar : {false, true}) {
                    TiffRecipe recipe;
                    recipe.kind = kind;
                    recipe.bits = bits;
                    recipe.tile = tile;
                    recipe.planar = planar;
                    recipe.bigEndian = planar;
                    const PixelBuffer& picture = kind == TiffKind::Gray ? gray : color;
                    const auto bytes = makeTiff(picture, recipe);
                    MemorySource source(bytes);
                    const auto decoded = decodeTiff(source, 0, {});
                    ASSERT_TRUE(decoded) << decoded.reason().text;
                    EXPECT_FALSE(decoded->damaged);
                    EXPECT_EQ(meanDifference(picture, decoded->pixels), 0) << bits << " " << tile << planar;
                }
            }
        }
    }
}

TEST(TiffSampleDecoder, DeepTransparencyLiesOnWhite) {
    const PixelBuffer picture = makePicture(16, 9, PixelLayout::RGBX32);
    TiffRecipe recipe;
    recipe.kind = TiffKind::RgbAlpha;
    recipe.bits = 32;
    const auto bytes = makeTiff(picture, recipe);
    MemorySource source(bytes);
    const auto decoded = decodeTiff(source, 0, {});
    ASSERT_TRUE(decoded);
    for (uint32_t x = 0; x < 16; ++x) {
        const int alpha = tiffAlphaAt(x, 4);
        EXPECT_EQ(decoded->pixels.row(4)[size_t{x} * 4],
                  picture.row(4)[size_t{x} * 4] * alpha / 255 + 255 - alpha);
        EXPECT_EQ(decoded->pixels.row(4)[size_t{x} * 4 + 3], 255);
    }
}

TEST(TiffSampleDecoder, CutAndHarmedDeepPagesNeverCrash) {
    TiffRecipe recipe;
    recipe.bits = 32;
    recipe.compression = 8;
    const auto whole = makeTiff(makePicture(20, 20, PixelLayout::RGBX32), recipe);
    for (uint32_t seed = 0; seed < 300; ++seed) {
        const auto bytes = mutated(whole, seed, 1 + seed % 10);
        MemorySource source(bytes);
        const auto decoded = decodeTiff(source, 0, {});
        EXPECT_TRUE(decoded.ok() || !decoded.reason().text.empty());
    }
}

}  // namespace fi::test

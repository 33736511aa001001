// SPDX-License-Identifier: Apache-2.0
// Decoding of JPEG: scales, color models, damage and limits.
#include <gtest/gtest.h>

#include <cstring>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/JpegReader.h"
#include "PlatformKit/Codecs/MakeJpeg.h"
#include "PlatformKit/Codecs/ScopedLimits.h"
#include "PlatformKit/Limits.h"

namespace fi::test {

namespace {

CodecResult<DecodedPicture> decode(const std::vector<uint8_t>& bytes, SizeFloor floor = {}) {
    MemorySource source(bytes);
    return decodeJpeg(source, floor);
}

struct Size {
    uint32_t width;
    uint32_t height;
};

constexpr Size kCornerSizes[] = {{1, 1}, {1, 2}, {2, 1}, {1, 257}, {257, 1}, {7, 9}, {8, 8}, {17, 16}};

}  // namespace

TEST(JpegReader, RecognisesTheFirstThreeBytes) {
    const uint8_t right[] = {0xFF, 0xD8, 0xFF};
    const uint8_t wrong[] = {0xFF, 0xD8, 0x00};
    EXPECT_TRUE(looksLikeJpeg(ByteView(right, 3)));
    EXPECT_FALSE(looksLikeJpeg(ByteView(right, 2)));
    EXPECT_FALSE(looksLikeJpeg(ByteView(wrong, 3)));
    EXPECT_FALSE(looksLikeJpeg(ByteView()));
}

TEST(JpegReader, RoundTripOfEveryCornerSizeKeepsThePicture) {
    for (const Size size : kCornerSizes) {
        for (const PixelLayout layout : {PixelLayout::Gray8, PixelLayout::RGBX32}) {
            const PixelBuffer picture = makePicture(size.width, size.height, layout);
            const auto decoded = decode(jpegOf(picture));
            ASSERT_TRUE(decoded) << size.width << "x" << size.height;
            EXPECT_FALSE(decoded->damaged);
            EXPECT_LT(meanDifference(picture, decoded->pixels), 1.5) << size.width << "x" << size.height;
        }
    }
}

TEST(JpegReader, EveryPixelOfAColorPictureIsOpaque) {
    const auto decoded = decode(jpegOf(makePicture(33, 21, PixelLayout::RGBX32)));
    ASSERT_TRUE(decoded);
    for (uint32_t y = 0; y < 21; ++y) {
        for (size_t x = 0; x < 33; ++x) {
            ASSERT_EQ(decoded->pixels.row(y)[4 * x + 3], 255);
        }
    }
}

TEST(JpegReader, ScaledDecodeReachesTheFloorAndStaysBelowTwiceOrTheNextScale) {
    const PixelBuffer picture = makePicture(403, 301, PixelLayout::RGBX32);
    const auto bytes = jpegOf(picture, 0.8);
    for (uint32_t width = 1; width <= 403; width += 3) {
        const uint32_t height = std::max(1U, width * 301 / 403);
        const auto decoded = decode(bytes, {width, height});
        ASSERT_TRUE(decoded);
        const uint32_t gotWidth = decoded->pixels.width();
        const uint32_t gotHeight = decoded->pixels.height();
        EXPECT_GE(gotWidth, width);
        EXPECT_GE(gotHeight, height);
        // 51 by 38 is the smallest scale of all.
        EXPECT_TRUE(gotWidth <= 51 || gotWidth < 2 * width + 2) << width << " gave " << gotWidth;
    }
}

TEST(JpegReader, FloorOnOneEighthOfASideChoosesThatEighth) {
    const auto bytes = jpegOf(makePicture(400, 240, PixelLayout::RGBX32));
    // Six and seven eighths are slower than the whole and give the whole.
    const uint32_t expected[] = {1, 2, 3, 4, 5, 8, 8, 8};
    for (uint32_t eighths = 1; eighths <= 8; ++eighths) {
        const auto decoded = decode(bytes, {50 * eighths, 30 * eighths});
        ASSERT_TRUE(decoded);
        EXPECT_EQ(decoded->pixels.width(), 50 * expected[eighths - 1]);
        EXPECT_EQ(decoded->pixels.height(), 30 * expected[eighths - 1]);
    }
}

TEST(JpegReader, TheLongerOfTwoFloorsDecides) {
    const auto bytes = jpegOf(makePicture(400, 240, PixelLayout::RGBX32));
    const auto wide = decode(bytes, {200, 1});
    const auto high = decode(bytes, {1, 120});
    ASSERT_TRUE(wide && high);
    EXPECT_EQ(wide->pixels.width(), 200U);
    EXPECT_EQ(high->pixels.height(), 120U);
}

TEST(JpegReader, NoFloorAndAFloorBeyondThePictureGiveTheWholeSize) {
    const auto bytes = jpegOf(makePicture(40, 24, PixelLayout::Gray8));
    for (const SizeFloor floor : {SizeFloor{}, SizeFloor{0, 5}, SizeFloor{5, 0}, SizeFloor{5000, 5}}) {
        const auto decoded = decode(bytes, floor);
        ASSERT_TRUE(decoded);
        EXPECT_EQ(decoded->pixels.width(), 40U);
        EXPECT_EQ(decoded->pixels.height(), 24U);
    }
}

TEST(JpegReader, EveryKindOfCodingGivesTheSamePicture) {
    const PixelBuffer picture = makePicture(90, 70, PixelLayout::RGBX32);
    JpegRecipe progressive;
    progressive.progressive = true;
    JpegRecipe halfColor;
    halfColor.halfColor = true;
    JpegRecipe restarts;
    restarts.restartRows = 1;
    JpegRecipe arithmetic;
    arithmetic.arithmetic = true;
    for (const JpegRecipe& recipe : {JpegRecipe{}, progressive, halfColor, restarts, arithmetic}) {
        const auto decoded = decode(makeJpeg(picture, recipe));
        ASSERT_TRUE(decoded) << decoded.reason().text;
        EXPECT_FALSE(decoded->damaged);
        EXPECT_LT(meanDifference(picture, decoded->pixels), 2.0);
    }
}

TEST(JpegReader, BrightnessMayBeDenserThanColorInEveryUsualWay) {
    const PixelBuffer picture = makePicture(90, 70, PixelLayout::RGBX32);
    for (const auto& [wide, high] : {std::pair{2, 1}, {1, 2}, {4, 1}, {1, 4}, {4, 2}, {2, 4}}) {
        for (const bool arithmetic : {false, true}) {
            for (const bool progressive : {false, true}) {
                JpegRecipe recipe;
                recipe.lumaWide = wide;
                recipe.lumaHigh = high;
                recipe.arithmetic = arithmetic;
                recipe.progressive = progressive;
                const auto decoded = decode(makeJpeg(picture, recipe));
                ASSERT_TRUE(decoded) << decoded.reason().text;
                EXPECT_FALSE(decoded->damaged);
                EXPECT_LT(meanDifference(picture, decoded->pixels), 2.0) << wide << ":" << high;
            }
        }
    }
}

TEST(JpegReader, GrayOfEveryCodingGivesGray8) {
    const PixelBuffer picture = makePicture(90, 70, PixelLayout::Gray8);
    for (const bool arithmetic : {false, true}) {
        for (const bool progressive : {false, true}) {
            JpegRecipe recipe;
            recipe.arithmetic = arithmetic;
            recipe.progressive = progressive;
            const auto decoded = decode(makeJpeg(picture, recipe));
            ASSERT_TRUE(decoded) << decoded.reason().text;
            ASSERT_EQ(decoded->pixels.layout(), PixelLayout::Gray8);
            EXPECT_FALSE(decoded->damaged);
            EXPECT_LT(meanDifference(picture, decoded->pixels), 2.0);
        }
    }
}

TEST(JpegReader, AHeightThatFollowsTheFirstScanIsUsed) {
    const PixelBuffer picture = makePicture(90, 70, PixelLayout::RGBX32);
    for (const bool progressive : {false, true}) {
        JpegRecipe recipe;
        recipe.progressive = progressive;
        recipe.restartRows = 1;
        const auto plain = makeJpeg(picture, recipe);
        const auto late = withLateHeight(plain);
        MemorySource source(late);
        const auto facts = readJpegHeader(source);
        ASSERT_TRUE(facts) << facts.reason().text;
        EXPECT_EQ(facts->height, 70U);
        for (const SizeFloor floor : {SizeFloor{}, SizeFloor{40, 30}}) {
            const auto decoded = decode(late, floor);
            const auto expected = decode(plain, floor);
            ASSERT_TRUE(decoded && expected) << decoded.reason().text;
            EXPECT_FALSE(decoded->damaged);
            EXPECT_EQ(meanDifference(decoded->pixels, expected->pixels), 0);
        }
        const ScopedLimits limits([](DecodeLimits& l) { l.maximumPixels = 90 * 70 - 1; });
        const auto refused = decode(late);
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.reason().code, CodecError::LimitExceeded);
    }
}

TEST(JpegReader, NoHeightAnywhereIsDamaged) {
    const auto late = withLateHeight(makeJpeg(makePicture(90, 70, PixelLayout::RGBX32), {}));
    auto zero = late;
    zero[zero.size() - 3] = 0;  // in front of the end-of-image
    auto wrongLength = late;
    wrongLength[wrongLength.size() - 5] = 5;
    for (const auto& bytes : {zero, wrongLength, firstBytes(late, late.size() - 3),
                              firstBytes(late, late.size() - 8), firstBytes(late, late.size() / 2)}) {
        MemorySource source(bytes);
        EXPECT_FALSE(readJpegHeader(source));
        const auto decoded = decode(bytes);
        ASSERT_FALSE(decoded);
        EXPECT_EQ(decoded.reason().code, CodecError::Damaged);
    }
}

TEST(JpegReader, FourInksBecomeColorsWhetherInvertedOrNot) {
    const PixelBuffer picture = makePicture(64, 48, PixelLayout::RGBX32);
    for (const bool adobe : {true, false}) {
        for (const bool ycck : {true, false}) {
            if (ycck && !adobe) continue;  // without the marker nobody could tell YCCK from CMYK
            JpegRecipe recipe;
            recipe.cmyk = true;
            recipe.adobe = adobe;
            recipe.ycck = ycck;
            const auto decoded = decode(makeJpeg(picture, recipe));
            ASSERT_TRUE(decoded);
            EXPECT_EQ(decoded->pixels.layout(), PixelLayout::RGBX32);
            EXPECT_LT(meanDifference(picture, decoded->pixels), 3.0) << adobe << ycck;
        }
    }
}

TEST(JpegReader, ACutFileKeepsItsUpperRowsAndSaysThatItIsDamaged) {
    const PixelBuffer picture = makePicture(320, 320, PixelLayout::RGBX32);
    auto bytes = jpegOf(picture);
    bytes.resize(bytes.size() * 3 / 4);
    const auto decoded = decode(bytes);
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decoded->damaged);
    uint64_t difference = 0;
    for (uint32_t y = 0; y < 160; ++y) {
        for (size_t i = 0; i < 320 * 4; ++i) {
            difference += static_cast<uint64_t>(std::abs(decoded->pixels.row(y)[i] - picture.row(y)[i]));
        }
    }
    EXPECT_LT(static_cast<double>(difference) / (160.0 * 320 * 4), 1.5);
}

TEST(JpegReader, EveryCutGivesADamagedPictureOfFullSizeOrAFailure) {
    for (const bool progressive : {false, true}) {
        JpegRecipe recipe;
        recipe.progressive = progressive;
        const auto whole = makeJpeg(makePicture(61, 47, PixelLayout::RGBX32), recipe);
        size_t pictures = 0;
        // The last two bytes are the end-of-image marker: without it every row is there all the same.
        for (size_t length = 0; length + 2 < whole.size(); ++length) {
            const auto decoded = decode(firstBytes(whole, length));
            if (!decoded) continue;
            ++pictures;
            EXPECT_EQ(decoded->pixels.width(), 61U);
            EXPECT_EQ(decoded->pixels.height(), 47U);
        }
        EXPECT_GT(pictures, whole.size() / 4);
        const auto half = decode(firstBytes(whole, whole.size() * 4 / 5));
        ASSERT_TRUE(half);
        EXPECT_TRUE(half->damaged);
    }
}

TEST(JpegReader, APulledCardIsACutFile) {
    const auto bytes = jpegOf(makePicture(600, 600, PixelLayout::RGBX32));
    CountingSource source(bytes);
    source.failFrom(bytes.size() / 2);
    const auto decoded = decodeJpeg(source, {});
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decoded->damaged);
}

TEST(JpegReader, HarmedBytesNeverCrashAndResultsKeepTheirShape) {
    for (const bool progressive : {false, true}) {
        JpegRecipe recipe;
        recipe.progressive = progressive;
        recipe.halfColor = true;
        const auto whole = makeJpeg(makePicture(50, 40, PixelLayout::RGBX32), recipe);
        const ScopedLimits limits([](DecodeLimits& l) { l.maximumPixels = 1'000'000; });
        for (uint32_t seed = 0; seed < 600; ++seed) {
            const auto decoded = decode(mutated(whole, seed, 1 + seed % 8), {20, 20});
            if (!decoded) {
                EXPECT_FALSE(decoded.reason().text.empty());
                continue;
            }
            EXPECT_GT(decoded->pixels.width(), 0U);
            EXPECT_LE(uint64_t{decoded->pixels.width()} * decoded->pixels.height(), 1'000'000U);
        }
    }
}

TEST(JpegReader, GarbageAndEmptyFilesAreNotThisFormat) {
    for (const auto& bytes : {std::vector<uint8_t>{}, bytesOf("GIF89a"), bytesOf("\xFF\xD8")}) {
        const auto decoded = decode(bytes);
        ASSERT_FALSE(decoded);
        EXPECT_EQ(decoded.reason().code, CodecError::NotThisFormat);
    }
}

TEST(JpegReader, GarbageBehindTheFirstMarkerIsDamaged) {
    const auto decoded = decode(joined({0xFF, 0xD8, 0xFF}, std::vector<uint8_t>(5000, 0x41)));
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.reason().code, CodecError::Damaged);
}

TEST(JpegReader, AHeadWithoutAnyScanDataIsDamaged) {
    auto bytes = makeHollowJpeg(16, 16, 8, 0);
    bytes = firstBytes(bytes, bytes.size() - 2);
    const auto decoded = decode(bytes);
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.reason().code, CodecError::Damaged);
}

TEST(JpegReader, TwelveBitsAreUnsupportedAndNamed) {
    const auto decoded = decode(makeHollowJpeg(16, 16, 12, 100));
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.reason().code, CodecError::Unsupported);
    EXPECT_EQ(decoded.reason().text, "The JPEG data cannot be used: Unsupported JPEG data precision 12.");
}

TEST(JpegReader, ALostRestartMarkerCostsItsOwnRowsOnly) {
    const PixelBuffer picture = makePicture(160, 160, PixelLayout::RGBX32);
    JpegRecipe recipe;
    recipe.restartRows = 1;
    auto bytes = makeJpeg(picture, recipe);
    size_t at = bytes.size();
    for (size_t i = 0; i + 1 < bytes.size(); ++i) {
        if (bytes[i] == 0xFF && bytes[i + 1] == 0xD4) at = i;
    }
    ASSERT_LT(at, bytes.size());
    bytes[at] = bytes[at + 1] = 0x12;
    const auto decoded = decode(bytes);
    const auto whole = decode(makeJpeg(picture, recipe));
    ASSERT_TRUE(decoded && whole);
    EXPECT_TRUE(decoded->damaged);
    const auto isEqual = [&](uint32_t y) {
        return std::memcmp(decoded->pixels.row(y), whole->pixels.row(y), size_t{160} * 4) == 0;
    };
    EXPECT_TRUE(isEqual(0) && isEqual(30)) << "in front of the loss";
    EXPECT_TRUE(isEqual(159)) << "behind the next marker";
}

TEST(JpegReader, SidesPixelsAndMemoryAreLimitedBeforeAnythingIsAllocated) {
    const auto bytes = makeHollowJpeg(60000, 60000, 8, 10);
    const auto pixels = decode(bytes);
    ASSERT_FALSE(pixels);
    EXPECT_EQ(pixels.reason().code, CodecError::LimitExceeded);

    const auto small = jpegOf(makePicture(100, 50, PixelLayout::RGBX32));
    {
        const ScopedLimits limits([](DecodeLimits& l) { l.maximumSide = 99; });
        const auto decoded = decode(small);
        ASSERT_FALSE(decoded);
        EXPECT_EQ(decoded.reason().code, CodecError::LimitExceeded);
    }
    {
        const ScopedLimits limits([](DecodeLimits& l) { l.maximumBytes = 10'000; });
        const auto whole = decode(small);
        ASSERT_FALSE(whole);
        EXPECT_EQ(whole.reason().code, CodecError::LimitExceeded);
        EXPECT_TRUE(decode(small, {20, 10})) << "a smaller scale fits";
    }
}

TEST(JpegReader, AFileFarTooShortForItsPictureFailsAtOnce) {
    const auto decoded = decode(makeHollowJpeg(19000, 19000, 8, 50));
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.reason().code, CodecError::Damaged);
}

TEST(JpegReader, MoreScansThanAllowedAreRefused) {
    ASSERT_TRUE(decode(makeScanBomb(64, 64, 100)));
    const auto decoded = decode(makeScanBomb(64, 64, 600));
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.reason().code, CodecError::LimitExceeded);
}

TEST(JpegReader, ALargePictureIsAllowedFewerScans) {
    // 9000 by 9000 pixels are 1.3 million blocks: 450 scans would visit more than half a billion.
    auto bomb = makeScanBomb(9000, 9000, 450);
    bomb.insert(bomb.end(), 50'000, 0);
    const auto decoded = decode(bomb, {100, 100});
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.reason().code, CodecError::LimitExceeded);
}

TEST(JpegReader, ReadsInPiecesAndNeverTheWholeFileAtOnce) {
    const auto bytes = jpegOf(makePicture(1200, 900, PixelLayout::RGBX32));
    ASSERT_GT(bytes.size(), 200'000U);
    CountingSource source(bytes);
    ASSERT_TRUE(decodeJpeg(source, {100, 100}));
    EXPECT_LE(source.largestRead(), 65536U);
}

TEST(JpegReader, AHugePaddedHeadIsNotSearchedToItsEnd) {
    std::vector<uint8_t> bytes = {0xFF, 0xD8, 0xFF};
    bytes.resize(size_t{48} << 20, 0x00);
    CountingSource source(bytes);
    EXPECT_FALSE(decodeJpeg(source, {}));
    EXPECT_LE(source.bytesRead(), (uint64_t{32} << 20) + 3);
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Decoding of TIFF: layouts, photometric kinds, pages, damage and limits.
#include <gtest/gtest.h>

#include <cstring>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/MakeTiff.h"
#include "PlatformKit/Codecs/ScopedLimits.h"
#include "PlatformKit/Codecs/TiffBytes.h"
#include "PlatformKit/Codecs/TiffField.h"
#include "PlatformKit/Codecs/TiffReader.h"

namespace fi::test {

namespace {

CodecResult<DecodedPicture> decode(const std::vector<uint8_t>& bytes, uint32_t page = 0) {
    MemorySource source(bytes);
    return decodeTiff(source, page, {});
}

CodecResult<ImageHeader> header(const std::vector<uint8_t>& bytes, uint32_t page = 0) {
    MemorySource source(bytes);
    return readTiffHeader(source, page);
}

/// The smallest description of a gray picture, for files that lie about the rest.
std::vector<TiffBytes::Entry> grayEntries(uint32_t width, uint32_t height, uint32_t rowsPerStrip) {
    return {{256, kTiffLong, 1, width}, {257, kTiffLong, 1, height},       {258, kTiffShort, 1, 8},
            {259, kTiffShort, 1, 1},    {262, kTiffShort, 1, 1},           {273, kTiffLong, 1, 8},
            {277, kTiffShort, 1, 1},    {278, kTiffLong, 1, rowsPerStrip}, {279, kTiffLong, 1, 16}};
}

}  // namespace

TEST(TiffReader, RecognisesBothOrdersAndBothSizes) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        for (const bool big : {false, true}) {
            EXPECT_TRUE(looksLikeTiff(ByteView(TiffBytes(order, big).bytes())));
        }
    }
    for (const auto& text : {"", "II*", "MM*x", "IIII", "\xFF\xD8\xFF\xE0"}) {
        EXPECT_FALSE(looksLikeTiff(ByteView(bytesOf(text)))) << text;
    }
}

TEST(TiffReader, EveryLayoutGivesExactlyTheSamePixels) {
    const PixelBuffer picture = makePicture(53, 37, PixelLayout::RGBX32);
    for (const int compression : {1, 5, 8, 32773}) {
        for (const uint32_t tile : {0U, 16U, 64U}) {
            for (const bool planar : {false, true}) {
                for (const bool bigEndian : {false, true}) {
                    TiffRecipe recipe;
                    recipe.compression = compression;
                    recipe.tile = tile;
                    recipe.planar = planar;
                    recipe.bigEndian = bigEndian;
                    recipe.big = bigEndian;
                    const auto decoded = decode(makeTiff(picture, recipe));
                    ASSERT_TRUE(decoded)
                        << compression << " " << tile << " " << planar << decoded.reason().text;
                    EXPECT_FALSE(decoded->damaged);
                    EXPECT_EQ(meanDifference(picture, decoded->pixels), 0)
                        << compression << " " << tile << planar;
                }
            }
        }
    }
}

TEST(TiffReader, AFloorGivesTheMeanOfBlocksInEveryLayout) {
    for (const TiffKind kind : {TiffKind::Rgb, TiffKind::Gray, TiffKind::InvertedGray, TiffKind::Cmyk,
                                TiffKind::RgbAlpha, TiffKind::Palette, TiffKind::OneBit}) {
        const bool gray =
            kind == TiffKind::Gray || kind == TiffKind::InvertedGray || kind == TiffKind::OneBit;
        const auto layout = gray ? PixelLayout::Gray8 : PixelLayout::RGBX32;
        for (const uint32_t tile : {0U, 16U}) {
            for (const uint32_t rowsPerStrip : {1U, 5U, 67U}) {
                TiffRecipe recipe;
                recipe.kind = kind;
                recipe.tile = tile;
                recipe.rowsPerStrip = rowsPerStrip;
                const auto bytes = makeTiff(makePicture(101, 67, layout), recipe);
                const auto full = decode(bytes);
                MemorySource source(bytes);
                const auto small = decodeTiff(source, 0, {20, 13});
                ASSERT_TRUE(full && small);
                EXPECT_EQ(small->pixels.width(), 20U);
                EXPECT_EQ(small->pixels.height(), 13U);
                EXPECT_FALSE(small->damaged);
                EXPECT_TRUE(isBlockMeanOf(small->pixels, full->pixels)) << tile << " " << rowsPerStrip;
            }
        }
    }
}

TEST(TiffReader, AFloorGivesTheMeanOfBlocksInDepthsOfManyBitsAndInPlanes) {
    for (const bool planar : {false, true}) {
        for (const int bits : {8, 16}) {
            for (const TiffKind kind : {TiffKind::Rgb, TiffKind::Gray, TiffKind::Cmyk}) {
                TiffRecipe recipe;
                recipe.kind = kind;
                recipe.bits = bits;
                recipe.planar = planar;
                const auto layout = kind == TiffKind::Gray ? PixelLayout::Gray8 : PixelLayout::RGBX32;
                const auto bytes = makeTiff(makePicture(101, 67, layout), recipe);
                const auto full = decode(bytes);
                MemorySource source(bytes);
                const auto small = decodeTiff(source, 0, {20, 13});
                ASSERT_TRUE(full && small) << planar << " " << bits;
                EXPECT_EQ(small->pixels.width(), 20U);
                EXPECT_TRUE(isBlockMeanOf(small->pixels, full->pixels)) << planar << " " << bits;
            }
        }
    }
}

TEST(TiffReader, AFloorNeedsMemoryForTheBandsAndTheResultAlone) {
    const auto decodes = [](uint32_t rowsPerStrip, TiffKind kind, SizeFloor floor) {
        const auto layout = kind == TiffKind::Gray ? PixelLayout::Gray8 : PixelLayout::RGBX32;
        TiffRecipe recipe;
        recipe.kind = kind;
        recipe.compression = 8;
        recipe.rowsPerStrip = rowsPerStrip;
        const auto bytes = makeTiff(makePicture(1000, 800, layout), recipe);
        const ScopedLimits limits([](DecodeLimits& l) { l.maximumBytes = 500'000; });
        MemorySource source(bytes);
        const auto picture = decodeTiff(source, 0, floor);
        EXPECT_TRUE(picture || picture.reason().code == CodecError::LimitExceeded);
        return picture.ok();
    };
    for (const TiffKind kind : {TiffKind::Gray, TiffKind::Rgb}) {
        EXPECT_TRUE(decodes(16, kind, {100, 80}));
        EXPECT_FALSE(decodes(16, kind, {}));
        EXPECT_FALSE(decodes(16, kind, {900, 700}));
        EXPECT_FALSE(decodes(800, kind, {100, 80})) << "a strip counts as well";
    }
}

TEST(TiffReader, RowsThatCannotBeReadAreGrayInAReducedPictureToo) {
    TiffRecipe recipe;
    recipe.compression = 5;
    recipe.rowsPerStrip = 10;
    const auto bytes = makeTiff(makePicture(200, 200, PixelLayout::RGBX32), recipe);
    const auto decodeWithHole = [&](SizeFloor floor) {
        CountingSource source(bytes);
        source.makeHole(bytes.size() * 4 / 10, bytes.size() * 7 / 10);
        return decodeTiff(source, 0, floor);
    };
    const auto full = decodeWithHole({});
    const auto small = decodeWithHole({40, 40});
    ASSERT_TRUE(full && small);
    EXPECT_TRUE(small->damaged);
    EXPECT_EQ(small->pixels.width(), 40U);
    EXPECT_TRUE(isBlockMeanOf(small->pixels, full->pixels));
}

TEST(TiffReader, EveryCornerSizeComesBackExactly) {
    struct Size {
        uint32_t width;
        uint32_t height;
    };
    for (const Size size : {Size{1, 1}, Size{1, 2}, Size{2, 1}, Size{1, 300}, Size{300, 1}, Size{16, 16},
                            Size{15, 33}, Size{17, 4}}) {
        for (const TiffKind kind : {TiffKind::Gray, TiffKind::Rgb}) {
            const auto layout = kind == TiffKind::Gray ? PixelLayout::Gray8 : PixelLayout::RGBX32;
            const PixelBuffer picture = makePicture(size.width, size.height, layout);
            TiffRecipe recipe;
            recipe.kind = kind;
            const auto decoded = decode(makeTiff(picture, recipe));
            ASSERT_TRUE(decoded) << size.width << "x" << size.height;
            EXPECT_EQ(meanDifference(picture, decoded->pixels), 0) << size.width << "x" << size.height;
        }
    }
}

TEST(TiffReader, GrayOfEveryPolarityGivesGray8) {
    const PixelBuffer picture = makePicture(41, 23, PixelLayout::Gray8);
    for (const TiffKind kind : {TiffKind::Gray, TiffKind::InvertedGray}) {
        for (const int bits : {8, 16}) {
            TiffRecipe recipe;
            recipe.kind = kind;
            recipe.bits = bits;
            if (kind == TiffKind::InvertedGray && bits == 16)
                continue;  // doubled bytes are not inverted words
            const auto decoded = decode(makeTiff(picture, recipe));
            ASSERT_TRUE(decoded);
            EXPECT_EQ(decoded->pixels.layout(), PixelLayout::Gray8);
            EXPECT_EQ(meanDifference(picture, decoded->pixels), 0);
        }
    }
}

TEST(TiffReader, OneBitIsExpandedToBlackAndWhite) {
    const PixelBuffer picture = makePicture(43, 19, PixelLayout::Gray8);
    for (const TiffKind kind : {TiffKind::OneBit, TiffKind::InvertedOneBit}) {
        for (const int compression : {1, 4}) {
            TiffRecipe recipe;
            recipe.kind = kind;
            recipe.compression = compression;
            const auto decoded = decode(makeTiff(picture, recipe));
            ASSERT_TRUE(decoded);
            ASSERT_EQ(decoded->pixels.layout(), PixelLayout::Gray8);
            for (uint32_t y = 0; y < 19; ++y) {
                for (uint32_t x = 0; x < 43; ++x) {
                    ASSERT_EQ(decoded->pixels.row(y)[x], picture.row(y)[x] >= 128 ? 255 : 0)
                        << x << "," << y;
                }
            }
        }
    }
}

TEST(TiffReader, SixteenBitsPalettesAndInksBecomeColors) {
    const PixelBuffer picture = makePicture(30, 20, PixelLayout::RGBX32);
    TiffRecipe deep;
    deep.bits = 16;
    TiffRecipe inks;
    inks.kind = TiffKind::Cmyk;
    for (const TiffRecipe& recipe : {deep, inks}) {
        const auto decoded = decode(makeTiff(picture, recipe));
        ASSERT_TRUE(decoded) << decoded.reason().text;
        EXPECT_EQ(meanDifference(picture, decoded->pixels), 0);
    }
    TiffRecipe palette;
    palette.kind = TiffKind::Palette;
    const auto decoded = decode(makeTiff(picture, palette));
    ASSERT_TRUE(decoded);
    ASSERT_EQ(decoded->pixels.layout(), PixelLayout::RGBX32);
    for (size_t x = 0; x < 30; ++x) {
        const uint8_t level = picture.row(7)[4 * x];
        for (size_t i = 0; i < 3; ++i)
            ASSERT_EQ(decoded->pixels.row(7)[4 * x + i], level);
    }
}

TEST(TiffReader, TransparencyLiesOnWhiteAndAnUnnamedSampleHidesNothing) {
    const PixelBuffer picture = makePicture(30, 20, PixelLayout::RGBX32);
    TiffRecipe alpha;
    alpha.kind = TiffKind::RgbAlpha;
    const auto laid = decode(makeTiff(picture, alpha));
    ASSERT_TRUE(laid);
    for (uint32_t y = 0; y < 20; ++y) {
        for (uint32_t x = 0; x < 30; ++x) {
            const uint8_t* pixel = laid->pixels.row(y) + size_t{x} * 4;
            const int a = tiffAlphaAt(x, y);
            for (int i = 0; i < 3; ++i) {
                const int expected =
                    picture.row(y)[size_t{x} * 4 + static_cast<size_t>(i)] * a / 255 + 255 - a;
                ASSERT_EQ(pixel[i], expected);
            }
            ASSERT_EQ(pixel[3], 255);
        }
    }
    TiffRecipe mask;
    mask.kind = TiffKind::RgbMask;
    const auto plain = decode(makeTiff(picture, mask));
    ASSERT_TRUE(plain);
    EXPECT_EQ(meanDifference(picture, plain->pixels), 0);
}

TEST(TiffReader, RowsStayAsStoredWhateverTheOrientation) {
    const PixelBuffer picture = makePicture(24, 12, PixelLayout::RGBX32);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        for (const uint32_t tile : {0U, 16U}) {
            TiffRecipe recipe;
            recipe.orientation = orientation;
            recipe.tile = tile;
            const auto decoded = decode(makeTiff(picture, recipe));
            ASSERT_TRUE(decoded);
            EXPECT_EQ(meanDifference(picture, decoded->pixels), 0) << orientation;
        }
    }
}

TEST(TiffReader, PagesAreCountedAndReadByNumber) {
    TiffRecipe recipe;
    recipe.pages = 5;
    const auto bytes = makeTiff(makePicture(9, 7, PixelLayout::RGBX32), recipe);
    for (uint32_t page = 0; page < 5; ++page) {
        const auto facts = header(bytes, page);
        ASSERT_TRUE(facts);
        EXPECT_EQ(facts->pages, 5U);
        EXPECT_TRUE(decode(bytes, page));
    }
    EXPECT_FALSE(header(bytes, 5));
    EXPECT_FALSE(decode(bytes, UINT32_MAX));
}

TEST(TiffReader, HeaderTellsModelDepthAndCompression) {
    struct Case {
        TiffKind kind;
        ColorModel model;
        uint32_t components;
        uint32_t bits;
    };
    for (const Case c :
         {Case{TiffKind::Gray, ColorModel::Gray, 1, 8}, Case{TiffKind::OneBit, ColorModel::Gray, 1, 1},
          Case{TiffKind::Rgb, ColorModel::RGB, 3, 8}, Case{TiffKind::Palette, ColorModel::RGB, 1, 8},
          Case{TiffKind::Cmyk, ColorModel::CMYK, 4, 8}, Case{TiffKind::RgbAlpha, ColorModel::RGB, 4, 8}}) {
        const bool gray = c.model == ColorModel::Gray;
        TiffRecipe recipe;
        recipe.kind = c.kind;
        recipe.compression = 5;
        const auto facts =
            header(makeTiff(makePicture(19, 11, gray ? PixelLayout::Gray8 : PixelLayout::RGBX32), recipe));
        ASSERT_TRUE(facts);
        EXPECT_EQ(facts->width, 19U);
        EXPECT_EQ(facts->height, 11U);
        EXPECT_EQ(facts->model, c.model);
        EXPECT_EQ(facts->components, c.components);
        EXPECT_EQ(facts->bitsPerComponent, c.bits);
        EXPECT_EQ(facts->tiffCompression, 5U);
        EXPECT_FALSE(facts->density);
    }
}

TEST(TiffReader, HeaderReadsNoPixels) {
    TiffRecipe recipe;
    recipe.rowsPerStrip = 100;
    const auto bytes = makeTiff(makePicture(900, 700, PixelLayout::RGBX32), recipe);
    ASSERT_GT(bytes.size(), 1'000'000U);
    CountingSource source(bytes);
    ASSERT_TRUE(readTiffHeader(source, 0));
    EXPECT_LE(source.bytesRead(), 16'384U);
}

TEST(TiffReader, AnUnreadableStretchCostsItsOwnRowsOnly) {
    const PixelBuffer picture = makePicture(200, 200, PixelLayout::RGBX32);
    for (const int compression : {1, 5}) {
        for (const uint32_t rowsPerStrip : {10U, 200U}) {
            TiffRecipe recipe;
            recipe.compression = compression;
            recipe.rowsPerStrip = rowsPerStrip;
            const auto bytes = makeTiff(picture, recipe);
            CountingSource source(bytes);
            source.makeHole(bytes.size() * 6 / 10, bytes.size() * 7 / 10);
            const auto decoded = decodeTiff(source, 0, {});
            ASSERT_TRUE(decoded) << compression << " " << rowsPerStrip;
            EXPECT_TRUE(decoded->damaged);
            for (uint32_t y = 0; y < 80; ++y) {
                ASSERT_EQ(std::memcmp(decoded->pixels.row(y), picture.row(y), 800), 0) << y;
            }
            if (rowsPerStrip > 10) continue;
            for (uint32_t y = 170; y < 200; ++y) {
                ASSERT_EQ(std::memcmp(decoded->pixels.row(y), picture.row(y), 800), 0) << y;
            }
        }
    }
}

TEST(TiffReader, ACutFileKeepsTheRowsBeforeTheCut) {
    TiffBytes tiff(ByteOrder::Little);
    const uint64_t directory = tiff.here();
    auto entries = grayEntries(64, 100, 100);
    entries[5].value = directory + 2 + 12 * entries.size() + 4;
    entries[8].value = 6400;
    tiff.setFirst(tiff.addDirectory(entries));
    for (uint8_t row = 0; row < 60; ++row)
        tiff.addBytes(64, row);
    const auto decoded = decode(tiff.bytes());
    ASSERT_TRUE(decoded) << decoded.reason().text;
    EXPECT_TRUE(decoded->damaged);
    ASSERT_EQ(decoded->pixels.height(), 100U);
    for (uint32_t y = 0; y < 60; ++y) {
        ASSERT_EQ(decoded->pixels.row(y)[0], y);
        ASSERT_EQ(decoded->pixels.row(y)[63], y);
    }
}

TEST(TiffReader, EveryCutGivesAPictureOfFullSizeOrAFailure) {
    for (const int compression : {1, 5, 8}) {
        TiffRecipe recipe;
        recipe.compression = compression;
        const auto whole = makeTiff(makePicture(31, 17, PixelLayout::RGBX32), recipe);
        for (size_t length = 0; length < whole.size(); ++length) {
            const auto decoded = decode(firstBytes(whole, length));
            if (!decoded) {
                EXPECT_FALSE(decoded.reason().text.empty());
                continue;
            }
            EXPECT_EQ(decoded->pixels.width(), 31U);
            EXPECT_EQ(decoded->pixels.height(), 17U);
        }
    }
}

TEST(TiffReader, HarmedBytesNeverCrashAndResultsKeepWithinTheLimits) {
    const ScopedLimits limits([](DecodeLimits& l) { l.maximumPixels = 100'000; });
    uint32_t seed = 0;
    for (const int compression : {1, 5, 8, 32773}) {
        for (const uint32_t tile : {0U, 16U}) {
            TiffRecipe recipe;
            recipe.compression = compression;
            recipe.tile = tile;
            const auto whole = makeTiff(makePicture(31, 17, PixelLayout::RGBX32), recipe);
            for (int i = 0; i < 150; ++i, ++seed) {
                const auto decoded = decode(mutated(whole, seed, 1 + seed % 10));
                if (!decoded) continue;
                EXPECT_LE(uint64_t{decoded->pixels.width()} * decoded->pixels.height(), 100'000U);
            }
        }
    }
}

TEST(TiffReader, HugeSidesInATinyFileFailAtOnce) {
    struct Case {
        uint32_t width;
        uint32_t height;
        uint32_t rowsPerStrip;
    };
    for (const Case c :
         {Case{0xFFFFFFFF, 0xFFFFFFFF, 1}, Case{60'000, 60'000, 60'000}, Case{65'535, 6'000, 1},
          Case{20'000, 20'000, 20'000}, Case{1, 0x7FFFFFFF, 1}, Case{65'535, 1, 0xFFFFFFFF}}) {
        TiffBytes tiff(ByteOrder::Little);
        tiff.setFirst(tiff.addDirectory(grayEntries(c.width, c.height, c.rowsPerStrip)));
        EXPECT_FALSE(decode(tiff.bytes())) << c.width << "x" << c.height;
    }
}

TEST(TiffReader, PixelsSidesAndMemoryAreLimited) {
    const auto bytes = makeTiff(makePicture(100, 50, PixelLayout::RGBX32), {});
    const auto refused = [&](auto change) {
        const ScopedLimits limits(change);
        const auto decoded = decode(bytes);
        return !decoded.ok() && decoded.reason().code == CodecError::LimitExceeded;
    };
    EXPECT_TRUE(refused([](DecodeLimits& l) { l.maximumSide = 99; }));
    EXPECT_TRUE(refused([](DecodeLimits& l) { l.maximumPixels = 4'999; }));
    EXPECT_TRUE(refused([](DecodeLimits& l) { l.maximumBytes = 20'000; }));
    EXPECT_TRUE(decode(bytes));
}

TEST(TiffReader, DirectoriesInALoopAreCountedOnce) {
    TiffBytes tiff(ByteOrder::Little);
    tiff.addBytes(16, 99);
    const uint64_t first = tiff.addDirectory(grayEntries(4, 4, 4));
    const uint64_t second = tiff.addDirectory(grayEntries(4, 4, 4), first);
    auto entries = grayEntries(4, 4, 4);
    const uint64_t third = tiff.addDirectory(entries, second);
    tiff.setFirst(third);
    const auto facts = header(tiff.bytes());
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->pages, 3U);
}

TEST(TiffReader, AThousandDirectoriesAreReadQuicklyAndCountedUpToTheLimit) {
    TiffBytes tiff(ByteOrder::Little);
    uint64_t next = 0;
    for (int i = 0; i < 1000; ++i)
        next = tiff.addDirectory(grayEntries(4, 4, 4), next);
    tiff.setFirst(next);
    CountingSource source(tiff.bytes());
    const auto last = readTiffHeader(source, 999);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->pages, 1000U);
    EXPECT_LE(source.bytesRead(), 1010U * 4096) << "one small read for each page";
    const ScopedLimits limits([](DecodeLimits& l) { l.maximumPages = 70; });
    const auto limited = header(tiff.bytes());
    ASSERT_TRUE(limited);
    EXPECT_EQ(limited->pages, 70U);
    EXPECT_FALSE(header(tiff.bytes(), 70));
}

TEST(TiffReader, OtherFilesAreNotThisFormat) {
    for (const auto& bytes : {std::vector<uint8_t>{}, bytesOf("II"), bytesOf("GIF89a")}) {
        const auto decoded = decode(bytes);
        ASSERT_FALSE(decoded);
        EXPECT_EQ(decoded.reason().code, CodecError::NotThisFormat);
        EXPECT_FALSE(header(bytes));
    }
}

}  // namespace fi::test

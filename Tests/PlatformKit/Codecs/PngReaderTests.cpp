// SPDX-License-Identifier: Apache-2.0
// Pictures of every kind, whole, cut, harmed and hostile.
#include "PlatformKit/Codecs/PngReader.h"

#include <gtest/gtest.h>

#include <cstring>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/MakePng.h"
#include "PlatformKit/Codecs/ScopedLimits.h"

namespace fi::test {

namespace {

using Bytes = std::vector<uint8_t>;

constexpr PngShape kColors{40, 30, 8, PngKind::Color, false};
constexpr PngShape kInterlacedColors{40, 30, 8, PngKind::Color, true};

/// Every kind with every depth that it has.
constexpr PngShape kKinds[] = {
    {1, 1, 1, PngKind::Gray},       {1, 1, 2, PngKind::Gray},       {1, 1, 4, PngKind::Gray},
    {1, 1, 8, PngKind::Gray},       {1, 1, 16, PngKind::Gray},      {1, 1, 8, PngKind::Color},
    {1, 1, 16, PngKind::Color},     {1, 1, 1, PngKind::Palette},    {1, 1, 2, PngKind::Palette},
    {1, 1, 4, PngKind::Palette},    {1, 1, 8, PngKind::Palette},    {1, 1, 8, PngKind::GrayAlpha},
    {1, 1, 16, PngKind::GrayAlpha}, {1, 1, 8, PngKind::ColorAlpha}, {1, 1, 16, PngKind::ColorAlpha}};

constexpr SizeFloor kSides[] = {{1, 1}, {1, 9}, {9, 1}, {5, 5}, {33, 17}, {64, 20}};

std::string nameOf(const PngShape& shape) {
    return std::to_string(shape.width) + "x" + std::to_string(shape.height) + " kind " +
           std::to_string(static_cast<int>(shape.kind)) + " bits " + std::to_string(shape.bits) +
           (shape.interlaced ? " interlaced" : "");
}

CodecResult<DecodedPicture> decode(const Bytes& bytes, SizeFloor floor = {}) {
    MemorySource source(bytes);
    return decodePng(source, floor);
}

/// Why the bytes are refused; nullopt when they are not.
std::optional<CodecError> refusalOf(const Bytes& bytes, SizeFloor floor = {}) {
    const auto decoded = decode(bytes, floor);
    return decoded ? std::nullopt : std::optional(decoded.reason().code);
}

/// R, G, B, alpha in 16 bits, or in 8 where a picture has no more; alpha is full without a word of it.
struct Pixel {
    uint32_t color[3];
    uint32_t alpha;
    bool operator==(const Pixel&) const = default;
};

uint32_t widened(uint32_t value, uint8_t bits) {
    return bits < 8 ? value * 255 / ((1U << bits) - 1) : value;
}

/// What stands at a place, plainly from what was stored.
Pixel storedPixel(const PngShape& shape, uint32_t x, uint32_t y) {
    const auto at = [&](uint32_t sample) { return widened(pngSampleAt(shape, x, y, sample), shape.bits); };
    const uint32_t full = shape.bits == 16 ? 65'535 : 255;
    switch (shape.kind) {
        case PngKind::Gray:
            return {{at(0), at(0), at(0)}, full};
        case PngKind::GrayAlpha:
            return {{at(0), at(0), at(0)}, at(1)};
        case PngKind::Color:
            return {{at(0), at(1), at(2)}, full};
        case PngKind::ColorAlpha:
            return {{at(0), at(1), at(2)}, at(3)};
        case PngKind::Palette:
            break;
    }
    const auto color = pngPaletteColor(pngSampleAt(shape, x, y, 0));
    return {{color[0], color[1], color[2]}, 255};
}

uint32_t wordIn(const uint8_t* row, size_t index) {
    uint16_t word = 0;
    std::memcpy(&word, row + 2 * index, 2);
    return word;
}

Pixel decodedPixel(const PixelBuffer& pixels, uint32_t x, uint32_t y) {
    const uint8_t* row = pixels.row(y);
    const auto gray = [](uint32_t level, uint32_t full) { return Pixel{{level, level, level}, full}; };
    switch (pixels.layout()) {
        case PixelLayout::Gray1:
            return gray((row[x / 8] >> (7 - x % 8) & 1) != 0 ? 255 : 0, 255);
        case PixelLayout::Gray8:
            return gray(row[x], 255);
        case PixelLayout::Gray16:
            return gray(wordIn(row, x), 65'535);
        case PixelLayout::RGBX64:
            return {{wordIn(row, size_t{4} * x), wordIn(row, size_t{4} * x + 1),
                     wordIn(row, size_t{4} * x + 2)},
                    wordIn(row, size_t{4} * x + 3)};
        default:
            row += size_t{4} * x;
            return {{row[0], row[1], row[2]}, row[3]};
    }
}

/// As RGBA32 holds it.
Pixel multiplied(Pixel pixel, bool words) {
    const auto byte = [&](uint32_t value) { return words ? (value * 255 + 32'767) / 65'535 : value; };
    const uint32_t alpha = byte(pixel.alpha);
    for (uint32_t& color : pixel.color)
        color = (byte(color) * alpha + 127) / 255;
    pixel.alpha = alpha;
    return pixel;
}

void expectStored(const PixelBuffer& pixels, const PngShape& shape, uint32_t rows) {
    const bool alpha = pixels.layout() == PixelLayout::RGBA32;
    for (uint32_t y = 0; y < rows; ++y) {
        for (uint32_t x = 0; x < shape.width; ++x) {
            const Pixel stored = storedPixel(shape, x, y);
            const Pixel wanted = alpha ? multiplied(stored, shape.bits == 16) : stored;
            ASSERT_TRUE(decodedPixel(pixels, x, y) == wanted) << nameOf(shape) << " at " << x << "," << y;
        }
    }
}

PixelLayout layoutOf(const PngShape& shape) {
    switch (shape.kind) {
        case PngKind::Gray:
            if (shape.bits == 16) return PixelLayout::Gray16;
            return shape.bits == 1 ? PixelLayout::Gray1 : PixelLayout::Gray8;
        case PngKind::Color:
            return shape.bits == 16 ? PixelLayout::RGBX64 : PixelLayout::RGBX32;
        case PngKind::Palette:
            return PixelLayout::RGBX32;
        default:
            return PixelLayout::RGBA32;
    }
}

bool isSame(const PixelBuffer& a, const PixelBuffer& b) {
    if (a.width() != b.width() || a.height() != b.height() || a.layout() != b.layout()) return false;
    for (uint32_t y = 0; y < a.height(); ++y) {
        const auto bytes = static_cast<size_t>(bytesOfRow(a.width(), a.layout()));
        if (std::memcmp(a.row(y), b.row(y), bytes) != 0) return false;
    }
    return true;
}

PngShape sized(PngShape shape, SizeFloor sides, bool interlaced) {
    shape.width = sides.width;
    shape.height = sides.height;
    shape.interlaced = interlaced;
    return shape;
}

}  // namespace

TEST(PngReader, RecognisesTheFirstEightBytes) {
    const Bytes png = makePng(kColors);
    EXPECT_TRUE(looksLikePng(ByteView(png)));
    EXPECT_TRUE(looksLikePng(ByteView(png.data(), 8)));
    EXPECT_FALSE(looksLikePng(ByteView(png.data(), 7)));
    Bytes other = png;
    other[4] = '\n';
    EXPECT_FALSE(looksLikePng(ByteView(other)));
}

TEST(PngReader, EveryKindDepthAndSizeComesBackExactly) {
    for (const PngShape& kind : kKinds) {
        for (const SizeFloor sides : kSides) {
            for (const bool interlaced : {false, true}) {
                const PngShape shape = sized(kind, sides, interlaced);
                const auto decoded = decode(makePng(shape));
                ASSERT_TRUE(decoded) << nameOf(shape) << ": " << decoded.reason().text;
                EXPECT_FALSE(decoded->damaged) << nameOf(shape);
                ASSERT_EQ(decoded->pixels.layout(), layoutOf(shape)) << nameOf(shape);
                ASSERT_EQ(decoded->pixels.width(), shape.width);
                ASSERT_EQ(decoded->pixels.height(), shape.height);
                expectStored(decoded->pixels, shape, shape.height);
            }
        }
    }
}

TEST(PngReader, PaletteEntriesHaveTheirAlpha) {
    for (const bool interlaced : {false, true}) {
        const PngShape shape{31, 20, 4, PngKind::Palette, interlaced};
        const auto decoded = decode(withPngChunk(makePng(shape), "IDAT", "tRNS", {0, 100, 255}));
        ASSERT_TRUE(decoded);
        ASSERT_EQ(decoded->pixels.layout(), PixelLayout::RGBA32);
        for (uint32_t y = 0; y < 20; ++y) {
            for (uint32_t x = 0; x < 31; ++x) {
                constexpr uint32_t kAlphas[] = {0, 100};
                const uint32_t index = pngSampleAt(shape, x, y, 0);
                Pixel wanted = storedPixel(shape, x, y);
                if (index < 2) wanted.alpha = kAlphas[index];
                ASSERT_TRUE(decodedPixel(decoded->pixels, x, y) == multiplied(wanted, false));
            }
        }
    }
}

TEST(PngReader, TheTransparentColorIsThatOfEverySampleInFullDepth) {
    for (PngShape shape : kKinds) {
        if (shape.hasAlphaSamples() || shape.kind == PngKind::Palette) continue;
        shape = sized(shape, {21, 16}, false);
        Bytes key;
        for (uint32_t i = 0; i < shape.samples(); ++i) {
            const uint32_t value = pngSampleAt(shape, 4, 3, i);
            key.push_back(static_cast<uint8_t>(value >> 8));
            key.push_back(static_cast<uint8_t>(value & 255));
        }
        const auto decoded = decode(withPngChunk(makePng(shape), "IDAT", "tRNS", key));
        ASSERT_TRUE(decoded) << nameOf(shape);
        ASSERT_EQ(decoded->pixels.layout(), PixelLayout::RGBA32);
        for (uint32_t y = 0; y < 16; ++y) {
            for (uint32_t x = 0; x < 21; ++x) {
                Pixel wanted = storedPixel(shape, x, y);
                if (wanted == storedPixel(shape, 4, 3)) wanted.alpha = 0;
                ASSERT_TRUE(decodedPixel(decoded->pixels, x, y) == multiplied(wanted, shape.bits == 16))
                    << nameOf(shape);
            }
        }
    }
}

TEST(PngReader, ATransparencyThatIsNoneOfTheKindIsPassedOver) {
    const auto decoded = decode(withPngChunk(makePng(kColors), "IDAT", "tRNS", {1, 2}));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->pixels.layout(), PixelLayout::RGBX32);
    expectStored(decoded->pixels, kColors, kColors.height);
}

TEST(PngReader, AnIndexBeyondThePaletteIsBlack) {
    const PngShape shape{3, 1, 8, PngKind::Palette, false};
    const Bytes png = pngOfPackedData(shape, zlibPacked({0, 0, 1, 200}));
    const auto decoded = decode(withPngChunk(png, "IDAT", "PLTE", {1, 2, 3, 4, 5, 6}));
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decodedPixel(decoded->pixels, 1, 0) == (Pixel{{4, 5, 6}, 255}));
    EXPECT_TRUE(decodedPixel(decoded->pixels, 2, 0) == (Pixel{{0, 0, 0}, 255}));
    EXPECT_EQ(refusalOf(png), CodecError::Damaged) << "without any palette";
}

TEST(PngReader, GammaProfileBackgroundAndSignificantBitsChangeNoPixel) {
    Bytes png = makePng(kColors);
    png = withPngChunk(png, "IDAT", "gAMA", {0, 1, 0x86, 0xA0});
    png = withPngChunk(png, "IDAT", "sBIT", {3, 3, 3});
    png = withPngChunk(png, "IDAT", "bKGD", {0, 9, 0, 9, 0, 9});
    png = withPngChunk(png, "IDAT", "iCCP", pngProfileData(Bytes(5000, 7)));
    png = withPngChunk(png, "IDAT", "zzZz", Bytes(300'000, 1));
    const auto decoded = decode(png);
    ASSERT_TRUE(decoded);
    EXPECT_FALSE(decoded->damaged);
    expectStored(decoded->pixels, kColors, kColors.height);
}

TEST(PngReader, AFloorReducesByMeansAndBlackAndWhiteAndInterlacedPicturesComeInFull) {
    for (PngShape shape : kKinds) {
        for (const bool interlaced : {false, true}) {
            shape = sized(shape, {101, 67}, interlaced);
            const Bytes png = makePng(shape);
            const auto full = decode(png);
            const auto small = decode(png, {25, 20});
            ASSERT_TRUE(full && small);
            if (interlaced || full->pixels.layout() == PixelLayout::Gray1) {
                EXPECT_TRUE(isSame(full->pixels, small->pixels)) << nameOf(shape);
                continue;
            }
            ASSERT_EQ(small->pixels.width(), 33U);
            ASSERT_EQ(small->pixels.height(), 22U);
            EXPECT_TRUE(isBlockMeanOf(small->pixels, full->pixels)) << nameOf(shape);
        }
    }
}

TEST(PngReader, ACutFileKeepsItsUpperRowsAndTheRestIsGray) {
    const PngShape shape{200, 200, 8, PngKind::Color, false};
    const Bytes png = makePng(shape);
    const auto decoded = decode(firstBytes(png, png.size() / 2));
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decoded->damaged);
    ASSERT_EQ(decoded->pixels.height(), 200U);
    expectStored(decoded->pixels, shape, 90);
    for (uint32_t y = 110; y < 200; ++y)
        ASSERT_TRUE(decodedPixel(decoded->pixels, 77, y) == (Pixel{{128, 128, 128}, 255})) << y;
    const auto small = decode(firstBytes(png, png.size() / 2), {50, 50});
    ASSERT_TRUE(small);
    EXPECT_TRUE(small->damaged);
    EXPECT_TRUE(isBlockMeanOf(small->pixels, decoded->pixels));
}

TEST(PngReader, EveryByteInFrontOfACutCounts) {
    constexpr size_t kRow = 1 + 64;
    const PngShape shape{64, 90, 8, PngKind::Gray, false};
    Bytes rows;
    for (size_t i = 0; i < 90 * kRow; ++i)
        rows.push_back(static_cast<uint8_t>(i % kRow == 0 ? 0 : i / kRow));
    const Bytes png = pngOfPackedData(shape, zlibPacked(rows, 0));
    // The two bytes of zlib and the five of a block that is not packed stand in front of the rows.
    const size_t start = pngChunkAt(png, "IDAT") + kPngChunkHeadBytes + 7;
    for (const uint32_t whole : {1U, 2U, 15U, 16U, 17U, 89U}) {
        for (const size_t more : {size_t{0}, kRow - 1}) {
            const auto decoded = decode(firstBytes(png, start + whole * kRow + more));
            ASSERT_TRUE(decoded) << whole;
            EXPECT_EQ(decoded->pixels.row(whole - 1)[63], whole - 1);
            EXPECT_EQ(decoded->pixels.row(whole)[0], 128) << whole;
        }
    }
    EXPECT_FALSE(decode(firstBytes(png, start + kRow - 1)));
}

TEST(PngReader, RowsWithoutDataAreGrayInEveryLayout) {
    for (PngShape shape : kKinds) {
        shape = sized(shape, {64, 600}, false);
        const Bytes png = makePng(shape);
        const auto decoded = decode(firstBytes(png, png.size() * 6 / 10));
        ASSERT_TRUE(decoded) << nameOf(shape);
        EXPECT_TRUE(decoded->damaged);
        expectStored(decoded->pixels, shape, 100);
        const bool words = shape.bits == 16 && !shape.hasAlphaSamples();
        const uint32_t level = words ? 0x8080 : shape.bits == 1 && shape.isGray() ? 255 : 128;
        EXPECT_TRUE(decodedPixel(decoded->pixels, 63, 599) ==
                    (Pixel{{level, level, level}, words ? 65'535U : 255U}))
            << nameOf(shape);
    }
}

TEST(PngReader, ACutInterlacedFileIsCoarseButCovered) {
    PngShape shape = kInterlacedColors;
    shape.width = shape.height = 160;
    const Bytes png = makePng(shape);
    const auto decoded = decode(firstBytes(png, png.size() / 10));
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decoded->damaged);
    for (uint32_t y = 0; y < 160; ++y) {
        // Three passes of seven are there: they have every fourth column of every eighth row.
        const Pixel wanted = storedPixel(shape, 44, y / 8 * 8);
        ASSERT_TRUE(decodedPixel(decoded->pixels, 44, y / 8 * 8) == wanted) << y;
    }
    const auto barely = decode(firstBytes(png, png.size() / 100));
    ASSERT_TRUE(barely);
    for (uint32_t y = 0; y < 80; ++y) {
        ASSERT_TRUE(decodedPixel(barely->pixels, 45, y) == storedPixel(shape, 40, y / 8 * 8)) << y;
    }
    EXPECT_TRUE(decodedPixel(barely->pixels, 45, 159) == (Pixel{{128, 128, 128}, 255}));
}

TEST(PngReader, AFileThatLacksItsLastChecksumHasAllRowsAndIsDamaged) {
    for (const SizeFloor sides : {SizeFloor{40, 30}, SizeFloor{1, 1}, SizeFloor{40, 32}}) {
        for (const bool interlaced : {false, true}) {
            const PngShape shape = sized(kColors, sides, interlaced);
            const Bytes png = makePng(shape);
            const auto decoded = decode(firstBytes(png, pngChecksumAt(png, "IDAT")));
            ASSERT_TRUE(decoded);
            EXPECT_TRUE(decoded->damaged);
            expectStored(decoded->pixels, shape, shape.height);
        }
    }
}

TEST(PngReader, AFileWithoutItsEndChunkIsWhole) {
    const Bytes png = makePng(kColors);
    const auto decoded = decode(firstBytes(png, pngChunkAt(png, "IEND")));
    ASSERT_TRUE(decoded);
    EXPECT_FALSE(decoded->damaged);
}

TEST(PngReader, DataBehindAWrongChecksumIsUsedAndSaysDamaged) {
    const PngShape shape{40, 30, 8, PngKind::Palette, false};
    const Bytes png = withPngChunk(makePng(shape), "IDAT", "gAMA", {0, 1, 0x86, 0xA0});
    for (const char* name : {"IHDR", "PLTE", "gAMA", "IDAT"}) {
        Bytes harmed = png;
        harmed[pngChecksumAt(png, name)] ^= 0xFF;
        const auto decoded = decode(harmed);
        ASSERT_TRUE(decoded) << name;
        EXPECT_EQ(decoded->damaged, std::string_view(name) != "gAMA") << name;
        expectStored(decoded->pixels, shape, shape.height);
    }
}

TEST(PngReader, AWrongChecksumOfThePackedDataCostsNothing) {
    const PngShape shape{4, 2, 8, PngKind::Gray, false};
    Bytes packed = zlibPacked({0, 1, 2, 3, 4, 0, 5, 6, 7, 8});
    packed.back() ^= 0xFF;
    const auto decoded = decode(pngOfPackedData(shape, packed));
    ASSERT_TRUE(decoded) << decoded.reason().text;
    EXPECT_EQ(decoded->pixels.row(1)[3], 8);
    EXPECT_FALSE(decoded->damaged);
}

TEST(PngReader, RowsBeforeAFilterThatDoesNotExistAreKept) {
    const PngShape shape{4, 3, 8, PngKind::Gray, false};
    const auto decoded =
        decode(pngOfPackedData(shape, zlibPacked({0, 1, 2, 3, 4, 9, 5, 6, 7, 8, 0, 1, 2, 3, 4})));
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decoded->damaged);
    EXPECT_EQ(decoded->pixels.row(0)[3], 4);
    EXPECT_EQ(decoded->pixels.row(1)[3], 128);
    EXPECT_EQ(decoded->pixels.row(2)[3], 128);
}

TEST(PngReader, EveryCutGivesAPictureOfFullSizeOrAFailure) {
    for (const PngShape& shape : {kColors, kInterlacedColors}) {
        const Bytes whole = makePng(shape);
        for (size_t length = 0; length < whole.size(); ++length) {
            const auto decoded = decode(firstBytes(whole, length));
            if (!decoded) {
                EXPECT_FALSE(decoded.reason().text.empty());
                continue;
            }
            EXPECT_EQ(decoded->pixels.width(), shape.width);
            EXPECT_EQ(decoded->pixels.height(), shape.height);
            EXPECT_EQ(decoded->damaged, length < pngChunkAt(whole, "IEND")) << length;
        }
    }
}

TEST(PngReader, APulledCardIsACutFile) {
    const Bytes png = makePng({400, 400, 8, PngKind::Color, false});
    CountingSource source(png);
    source.failFrom(png.size() / 2);
    const auto decoded = decodePng(source, {});
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decoded->damaged);
}

TEST(PngReader, HarmedBytesNeverCrashAndNothingIsSaidToTheConsole) {
    const ScopedLimits limits([](DecodeLimits& l) { l.maximumPixels = 100'000; });
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    uint32_t seed = 0;
    for (PngShape shape : kKinds) {
        for (const bool interlaced : {false, true}) {
            shape = sized(shape, {31, 17}, interlaced);
            const Bytes whole = withPngChunk(makePng(shape), "IDAT", "tRNS", {1, 2});
            for (int i = 0; i < 60; ++i, ++seed) {
                const auto decoded = decode(mutated(whole, seed, 1 + seed % 10), {5, 5});
                if (!decoded) continue;
                EXPECT_LE(uint64_t{decoded->pixels.width()} * decoded->pixels.height(), 100'000U);
            }
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(PngReader, SidesPixelsAndMemoryAreLimitedAndTheLimitIsNamed) {
    const Bytes png = makePng({100, 50, 8, PngKind::Color, false});
    const auto refusal = [&](auto change) {
        const ScopedLimits limits(change);
        const auto decoded = decode(png);
        if (decoded.ok() || decoded.reason().code != CodecError::LimitExceeded) return std::string();
        return decoded.reason().text;
    };
    EXPECT_EQ(refusal([](DecodeLimits& l) { l.maximumSide = 99; }),
              "A side of the picture is longer than is allowed.");
    EXPECT_EQ(refusal([](DecodeLimits& l) { l.maximumPixels = 4'999; }),
              "The picture has more pixels than is allowed.");
    EXPECT_EQ(refusal([](DecodeLimits& l) { l.maximumBytes = 100 * 50 * 4; }),
              "The picture needs more memory than is allowed.");
    EXPECT_TRUE(decode(png));
}

TEST(PngReader, MemoryOfTheDecoderCountsToo) {
    // Rows of 400 bytes take 448.
    const Bytes png = makePng({100, 50, 8, PngKind::Color, false});
    for (const auto& [more, fits] : {std::pair{100'000, false}, {200'000, true}}) {
        const ScopedLimits limits(
            [extra = more](DecodeLimits& l) { l.maximumBytes = 448 * 50 + static_cast<uint64_t>(extra); });
        EXPECT_EQ(decode(png).ok(), fits);
    }
}

TEST(PngReader, OnlyAnInterlacedPictureNeedsMemoryForAllOfIt) {
    const ScopedLimits limits([](DecodeLimits& l) { l.maximumBytes = 1'000'000; });
    PngShape shape{600, 600, 8, PngKind::Color, false};
    EXPECT_TRUE(decode(makePng(shape), {60, 60}));
    EXPECT_FALSE(decode(makePng(shape)));
    shape.interlaced = true;
    EXPECT_EQ(refusalOf(makePng(shape), {60, 60}), CodecError::LimitExceeded);
}

TEST(PngReader, HugeSidesInATinyFileFailAtOnce) {
    for (const SizeFloor sides : {SizeFloor{0x7FFFFFFF, 0x7FFFFFFF}, SizeFloor{0xFFFFFFFF, 1},
                                  SizeFloor{20'000, 20'000}, SizeFloor{65'535, 6'000}}) {
        const PngShape shape{sides.width, sides.height, 16, PngKind::ColorAlpha, false};
        EXPECT_FALSE(decode(pngOfPackedData(shape, zlibPacked({0, 1, 2, 3}))));
    }
}

TEST(PngReader, AFileFarTooShortForItsPictureIsDamaged) {
    const PngShape shape{19'000, 19'000, 8, PngKind::Gray, false};
    const auto decoded = decode(pngOfPackedData(shape, zlibPacked(Bytes(19'001))));
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.reason().text, "The file is far too short for its picture.");
}

TEST(PngReader, AHugePaddedHeadIsNotSearchedToItsEnd) {
    const Bytes png = withPngChunk(makePng(kColors), "IDAT", "paDd", Bytes(40 << 20));
    CountingSource source(png);
    EXPECT_FALSE(decodePng(source, {}));
    EXPECT_LE(source.bytesRead(), uint64_t{33} << 20);
}

TEST(PngReader, ReadsInPiecesAndNeverTheWholeFileAtOnce) {
    const Bytes png = makePng({400, 400, 8, PngKind::Color, false});
    ASSERT_GT(png.size(), 400'000U);
    CountingSource source(png);
    ASSERT_TRUE(decodePng(source, {}));
    EXPECT_LE(source.largestRead(), 65'536U);
    EXPECT_LE(source.bytesRead(), png.size() + 8'192);
}

TEST(PngReader, OtherFilesAreNotThisFormatAndAWrongHeadIsDamaged) {
    for (const Bytes& bytes : {Bytes{}, bytesOf("\x89PNG"), bytesOf("GIF89a..............")}) {
        EXPECT_EQ(refusalOf(bytes), CodecError::NotThisFormat);
    }
    const Bytes png = makePng(kColors);
    for (const auto& [at, value] : {std::pair<size_t, uint8_t>{11, 12},
                                    {12, 'i'},
                                    {24, 3},
                                    {24, 0},
                                    {25, 1},
                                    {25, 5},
                                    {26, 1},
                                    {27, 1},
                                    {28, 2},
                                    {16, 0x80}}) {
        Bytes wrong = png;
        wrong[at] = value;
        EXPECT_EQ(refusalOf(wrong), CodecError::Damaged) << at;
    }
    EXPECT_EQ(refusalOf(firstBytes(png, 20)), CodecError::Damaged);
    EXPECT_EQ(refusalOf(firstBytes(png, pngChunkAt(png, "IDAT"))), CodecError::Damaged);
}

}  // namespace fi::test

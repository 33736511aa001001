// SPDX-License-Identifier: Apache-2.0
// PNG files of the collection, whatever their names, and of every kind, against what ImageMagick makes of
// them. None differs.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>

#include "PlatformKit/Codecs/MakePng.h"
#include "PlatformKit/Codecs/PngReader.h"
#include "Support/Corpus.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

using Bytes = std::vector<uint8_t>;

bool hasReference() {
    return std::system("convert -version > /dev/null 2>&1") == 0;
}

/// R, G, B and alpha of each pixel, as words; empty when ImageMagick cannot read the file.
std::vector<uint16_t> referencePixels(const std::string& path) {
    // Words, because it cuts them off instead of rounding when it is asked for bytes.
    const std::string command = "convert 'png:" + path + "' -depth 16 -endian LSB rgba:- 2> /dev/null";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::vector<uint16_t> all;
    uint16_t piece[4096];
    for (size_t count = 1; pipe && count > 0;) {
        count = std::fread(piece, 2, std::size(piece), pipe.get());
        all.insert(all.end(), piece, piece + count);
    }
    return all;
}

uint32_t byteOf(uint32_t word) {
    return (word * 255 + 32'767) / 65'535;
}

/// A sample of a pixel in the reference's order, its alpha at 3, as a word.
uint32_t wordAt(const PixelBuffer& pixels, uint32_t x, uint32_t y, uint32_t sample) {
    const uint8_t* row = pixels.row(y);
    const auto stored = [row](size_t index) {
        uint16_t word = 0;
        std::memcpy(&word, row + 2 * index, 2);
        return uint32_t{word};
    };
    const auto widened = [](uint32_t byte) { return byte * 257; };
    switch (pixels.layout()) {
        case PixelLayout::Gray1:
            return sample == 3 || (row[x / 8] >> (7 - x % 8) & 1) != 0 ? 65'535 : 0;
        case PixelLayout::Gray8:
            return sample == 3 ? 65'535 : widened(row[x]);
        case PixelLayout::Gray16:
            return sample == 3 ? 65'535 : stored(x);
        case PixelLayout::RGBX64:
            return stored(size_t{x} * 4 + sample);
        default:
            return widened(row[size_t{x} * 4 + sample]);
    }
}

bool isLikeReference(const PixelBuffer& pixels, const std::vector<uint16_t>& reference) {
    const size_t count = size_t{pixels.width()} * pixels.height();
    if (reference.size() != count * 4) return false;
    for (size_t i = 0; i < count * 4; ++i) {
        const auto x = static_cast<uint32_t>(i / 4 % pixels.width());
        const auto y = static_cast<uint32_t>(i / 4 / pixels.width());
        uint32_t wanted = reference[i];
        if (pixels.layout() == PixelLayout::RGBA32) {
            const uint32_t alpha = byteOf(reference[i | 3]);
            wanted = (i % 4 == 3 ? alpha : (byteOf(wanted) * alpha + 127) / 255) * 257;
        }
        if (wordAt(pixels, x, y, i % 4) != wanted) return false;
    }
    return true;
}

void expectLikeReference(const std::string& path) {
    const std::string text = readFile(path);
    const Bytes bytes(text.begin(), text.end());
    MemorySource source(bytes);
    const auto decoded = decodePng(source, {});
    ASSERT_TRUE(decoded) << path << ": " << decoded.reason().text;
    EXPECT_FALSE(decoded->damaged) << path;
    EXPECT_TRUE(isLikeReference(decoded->pixels, referencePixels(path))) << path;
}

bool isPng(const std::string& path) {
    const std::string text = readFile(path);
    return looksLikePng(ByteView(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
}

}  // namespace

TEST(PngCollection, FilesThatArePngWhateverTheirNameAreLikeTheReference) {
    if (!corpusFolder()) GTEST_SKIP() << "the collection of photos is not there";
    if (!hasReference()) GTEST_SKIP() << "ImageMagick's convert is not installed";
    size_t compared = 0;
    for (const char* folder :
         {"not-an-image", "jpeg-structure", "jpeg-corrupt", "tiff-corrupt", "bmp-bad"}) {
        for (const std::string& path : corpusFiles(folder)) {
            if (!isPng(path)) continue;
            expectLikeReference(path);
            ++compared;
        }
    }
    EXPECT_EQ(compared, 2U);
}

TEST(PngCollection, FilesOfOtherKindsAreHarmless) {
    if (!corpusFolder()) GTEST_SKIP() << "the collection of photos is not there";
    for (const char* folder : {"jpeg-corrupt", "tiff-corrupt", "bmp-bad", "not-an-image", "pdf-bad"}) {
        for (const std::string& path : corpusFiles(folder)) {
            const std::string text = readFile(path);
            const Bytes bytes(text.begin(), text.end());
            MemorySource source(bytes);
            EXPECT_EQ(readPngHeader(source).ok(), looksLikePng(ByteView(bytes))) << path;
            EXPECT_EQ(decodePng(source, {64, 64}).ok(), looksLikePng(ByteView(bytes))) << path;
        }
    }
}

TEST(PngCollection, EveryKindIsLikeTheReference) {
    if (!hasReference()) GTEST_SKIP() << "ImageMagick's convert is not installed";
    const TemporaryFolder folder;
    for (const auto& [kind, bits] :
         std::initializer_list<std::pair<PngKind, std::vector<uint8_t>>>{{PngKind::Gray, {1, 2, 4, 8, 16}},
                                                                         {PngKind::Color, {8, 16}},
                                                                         {PngKind::Palette, {1, 2, 4, 8}},
                                                                         {PngKind::GrayAlpha, {8, 16}},
                                                                         {PngKind::ColorAlpha, {8, 16}}}) {
        for (const uint8_t depth : bits) {
            for (const bool interlaced : {false, true}) {
                const std::string name = std::to_string(static_cast<int>(kind)) + "-" +
                                         std::to_string(depth) + (interlaced ? "-interlaced" : "");
                const Bytes png = makePng({53, 37, depth, kind, interlaced});
                expectLikeReference(folder.write(name + ".png", png));
                if (kind != PngKind::Palette) continue;
                const Bytes transparent = withPngChunk(png, "IDAT", "tRNS", {77, 0});
                expectLikeReference(folder.write(name + "-transparent.png", transparent));
            }
        }
    }
}

}  // namespace fi::test

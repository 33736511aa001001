// SPDX-License-Identifier: Apache-2.0
// The BMP files of the collection, a conformance suite among them, against what ImageMagick makes of them.
// What differs stands in bmp-differences.tsv with its reason.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>

#include "PlatformKit/Codecs/BmpReader.h"
#include "PlatformKit/Codecs/CodecPictures.h"
#include "Support/Corpus.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

using Bytes = std::vector<uint8_t>;

constexpr const char* kMissing = "the collection of photos is not there";

struct File {
    std::string name;  ///< inside the collection
    std::string path;
};

std::vector<File> bmpFiles() {
    std::vector<File> files;
    const size_t top = corpusFolder()->size() + 1;
    for (const char* folder : {"bmp", "bmp-bad"}) {
        for (const std::string& path : corpusFiles(folder))
            files.push_back({path.substr(top), path});
    }
    return files;
}

Bytes bytesAt(const std::string& path) {
    const std::string text = readFile(path);
    return Bytes(text.begin(), text.end());
}

CodecResult<DecodedPicture> decodeAt(const std::string& path) {
    const Bytes bytes = bytesAt(path);
    MemorySource source(bytes);
    return decodeBmp(source, {});
}

std::vector<std::string> split(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, '\t');)
        cells.push_back(cell);
    return cells;
}

bool hasReference() {
    return std::system("convert -version > /dev/null 2>&1") == 0;
}

/// R, G, B and alpha of each pixel; empty when ImageMagick cannot read the file.
Bytes referencePixels(const std::string& path) {
    const std::string command = "convert 'bmp:" + path + "' -depth 8 rgba:- 2> /dev/null";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    Bytes all;
    uint8_t piece[4096];
    for (size_t count = 1; pipe && count > 0;) {
        count = std::fread(piece, 1, sizeof piece, pipe.get());
        all.insert(all.end(), piece, piece + count);
    }
    return all;
}

/// A color of a pixel in the reference's order, its alpha at 3; colors are multiplied with alpha.
uint8_t channelAt(const PixelBuffer& pixels, uint32_t x, uint32_t y, uint32_t channel) {
    const uint8_t* row = pixels.row(y);
    switch (pixels.layout()) {
        case PixelLayout::Gray1:
            return channel == 3 || (row[x / 8] >> (7 - x % 8) & 1) != 0 ? 255 : 0;
        case PixelLayout::Gray8:
            return channel == 3 ? 255 : row[x];
        default:
            return row[size_t{x} * 4 + channel];
    }
}

/// The largest difference of any color, once the reference's are multiplied with its alpha.
int largestDifference(const PixelBuffer& pixels, const Bytes& reference) {
    int largest = 0;
    size_t at = 0;
    for (uint32_t y = 0; y < pixels.height(); ++y) {
        for (uint32_t x = 0; x < pixels.width(); ++x, at += 4) {
            const uint32_t alpha = reference[at + 3];
            for (uint32_t channel = 0; channel < 4; ++channel) {
                const uint32_t plain = reference[at + channel];
                const uint32_t expected = channel == 3 ? alpha : (plain * alpha + 127) / 255;
                largest = std::max(
                    largest, std::abs(int{channelAt(pixels, x, y, channel)} - static_cast<int>(expected)));
            }
        }
    }
    return largest;
}

/// How the file's outcome differs from the reference's, in the words of the table; empty when it does not.
std::string outcomeOf(const std::string& path) {
    const auto picture = decodeAt(path);
    if (!picture) return "refused: " + picture.reason().text;
    if (picture->damaged) return "damaged";
    const PixelBuffer& pixels = picture->pixels;
    const Bytes reference = referencePixels(path);
    if (reference.size() != size_t{pixels.width()} * pixels.height() * 4) return "no reference";
    const int largest = largestDifference(pixels, reference);
    return largest > 0 ? "differs by " + std::to_string(largest) : "";
}

std::map<std::string, std::string> listedDifferences() {
    std::ifstream table(FI_BMP_DIFFERENCES);
    std::map<std::string, std::string> listed;
    for (std::string line; std::getline(table, line);) {
        if (line.starts_with("#")) continue;
        const auto cells = split(line);
        EXPECT_EQ(cells.size(), 3U) << line;
        if (cells.size() == 3) listed[cells[0]] = cells[1];
    }
    return listed;
}

/// Names of the files that the collection's own list describes with the word.
std::vector<std::string> manifestNames(const std::string& word) {
    std::ifstream manifest(*corpusFolder() + "/MANIFEST.tsv");
    std::vector<std::string> names;
    for (std::string line; std::getline(manifest, line);) {
        const auto cells = split(line);
        if (cells.size() > 4 && cells[4].starts_with(word + ";")) names.push_back(cells[0]);
    }
    return names;
}

TEST(BmpCollection, PixelsAreThoseOfTheReferenceOrTheDifferenceIsListed) {
    if (!corpusFolder()) GTEST_SKIP() << kMissing;
    if (!hasReference()) GTEST_SKIP() << "ImageMagick's convert is not installed";
    auto listed = listedDifferences();
    for (const File& file : bmpFiles()) {
        EXPECT_EQ(outcomeOf(file.path), listed[file.name]) << file.name;
        listed.erase(file.name);
    }
    for (const auto& [name, outcome] : listed)
        ADD_FAILURE() << name << " is listed, but not in the collection";
}

bool arePixelsAlike(const PixelBuffer& a, const PixelBuffer& b) {
    return a.width() == b.width() && a.height() == b.height() && a.layout() == b.layout() &&
           meanDifference(a, b) == 0;
}

/// The suite stores the same pictures in many ways. Not all of them does the reference read, or read well.
TEST(BmpCollection, OnePictureStoredInManyWaysIsAlwaysTheSame) {
    if (!corpusFolder()) GTEST_SKIP() << kMissing;
    const std::vector<std::vector<std::string>> families = {
        {"bmp/mei_pal8",           "bmp/mei_pal8-0",           "bmp/mei_pal8offs",
         "bmp/mei_pal8os2",        "bmp/mei_pal8os2-hs",       "bmp/mei_pal8os2-sz",
         "bmp/mei_pal8os2sp",      "bmp/mei_pal8os2v2",        "bmp/mei_pal8os2v2-16",
         "bmp/mei_pal8os2v2-40sz", "bmp/mei_pal8os2v2-sz",     "bmp/mei_pal8oversizepal",
         "bmp/mei_pal8rle",        "bmp/mei_pal8topdown",      "bmp/mei_pal8v4",
         "bmp/mei_pal8v5",         "bmp-bad/mei_ba-bm",        "bmp-bad/mei_badpalettesize",
         "bmp-bad/mei_rletopdown", "bmp-bad/pillow_mmap_error"},
        {"bmp/mei_pal4", "bmp/mei_pal4rle"},
        {"bmp/mei_rgb24", "bmp/mei_rgb24pal", "bmp/mei_rgb24largepal", "bmp/mei_rgb24lprof",
         "bmp/mei_rgb24prof", "bmp/mei_rgb32", "bmp/mei_rgb32-xbgr", "bmp/mei_rgb32bf",
         "bmp/mei_rgb32bfdef", "bmp/mei_rgb32fakealpha", "bmp/mei_rgb32h52"},
        {"bmp/mei_rgb16", "bmp/mei_rgb16bfdef", "bmp/mei_rgb16faketrns"},
        {"bmp/mei_rgb16-565", "bmp/mei_rgb16-565pal"},
        {"bmp/mei_rgba32", "bmp/mei_rgba32abf", "bmp/mei_rgba32h56"}};
    for (const auto& family : families) {
        const auto first = decodeAt(*corpusFolder() + "/" + family.front() + ".bmp");
        ASSERT_TRUE(first) << family.front();
        for (const std::string& name : family) {
            const auto picture = decodeAt(*corpusFolder() + "/" + name + ".bmp");
            ASSERT_TRUE(picture) << name << ": " << picture.reason().text;
            EXPECT_TRUE(arePixelsAlike(picture->pixels, first->pixels)) << name;
        }
    }
    // One bit: whatever is wrong in the headers, the pixels are those of the sound file.
    const auto sound = decodeAt(*corpusFolder() + "/bmp/mei_pal1.bmp");
    ASSERT_TRUE(sound);
    for (const char* name :
         {"bmp/mei_pal1wb", "bmp-bad/mei_badbitssize", "bmp-bad/mei_baddens1", "bmp-bad/mei_baddens2",
          "bmp-bad/mei_badfilesize", "bmp-bad/mei_badheadersize"}) {
        const auto picture = decodeAt(*corpusFolder() + "/" + name + ".bmp");
        ASSERT_TRUE(picture) << name;
        ASSERT_EQ(picture->pixels.layout(), PixelLayout::Gray1) << name;
        for (uint32_t y = 0; y < 64; ++y)
            EXPECT_TRUE(
                std::equal(picture->pixels.row(y), picture->pixels.row(y) + 16, sound->pixels.row(y)));
    }
}

TEST(BmpCollection, EveryGoodFileOfTheSuiteDecodesWhole) {
    if (!corpusFolder()) GTEST_SKIP() << kMissing;
    const auto names = manifestNames("bmpsuite/g");
    EXPECT_GE(names.size(), 20U);
    for (const std::string& name : names) {
        const auto picture = decodeAt(*corpusFolder() + "/" + name);
        ASSERT_TRUE(picture) << name << ": " << picture.reason().text;
        EXPECT_FALSE(picture->damaged) << name;
    }
}

TEST(BmpCollection, EveryQuestionableFileOfTheSuiteDecodesOrIsRefusedAsUnsupported) {
    if (!corpusFolder()) GTEST_SKIP() << kMissing;
    const auto names = manifestNames("bmpsuite/q");
    EXPECT_GE(names.size(), 30U);
    for (const std::string& name : names) {
        const auto picture = decodeAt(*corpusFolder() + "/" + name);
        if (picture) continue;
        EXPECT_EQ(picture.reason().code, CodecError::Unsupported) << name << ": " << picture.reason().text;
    }
}

TEST(BmpCollection, SizesAreThoseOfTheReference) {
    if (!corpusFolder()) GTEST_SKIP() << kMissing;
    std::ifstream table(*corpusFolder() + "/expected/open.dimensions.tsv");
    std::string line;
    std::getline(table, line);
    const auto columns = split(line);
    const auto column = [&](const char* name) {
        return static_cast<size_t>(std::find(columns.begin(), columns.end(), name) - columns.begin());
    };
    size_t compared = 0;
    while (std::getline(table, line)) {
        const auto cells = split(line);
        if (!line.starts_with("bmp") || cells.size() <= column("im_h") || cells[column("im_w")].empty())
            continue;
        const Bytes bytes = bytesAt(*corpusFolder() + "/" + cells[0]);
        MemorySource source(bytes);
        const auto header = readBmpHeader(source);
        if (!header) continue;  // what is refused is listed
        EXPECT_EQ(std::to_string(header->width), cells[column("im_w")]) << cells[0];
        EXPECT_EQ(std::to_string(header->height), cells[column("im_h")]) << cells[0];
        ++compared;
    }
    EXPECT_GE(compared, 80U);
}

TEST(BmpCollection, NoOtherKindOfFileIsTakenForABmp) {
    if (!corpusFolder()) GTEST_SKIP() << kMissing;
    for (const char* folder : {"jpeg-metadata", "tiff", "pict", "pdf", "not-an-image"}) {
        for (const std::string& path : corpusFiles(folder))
            EXPECT_FALSE(looksLikeBmp(ByteView(bytesAt(path)))) << path;
    }
}

}  // namespace
}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// The readers on the collection of real, odd and broken photos.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "PlatformKit/Codecs/JpegReader.h"
#include "PlatformKit/Codecs/TiffDirectories.h"
#include "PlatformKit/Codecs/TiffReader.h"
#include "Support/Corpus.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

constexpr const char* kFolders[] = {"jpeg-camera",  "jpeg-metadata", "jpeg-orientation", "jpeg-structure",
                                    "jpeg-corrupt", "tiff",          "tiff-orientation", "tiff-corrupt"};

struct Expected {
    uint32_t width = 0;
    uint32_t height = 0;
    bool decodes = false;  ///< the reference decoder read the picture without complaint
};

std::vector<std::string> split(const std::string& line) {
    std::vector<std::string> cells(1);
    for (const char c : line) {
        if (c == '\t') {
            cells.emplace_back();
        } else {
            cells.back().push_back(c);
        }
    }
    return cells;
}

/// The table of sizes, by the path inside the collection; only files that the reference could describe.
std::map<std::string, Expected> expectations(const std::string& top) {
    std::ifstream table(top + "/expected/open.dimensions.tsv");
    std::string line;
    std::getline(table, line);
    std::map<std::string, size_t> columns;
    for (const std::string& name : split(line))
        columns.emplace(name, columns.size());
    std::map<std::string, Expected> result;
    while (std::getline(table, line)) {
        const auto cells = split(line);
        if (cells.size() < columns.size()) continue;
        Expected expected;
        expected.width = static_cast<uint32_t>(std::strtoul(cells[columns["im_w"]].c_str(), nullptr, 10));
        expected.height = static_cast<uint32_t>(std::strtoul(cells[columns["im_h"]].c_str(), nullptr, 10));
        expected.decodes = cells[columns["im_rc"]] == "0";
        if (expected.width > 0) result.emplace(cells[0], expected);
    }
    return result;
}

struct Outcome {
    std::optional<ImageHeader> header;
    std::optional<DecodedPicture> picture;
    CodecFailure failure;
};

Outcome open(const std::string& path) {
    const std::string text = readFile(path);
    const std::vector<uint8_t> bytes(text.begin(), text.end());
    MemorySource source(bytes);
    const bool isTiff = looksLikeTiff(ByteView(bytes));
    Outcome outcome;
    if (auto header = isTiff ? readTiffHeader(source, 0) : readJpegHeader(source)) outcome.header = *header;
    auto picture = isTiff ? decodeTiff(source, 0, {}) : decodeJpeg(source, {});
    if (picture) {
        outcome.picture = std::move(*picture);
    } else {
        outcome.failure = picture.reason();
    }
    return outcome;
}

/// The JPEG marker behind the first is missing here: such a file is not recognised.
const std::set<std::string> kNotRecognised = {"jpeg-corrupt/ljtseed_1a02f9aa0884.jpg"};

/// Only the head of the file is kept in the collection: there is no picture behind it.
const std::set<std::string> kHeadOnly = {
    "jpeg-structure/pillow_ultrahdr.jpg", "jpeg-corrupt/ljtseed_46bf1a2dccc3.jpg",
    "jpeg-corrupt/ljtseed_563abdbebc88.jpg", "jpeg-corrupt/ljtseed_d54a62926390.jpg",
    "jpeg-corrupt/ljtseed_e8913c3802b4.jpg"};

}  // namespace

TEST(Collection, SizesOfEveryFileAreThoseOfTheReference) {
    const auto top = corpusFolder();
    if (!top) GTEST_SKIP() << "the collection of photos is not there";
    const auto table = expectations(*top);
    ASSERT_FALSE(table.empty());
    size_t compared = 0;
    for (const char* folder : kFolders) {
        for (const std::string& path : corpusFiles(folder)) {
            const std::string name = path.substr(top->size() + 1);
            const auto expected = table.find(name);
            if (expected == table.end() || kNotRecognised.count(name) > 0) continue;
            const Outcome outcome = open(path);
            ASSERT_TRUE(outcome.header) << name;
            EXPECT_EQ(outcome.header->width, expected->second.width) << name;
            EXPECT_EQ(outcome.header->height, expected->second.height) << name;
            ++compared;
        }
    }
    EXPECT_GT(compared, 400U);
}

TEST(Collection, WhatTheReferenceDecodesIsDecodedOrOfAKindThatIsNotRead) {
    const auto top = corpusFolder();
    if (!top) GTEST_SKIP() << "the collection of photos is not there";
    const auto table = expectations(*top);
    for (const char* folder : kFolders) {
        for (const std::string& path : corpusFiles(folder)) {
            const std::string name = path.substr(top->size() + 1);
            const auto expected = table.find(name);
            if (expected == table.end() || !expected->second.decodes) continue;
            if (kNotRecognised.count(name) > 0 || kHeadOnly.count(name) > 0) continue;
            const Outcome outcome = open(path);
            if (!outcome.picture) {
                EXPECT_EQ(outcome.failure.code, CodecError::Unsupported)
                    << name << ": " << outcome.failure.text;
                continue;
            }
            EXPECT_EQ(outcome.picture->pixels.width(), expected->second.width) << name;
            EXPECT_EQ(outcome.picture->pixels.height(), expected->second.height) << name;
        }
    }
}

TEST(Collection, TheHeightBehindTheFirstScanIsFoundInARealPhoto) {
    const auto top = corpusFolder();
    if (!top) GTEST_SKIP() << "the collection of photos is not there";
    const Outcome outcome = open(*top + "/jpeg-structure/mei_beach.jpg");
    ASSERT_TRUE(outcome.header && outcome.picture);
    EXPECT_EQ(outcome.header->width, 200U);
    EXPECT_EQ(outcome.header->height, 200U);
    EXPECT_EQ(outcome.picture->pixels.height(), 200U);
    EXPECT_FALSE(outcome.picture->damaged);
}

TEST(Collection, FilesOfEveryKindAreHarmlessToEveryReader) {
    const auto top = corpusFolder();
    if (!top) GTEST_SKIP() << "the collection of photos is not there";
    size_t files = 0;
    for (const char* folder :
         {"jpeg-corrupt", "tiff-corrupt", "bmp-bad", "pict", "not-an-image", "pdf-bad"}) {
        for (const std::string& path : corpusFiles(folder)) {
            const std::string text = readFile(path);
            const std::vector<uint8_t> bytes(text.begin(), text.end());
            MemorySource source(bytes);
            for (const bool ok : {readJpegHeader(source).ok(), decodeJpeg(source, {64, 64}).ok()}) {
                EXPECT_TRUE(!ok || looksLikeJpeg(ByteView(bytes))) << path;
            }
            for (const bool ok : {readTiffHeader(source, 0).ok(), decodeTiff(source, 0, {}).ok()}) {
                EXPECT_TRUE(!ok || looksLikeTiff(ByteView(bytes))) << path;
            }
            (void)readTiffDirectories(source);
            ++files;
        }
    }
    EXPECT_GT(files, 100U);
}

}  // namespace fi::test

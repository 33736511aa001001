// SPDX-License-Identifier: Apache-2.0
// The collection's QuickDraw pictures: sizes of the reference, refusals with their reasons, and pixels
// beside those of another reader.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>

#include "PlatformKit/Codecs/PictText.h"
#include "Support/Corpus.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

using Cells = std::vector<std::string>;

std::vector<Cells> readTable(const std::string& path) {
    std::ifstream file(path);
    std::vector<Cells> rows;
    for (std::string line; std::getline(file, line);) {
        Cells cells(1);
        for (const char c : line) {
            if (c == '\t') {
                cells.emplace_back();
            } else {
                cells.back() += c;
            }
        }
        rows.push_back(std::move(cells));
    }
    return rows;
}

/// What the commentary says of a file: "refused"; "size" or "unread", and the right size; "pixels", and the
/// largest difference of a color.
struct Remark {
    std::string kind;
    std::string detail;
};

std::map<std::string, Remark> remarks() {
    std::map<std::string, Remark> result;
    for (const Cells& cells : readTable(FI_PICT_DIFFERENCES)) {
        if (cells.size() >= 4 && cells[0][0] != '#') result[cells[0]] = {cells[1], cells[2]};
    }
    return result;
}

/// Width and height that the reference tells, "WxH", by the path in the collection.
std::map<std::string, std::string> referenceSizes(const std::string& top) {
    const auto table = readTable(top + "/expected/open.dimensions.tsv");
    std::map<std::string, size_t> columns;
    for (const std::string& name : table.at(0))
        columns.emplace(name, columns.size());
    std::map<std::string, std::string> sizes;
    for (const Cells& cells : table) {
        if (cells.size() < columns.size()) continue;
        sizes[cells[0]] = cells[columns["im_w"]] + "x" + cells[columns["im_h"]];
    }
    return sizes;
}

std::vector<uint8_t> bytesOfFile(const std::string& path) {
    const std::string text = readFile(path);
    return {text.begin(), text.end()};
}

std::string nameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

bool isInstalled(const char* program) {
    return std::system((std::string("command -v ") + program + " >/dev/null 2>&1").c_str()) == 0;
}

/// The pixels that ImageMagick reads, on white; empty when it refuses the file.
std::vector<uint8_t> otherPixels(const std::string& path) {
    const std::string command =
        "convert 'pict:" + path + "' -background white -alpha remove -alpha on -depth 8 rgba:- 2>/dev/null";
    std::vector<uint8_t> bytes;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
    std::array<uint8_t, 65536> block;
    for (size_t count; pipe && (count = fread(block.data(), 1, block.size(), pipe.get())) > 0;)
        bytes.insert(bytes.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(count));
    return bytes;
}

/// "equal", or the largest difference of a color.
std::string difference(const PixelBuffer& pixels, const std::vector<uint8_t>& other) {
    if (other.empty()) return "not read";
    if (other.size() != size_t{pixels.width()} * pixels.height() * 4) return "size";
    int largest = 0;
    for (uint32_t y = 0; y < pixels.height(); ++y) {
        for (uint32_t x = 0; x < pixels.width(); ++x) {
            const Rgb color = colorAt(pixels, x, y);
            const uint8_t* const seen = other.data() + (size_t{y} * pixels.width() + x) * 4;
            for (size_t i = 0; i < 3; ++i)
                largest = std::max(largest, std::abs(color[i] - seen[i]));
        }
    }
    return largest == 0 ? "equal" : std::to_string(largest);
}

}  // namespace

TEST(PictCollection, EveryFileDecodesToTheSizeOfTheReferenceOrIsRefusedByName) {
    const auto top = corpusFolder();
    if (!top) GTEST_SKIP() << "the collection of photos is not there";
    const auto sizes = referenceSizes(*top);
    const auto known = remarks();
    size_t decoded = 0;
    for (const std::string& path : corpusFiles("pict")) {
        const std::string name = nameOf(path);
        const auto bytes = bytesOfFile(path);
        const auto header = pictHeader(bytes);
        ASSERT_TRUE(header) << name << ": " << header.reason().text;
        const auto remark = known.find(name);
        const std::string kind = remark == known.end() ? "" : remark->second.kind;
        const auto picture = decodePictBytes(bytes);
        if (!picture) {
            EXPECT_EQ(kind, "refused") << name << ": " << picture.reason().text;
            EXPECT_EQ(picture.reason().code, CodecError::Unsupported) << name;
            continue;
        }
        ASSERT_NE(kind, "refused") << name;
        const PixelBuffer& pixels = picture->pixels;
        const std::string size = std::to_string(pixels.width()) + "x" + std::to_string(pixels.height());
        const bool told = kind == "size" || kind == "unread";
        EXPECT_EQ(size, told ? remark->second.detail : sizes.at("pict/" + name)) << name;
        EXPECT_EQ(pixels.width(), header->width) << name;
        EXPECT_EQ(pixels.height(), header->height) << name;
        EXPECT_FALSE(picture->damaged) << name;
        EXPECT_EQ(picture->partial, name == "qdview_demo.pict") << name;
        ++decoded;
    }
    EXPECT_EQ(decoded, 25U);
}

TEST(PictCollection, PixelsAreThoseOfAnotherReader) {
    if (!corpusFolder()) GTEST_SKIP() << "the collection of photos is not there";
    if (!isInstalled("convert")) GTEST_SKIP() << "ImageMagick's convert is not installed";
    const auto known = remarks();
    size_t equal = 0;
    for (const std::string& path : corpusFiles("pict")) {
        const std::string name = nameOf(path);
        const auto picture = decodePictBytes(bytesOfFile(path));
        if (!picture) continue;
        const auto remark = known.find(name);
        const std::string seen = difference(picture->pixels, otherPixels(path));
        std::string expected = "equal";
        if (remark != known.end()) {
            const auto& [kind, detail] = remark->second;
            expected = kind == "size" ? "size" : kind == "unread" ? "not read" : detail;
        }
        EXPECT_EQ(seen, expected) << name;
        if (seen == "equal") ++equal;
    }
    EXPECT_GE(equal, 13U);
}

}  // namespace fi::test

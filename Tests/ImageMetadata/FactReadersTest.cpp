// SPDX-License-Identifier: Apache-2.0
// The quick way to a photo's facts against the plain one: whatever the file, the same record.
#include "ImageMetadata/FactReaders.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "Foundation/TestText.h"
#include "ImageMetadata/ExifPhotos.h"
#include "Support/Corpus.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

enum class Way : uint8_t { Quick, PlainOnly };

/// Reads a file both ways; where the quick way is none, its record must be untouched.
Way compare(const std::string& path) {
    ExifInformation untouched;
    std::memset(&untouched, 0x5A, sizeof untouched);
    ExifInformation plain = untouched;
    ExifInformation quick = untouched;
    const auto name = text(path);
    readFactsPlainly(name.get(), plain);
    if (!readFactsQuickly(name.get(), quick)) {
        EXPECT_EQ(std::memcmp(&quick, &untouched, sizeof quick), 0) << path;
        return Way::PlainOnly;
    }
    EXPECT_EQ(std::memcmp(&quick, &plain, sizeof quick), 0) << path;
    return Way::Quick;
}

/// A new file each time: to write over one may wait for the disk.
std::string writeAnew(const TemporaryFolder& folder, const Bytes& bytes) {
    (void)unlink(folder.at("photo.jpg").c_str());
    return folder.write("photo.jpg", bytes);
}

/// All that a camera writes, with `first` bytes in front of IFD0's other values, `note` bytes of a maker's
/// note, and `last` bytes in front of the values of the thumbnail's directory.
struct Shape {
    size_t first;
    size_t note;
    size_t last;
};

std::vector<TiffDirectory> directoriesOf(const Shape& shape) {
    TiffDirectory exif = exifWithVersion()
                             .fractions(0x829A, {{1, 250}})
                             .shorts(0x8827, {100})
                             .text(0x9003, "2019:05:06 10:11:12")
                             .text(0x9004, "2018:05:06 10:11:12")
                             .fractions(0x011A, {{300, 1}})
                             .fractions(0x011B, {{150, 1}})
                             .bytes(0x927C, kTagUndefinedType, padding(shape.note))
                             .shorts(0xA001, {1})
                             .longs(0xA002, {4000})
                             .longs(0xA003, {3000})
                             .directory(0xA005, TiffDirectory().text(1, "R98"));
    TiffDirectory main = TiffDirectory()
                             .bytes(0x0100, kTagUndefinedType, padding(shape.first))
                             .text(0x010F, "Maker of cameras")
                             .text(0x0110, "A camera")
                             .shorts(0x0112, {6})
                             .text(0x0132, "2019:05:06 10:11:12")
                             .directory(0x8769, std::move(exif))
                             .directory(0x8825, TiffDirectory().text(1, "N").text(29, "2019:05:06"));
    TiffDirectory thumbnail = TiffDirectory()
                                  .bytes(0x00FE, kTagUndefinedType, padding(shape.last))
                                  .shorts(0x0103, {6})
                                  .fractions(0x011A, {{72, 1}})
                                  .directory(0x8769, exifWithVersion().text(0x9003, "2001:01:01 01:01:01"));
    return {std::move(main), std::move(thumbnail)};
}

/// As a TIFF file, an Exif JPEG (its block may be longer than a segment can say) and one with JFIF in
/// front.
std::vector<Bytes> filesOf(const Shape& shape) {
    std::vector<Bytes> files;
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const Bytes block = tiffBlock(directoriesOf(shape), order);
        files.push_back(block);
        const Bytes exif = {0xFF, 0xD8, 0xFF, 0xE1, 0xFF, 0xFF, 'E', 'x', 'i', 'f', 0, 0};
        files.push_back(exif);
        files.back().insert(files.back().end(), block.begin(), block.end());
        const Bytes jfif = {0xFF, 0xD8, 0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F',
                            0,    1,    2,    0,    0, 1,  0,   1,   0,   0};
        files.push_back(jfif);
        files.back().insert(files.back().end(), exif.begin() + 2, exif.end());
        files.back().insert(files.back().end(), block.begin(), block.end());
    }
    return files;
}

/// Values within the first page, behind it, on its edge, behind the head, and of negative size.
const std::vector<Shape>& shapes() {
    static const std::vector<Shape> all = {
        {8, 8, 8},         {8, 3000, 8},      {8, 3600, 8},      {8, 3700, 8},        {8, 3800, 8},
        {8, 5000, 8},      {5000, 8, 8},      {8, 8, 5000},      {5000, 20000, 9000}, {3900, 8, 8},
        {8, 20000, 8},     {30000, 30000, 8}, {32000, 32000, 8}, {32767, 32700, 8},   {8, 32767, 32767},
        {32767, 32767, 8}, {8, 40000, 8},     {40000, 8, 8},     {8, 65536, 8},       {8, 70000, 8},
    };
    return all;
}

/// Changes what a parser reads: mostly the first kilobytes, where directories stand.
Bytes mutated(Bytes bytes, std::mt19937& random) {
    static constexpr uint8_t kTelling[] = {0, 1, 2, 3, 5, 12, 13, 0x7F, 0x80, 0xFF, 0x69, 0x87};
    for (auto changes = 1 + random() % 6; changes > 0; --changes) {
        const size_t reach = random() % 4 == 0 ? bytes.size() : std::min<size_t>(bytes.size(), 700);
        bytes[random() % reach] =
            static_cast<uint8_t>(random() % 2 == 0 ? random() : kTelling[random() % std::size(kTelling)]);
    }
    if (random() % 4 == 0) bytes.resize(1 + random() % bytes.size());
    return bytes;
}

}  // namespace

TEST(FactReadersTest, BothWaysAgreeWhereverValuesStand) {
    const TemporaryFolder folder;
    for (const Shape& shape : shapes()) {
        for (const Bytes& bytes : filesOf(shape)) {
            SCOPED_TRACE(testing::Message() << shape.first << " " << shape.note << " " << shape.last);
            EXPECT_EQ(compare(writeAnew(folder, bytes)), Way::Quick);
        }
    }
}

TEST(FactReadersTest, BothWaysAgreeOnFilesThatAreCutAnywhere) {
    const TemporaryFolder folder;
    for (const Shape& shape : {Shape{8, 8, 8}, Shape{8, 3700, 8}}) {
        for (const Bytes& bytes : filesOf(shape)) {
            const std::string path = writeAnew(folder, bytes);
            for (size_t size = bytes.size(); size > 0; size -= size <= 900 ? 1 : 37) {
                ASSERT_EQ(truncate(path.c_str(), static_cast<off_t>(size)), 0);
                ASSERT_EQ(compare(path), Way::Quick) << size;
            }
        }
    }
}

TEST(FactReadersTest, BothWaysAgreeOnThousandsOfDamagedFiles) {
    const TemporaryFolder folder;
    std::mt19937 random(4711);
    int quick = 0;
    constexpr int kRounds = 4000;
    for (int round = 0; round < kRounds; ++round) {
        const Shape& shape = shapes()[static_cast<size_t>(round) % shapes().size()];
        const auto files = filesOf(shape);
        const Bytes bytes = mutated(files[random() % files.size()], random);
        quick += compare(writeAnew(folder, bytes)) == Way::Quick ? 1 : 0;
        ASSERT_FALSE(HasFailure()) << round;
    }
    EXPECT_GT(quick, kRounds * 9 / 10) << "damage is hardly ever a reason for the plain way";
}

TEST(FactReadersTest, BothWaysAgreeOnTheWholeCollection) {
    const auto collection = corpusFolder();
    if (!collection) GTEST_SKIP() << "no photo collection: set FILEIMPORTER_CORPORA";
    size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(*collection)) {
        if (!entry.is_regular_file()) continue;
        const std::string path = entry.path().string();
        const bool isOrdinary = entry.file_size() > 0 && entry.path().extension() != ".qal";
        const Way way = compare(path);
        EXPECT_TRUE(way == Way::Quick || !isOrdinary) << path;
        files += way == Way::Quick ? 1 : 0;
    }
    EXPECT_GT(files, 500U);
}

TEST(FactReadersTest, WhatIsNoOrdinaryFileHasThePlainWayOnly) {
    const TemporaryFolder folder;
    const Bytes photo = photoOf({}, exifWithVersion());
    folder.write("photo.jpg", photo);
    folder.makeFolder("folder.jpg");
    ASSERT_EQ(mkfifo(folder.at("pipe.jpg").c_str(), 0600), 0);
    for (const std::string& path :
         {folder.link("link.jpg", "photo.jpg"), folder.at("folder.jpg"), folder.at("pipe.jpg"),
          folder.write("empty.jpg", ""), folder.write("album.qal", photo), std::string("/dev/null"),
          std::string("/dev/zero")})
        EXPECT_EQ(compare(path), Way::PlainOnly) << path;
    EXPECT_EQ(compare(folder.at("photo.jpg")), Way::Quick);
    ExifInformation info;
    EXPECT_FALSE(readFactsQuickly(nullptr, info));
    EXPECT_FALSE(readFactsQuickly(text(folder.at("missing.jpg")).get(), info));
}

}  // namespace fi::test

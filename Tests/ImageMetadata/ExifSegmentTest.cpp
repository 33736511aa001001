// SPDX-License-Identifier: Apache-2.0
// Segments of JPEG files, and the codes of reading a file.
#include "ImageMetadata/ExifSegment.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "Foundation/TestText.h"
#include "Support/FailingAllocations.h"
#include "Support/ScopedFaults.h"
#include "Support/TemporaryFolder.h"
#include "Support/TiffBlock.h"

namespace fi::test {

namespace {

using Bytes = std::vector<uint8_t>;

const Bytes kImageStart = {0xFF, 0xD8};

/// A segment whose length field says `length`, and which has the bytes for it.
Bytes segment(uint8_t marker, uint16_t length, uint8_t filling = 'x') {
    Bytes bytes = {0xFF, marker, static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length & 0xFF)};
    bytes.insert(bytes.end(), length < 2 ? 0U : length - 2U, filling);
    return bytes;
}

Bytes joined(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes segmentIn(const std::vector<Bytes>& parts) {
    return exifSegmentOfJpeg(ByteView(joined(parts)));
}

const Bytes kRest = {0xFF, 0xD9, 0, 0};

std::string_view viewOf(const ExifSegment& segment) {
    return segment.block ? std::string_view(segment.block.get(), segment.size) : std::string_view("(null)");
}

std::string_view viewOf(const Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

ExifSegment segmentAt(const std::string& path) {
    return readExifSegment(urlAt(path).get());
}

Bytes smallTiff() {
    return tiffBlock({TiffDirectory().shorts(0x0112, {6})}, ByteOrder::Little);
}

}  // namespace

TEST(ExifSegmentTest, ASegmentBehindTheStartIsCopiedWithItsMarker) {
    EXPECT_EQ(segmentIn({kImageStart, segment(0xE1, 20, 'e'), kRest}), segment(0xE1, 20, 'e'));
    EXPECT_EQ(segmentIn({kImageStart, segment(0xE1, 65535), kRest}), segment(0xE1, 65535));
}

TEST(ExifSegmentTest, OneSegmentOfAnotherKindIsPassedByItsLength) {
    for (const uint16_t length : {uint16_t{2}, uint16_t{16}, uint16_t{300}, uint16_t{65535}})
        EXPECT_EQ(segmentIn({kImageStart, segment(0xE0, length), segment(0xE1, 20, 'e'), kRest}),
                  segment(0xE1, 20, 'e'))
            << length;
}

TEST(ExifSegmentTest, ASecondOneBeforeItHidesIt) {
    EXPECT_EQ(segmentIn({kImageStart, segment(0xE0, 16), segment(0xE0, 16), segment(0xE1, 20), kRest}),
              Bytes{});
    for (const uint8_t other : {uint8_t{0xFE}, uint8_t{0xE2}, uint8_t{0xDB}}) {
        EXPECT_EQ(segmentIn({kImageStart, segment(other, 16), segment(0xE1, 20), kRest}), Bytes{});
        EXPECT_EQ(segmentIn({kImageStart, segment(0xE0, 16), segment(other, 16), segment(0xE1, 20), kRest}),
                  Bytes{});
    }
}

TEST(ExifSegmentTest, TheFirstSegmentIsTakenWhateverItHolds) {
    EXPECT_EQ(segmentIn({kImageStart, segment(0xE1, 30, 'h'), segment(0xE1, 20, 'e'), kRest}),
              segment(0xE1, 30, 'h'));
}

TEST(ExifSegmentTest, WhatIsNoJpegOrShorterThanNineBytesHasNone) {
    EXPECT_EQ(segmentIn({{0xFF, 0xD9}, segment(0xE1, 20), kRest}), Bytes{});
    EXPECT_EQ(segmentIn({{0xD8, 0xFF}, segment(0xE1, 20), kRest}), Bytes{});
    EXPECT_EQ(segmentIn({segment(0xE1, 20), kRest}), Bytes{});
    const Bytes cut = joined({kImageStart, segment(0xE1, 20), kRest});
    for (size_t size = 0; size < 9; ++size)
        EXPECT_EQ(exifSegmentOfJpeg(ByteView(cut.data(), size)), Bytes{}) << size;
}

TEST(ExifSegmentTest, FourBytesMustFollowTheSegment) {
    for (const uint16_t length : {uint16_t{2}, uint16_t{3}, uint16_t{20}, uint16_t{60000}}) {
        const Bytes whole = joined({kImageStart, segment(0xE0, 16), segment(0xE1, length), kRest});
        EXPECT_EQ(exifSegmentOfJpeg(ByteView(whole)), segment(0xE1, length)) << length;
        EXPECT_EQ(exifSegmentOfJpeg(ByteView(whole.data(), whole.size() - 1)), Bytes{}) << length;
    }
}

TEST(ExifSegmentTest, ALengthThatDoesNotCountItselfEndsTheSearch) {
    for (const uint16_t length : {uint16_t{0}, uint16_t{1}}) {
        EXPECT_EQ(segmentIn({kImageStart, segment(0xE1, length), Bytes(40, 0)}), Bytes{}) << length;
        EXPECT_EQ(segmentIn({kImageStart, segment(0xE0, length), segment(0xE1, 20), Bytes(40, 0)}), Bytes{})
            << length;
    }
}

TEST(ExifSegmentTest, ASegmentBehindTheHeadOfTheFileIsRead) {
    const TemporaryFolder folder;
    const Bytes far = joined({kImageStart, segment(0xE0, 65535), segment(0xE1, 60000, 'e'), kRest});
    const ExifSegment read = segmentAt(folder.write("far.jpg", far));
    EXPECT_EQ(read.code, 0);
    EXPECT_TRUE(viewOf(read) == viewOf(segment(0xE1, 60000, 'e')));
}

TEST(ExifSegmentTest, EveryJpegGivesCodeZero) {
    const TemporaryFolder folder;
    for (const std::string& path :
         {folder.write("none.jpg", joined({kImageStart, segment(0xDB, 60), kRest})),
          folder.write("short.JPG", "\xFF\xD8\xFF\xE1"), folder.write("text.jpeg", "a text of some length"),
          folder.write("empty.jpg", ""), folder.at("missing.jpg"), folder.makeFolder("folder.jpg")}) {
        const ExifSegment read = segmentAt(path);
        EXPECT_EQ(read.code, 0) << path;
        EXPECT_FALSE(read.block) << path;
        EXPECT_EQ(read.size, 0U) << path;
    }
}

TEST(ExifSegmentTest, ATiffThatCannotBeReadGivesOneAndAnyOtherFileThree) {
    const TemporaryFolder folder;
    const auto codeAt = [](const std::string& path) {
        const ExifSegment read = segmentAt(path);
        EXPECT_FALSE(read.block) << path;
        return read.code;
    };
    EXPECT_EQ(codeAt(folder.write("empty.tif", "")), 1);
    EXPECT_EQ(codeAt(folder.at("missing.TIFF")), 1);
    EXPECT_EQ(codeAt(folder.makeFolder("folder.tif")), 1);
    EXPECT_EQ(codeAt(folder.write("text.tif", "a text of some length")), 0);
    EXPECT_EQ(codeAt(folder.write("short.tif", "II*")), 0);
    for (const char* name : {"a.pict", "a.pdf", "a.bmp", "a.qal", "tif", "jpg"})
        EXPECT_EQ(codeAt(folder.write(name, smallTiff())), 3) << name;
    EXPECT_EQ(readExifSegment(nullptr).code, 3);
    EXPECT_EQ(readExifSegment(urlWithoutPath().get()).code, 3);
}

TEST(ExifSegmentTest, TheNameAndNotTheContentSaysWhichKindItIs) {
    const TemporaryFolder folder;
    const Bytes jpeg = joined({kImageStart, segment(0xE1, 20), kRest});
    EXPECT_TRUE(segmentAt(folder.write("a.jpg", jpeg)).block);
    EXPECT_FALSE(segmentAt(folder.write("a.tif", jpeg)).block);
    EXPECT_TRUE(segmentAt(folder.write("b.tif", smallTiff())).block);
    EXPECT_FALSE(segmentAt(folder.write("b.jpg", smallTiff())).block);
}

TEST(ExifSegmentTest, TheBlockOfATiffIsItsSegment) {
    const TemporaryFolder folder;
    const ExifSegment read = segmentAt(folder.write("a.tif", smallTiff()));
    EXPECT_EQ(read.code, 0);
    EXPECT_TRUE(viewOf(read) == viewOf(exifSegmentOfTiff(ByteView(smallTiff()))));
    EXPECT_EQ(read.size, 36U);
}

TEST(ExifSegmentTest, ASegmentThatIsKeptIsFreedByTheNextOne) {
    const TemporaryFolder folder;
    ExifSegment kept = segmentAt(folder.write("a.tif", smallTiff()));
    ASSERT_TRUE(kept.block);
    kept = segmentAt(folder.write("none.jpg", joined({kImageStart, kRest, Bytes(20, 0)})));
    EXPECT_FALSE(kept.block);
    EXPECT_EQ(kept.size, 0U);
}

TEST(ExifSegmentTest, WithoutMemoryATiffGivesOneAndAJpegZero) {
    const TemporaryFolder folder;
    const std::string jpeg = folder.write("a.jpg", joined({kImageStart, segment(0xE1, 20), kRest}));
    const std::string tiff = folder.write("a.tif", smallTiff());
    {
        const ScopedFaults faults{Fault::Allocation};
        const ExifSegment ofJpeg = segmentAt(jpeg);
        EXPECT_EQ(ofJpeg.code, 0);
        EXPECT_FALSE(ofJpeg.block);
        const ExifSegment ofTiff = segmentAt(tiff);
        EXPECT_EQ(ofTiff.code, 1);
        EXPECT_FALSE(ofTiff.block);
        EXPECT_EQ(ofTiff.size, 0U);
    }
    const auto url = urlAt(tiff);
    int refusals = 0;
    for (int successes = 0; successes < 100; ++successes) {
        ExifSegment read;
        bool refused = false;
        {
            const FailingAllocations failing(successes);
            read = readExifSegment(url.get());
            refused = failing.happened();
        }
        if (!refused) break;
        ++refusals;
        EXPECT_EQ(read.code, 1) << successes;
        EXPECT_FALSE(read.block) << successes;
    }
    EXPECT_GT(refusals, 2);
}

}  // namespace fi::test

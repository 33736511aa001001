// SPDX-License-Identifier: Apache-2.0
// Segments made from TIFF files: their bytes, and every bound.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "ImageMetadata/ExifSegment.h"
#include "PlatformKit/Codecs/TiffBytes.h"

namespace fi::test {

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint16_t kExifPointer = 0x8769;
enum Type : uint16_t { kByte = 1, kText = 2, kShort = 3, kLong = 4 };

constexpr ByteOrder kOrders[] = {ByteOrder::Little, ByteOrder::Big};

Bytes segmentOf(const Bytes& tiff) {
    return exifSegmentOfTiff(ByteView(tiff));
}

Bytes segmentOf(const TiffBytes& tiff) {
    return segmentOf(tiff.bytes());
}

/// The bytes of several texts.
Bytes bytesOf(std::initializer_list<std::string_view> parts) {
    Bytes all;
    for (const std::string_view part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// Where a file's only directory has its only value, `size` bytes at `relative` of the directory, which has
/// two entries (26 bytes, and 4 for the next one's offset).
TiffBytes withValueAt(int64_t relative, uint32_t size, ByteOrder order) {
    TiffBytes tiff(order);
    tiff.addBytes(92, 0);
    const auto start = static_cast<int64_t>(tiff.here());
    tiff.setFirst(tiff.addDirectory({{256, kShort, 1, tiff.inlineShort(7)},
                                     {700, kByte, size, static_cast<uint64_t>(start + relative)}},
                                    0xABCDEF01));
    tiff.addBytes(200, 0x55);
    return tiff;
}

/// IFD0 with a span of `mainSpan` bytes and, unless it is 0, an Exif directory of `exifSpan` ones.
TiffBytes withSpans(uint32_t mainSpan, uint32_t exifSpan) {
    TiffBytes tiff(ByteOrder::Little);
    tiff.addBytes(16, 0);
    const uint32_t start = 24;
    const uint32_t exifStart = start + mainSpan + 5;
    const uint32_t entries = exifSpan > 0 ? 2 : 1;
    const uint32_t size = 6 + 12 * entries;
    std::vector<TiffBytes::Entry> directory = {{700, kByte, mainSpan - size, start + size}};
    if (exifSpan > 0) directory.push_back({kExifPointer, kLong, 1, exifStart});
    tiff.setFirst(tiff.addDirectory(directory));
    tiff.addBytes(mainSpan - size + 5, 0x11);
    if (exifSpan > 0) {
        tiff.addDirectory({{0x927C, kByte, exifSpan - 18, exifStart + 18}});
        tiff.addBytes(exifSpan - 18, 0x22);
    }
    return tiff;
}

}  // namespace

TEST(ExifSegmentTiffTest, ALittleEndianFileBecomesThisSegment) {
    TiffBytes tiff(ByteOrder::Little);
    tiff.addBytes(2, 0xCC);
    const uint64_t text = tiff.here() + 42;
    tiff.setFirst(tiff.addDirectory({{0x010F, kText, 6, text},
                                     {0x0112, kShort, 1, tiff.inlineShort(6)},
                                     {kExifPointer, kLong, 1, text + 9}},
                                    0x01020304));
    tiff.addText(std::string_view("Maker\0???", 9));
    tiff.addDirectory({{0x9003, kText, 5, text + 9 + 18 + 2}}, 0);
    tiff.addText(std::string_view("??date\0", 7));
    EXPECT_EQ(segmentOf(tiff), bytesOf({std::string_view("\xFF\xE1\x00\x59"
                                                         "Exif\0\0"
                                                         "II\x2A\0\x08\0\0\0",
                                                         18),
                                        std::string_view("\x03\0"
                                                         "\x0F\x01\x02\0\x06\0\0\0\x32\0\0\0"
                                                         "\x12\x01\x03\0\x01\0\0\0\x06\0\0\0"
                                                         "\x69\x87\x04\0\x01\0\0\0\x38\0\0\0"
                                                         "\0\0\0\0"
                                                         "Maker\0",
                                                         48),
                                        std::string_view("\x01\0"
                                                         "\x03\x90\x02\0\x05\0\0\0\x4C\0\0\0"
                                                         "\0\0\0\0"
                                                         "??date\0",
                                                         25)}));
}

TEST(ExifSegmentTiffTest, ABigEndianFileBecomesThisSegment) {
    TiffBytes tiff(ByteOrder::Big);
    tiff.addBytes(2, 0xCC);
    const uint64_t text = tiff.here() + 18;
    tiff.setFirst(tiff.addDirectory({{0x010F, kText, 6, text}}, 0x01020304));
    tiff.addText(std::string_view("Maker\0???", 9));
    EXPECT_EQ(segmentOf(tiff), bytesOf({std::string_view("\xFF\xE1\x00\x28"
                                                         "Exif\0\0"
                                                         "MM\0\x2A\0\0\0\x08",
                                                         18),
                                        std::string_view("\0\x01"
                                                         "\x01\x0F\0\x02\0\0\0\x06\0\0\0\x1A"
                                                         "\0\0\0\0"
                                                         "Maker\0",
                                                         24)}));
}

TEST(ExifSegmentTiffTest, DirectoriesThatLieRightAreCopiedAsTheyAre) {
    for (const ByteOrder order : kOrders) {
        TiffBytes tiff(order);
        // IFD0 at 8 with a value of 6 bytes, the Exif directory directly behind it.
        tiff.setFirst(tiff.addDirectory({{0x010F, kText, 6, 38}, {kExifPointer, kLong, 1, 44}}));
        tiff.addText(std::string_view("Maker\0", 6));
        tiff.addDirectory({{0x9003, kText, 5, 62}});
        tiff.addText(std::string_view("date\0", 5));
        const Bytes segment = segmentOf(tiff);
        ASSERT_EQ(segment.size(), tiff.bytes().size() + 10);
        EXPECT_EQ(Bytes(segment.begin() + 10, segment.end()), tiff.bytes());
    }
}

TEST(ExifSegmentTiffTest, AnExifDirectoryInFrontIsMovedBehind) {
    for (const ByteOrder order : kOrders) {
        TiffBytes tiff(order);
        const uint64_t exif = tiff.addDirectory({{0x9003, kText, 5, 26}});
        tiff.addText(std::string_view("date\0", 5));
        tiff.setFirst(tiff.addDirectory({{kExifPointer, kLong, 1, exif}}));
        TiffBytes expected(order);
        expected.setFirst(expected.addDirectory({{kExifPointer, kLong, 1, 26}}));
        expected.addDirectory({{0x9003, kText, 5, 44}});
        expected.addText(std::string_view("date\0", 5));
        const Bytes segment = segmentOf(tiff);
        ASSERT_EQ(segment.size(), expected.bytes().size() + 10);
        EXPECT_EQ(Bytes(segment.begin() + 10, segment.end()), expected.bytes());
    }
}

TEST(ExifSegmentTiffTest, OnlyTheFirstLetterSaysTheOrderAndTheHeaderStays) {
    for (const ByteOrder order : kOrders) {
        Bytes bytes = withValueAt(30, 20, order).bytes();
        bytes[1] = 'x';
        bytes[2] = 43;
        const Bytes segment = segmentOf(bytes);
        ASSERT_GT(segment.size(), 18U);
        EXPECT_EQ(Bytes(segment.begin() + 10, segment.begin() + 14),
                  Bytes(bytes.begin(), bytes.begin() + 4));
        for (const uint8_t other : {uint8_t{'i'}, uint8_t{'m'}, uint8_t{0xFF}, uint8_t{0}}) {
            bytes[0] = other;
            EXPECT_EQ(segmentOf(bytes), Bytes{});
        }
    }
}

TEST(ExifSegmentTiffTest, AValueThatBeginsBeforeTheDirectorysEndAllowsNoSegment) {
    struct Case {
        int64_t relative;
        uint32_t size;
        uint32_t span;  ///< 0: no segment
    };
    constexpr Case kCases[] = {
        {-80, 20, 0}, {-20, 20, 0}, {-10, 20, 0}, {-1, 200, 0}, {0, 5, 0},   {2, 20, 0},   {10, 20, 0},
        {25, 5, 0},   {25, 60, 0},  {26, 5, 31},  {29, 5, 34},  {30, 5, 35}, {30, 20, 50}, {100, 20, 120},
    };
    for (const ByteOrder order : kOrders) {
        for (const Case& c : kCases) {
            const Bytes segment = segmentOf(withValueAt(c.relative, c.size, order));
            const size_t size = c.span == 0 ? 0 : c.span + 18;
            EXPECT_EQ(segment.size(), size) << c.relative << ' ' << c.size;
        }
    }
}

TEST(ExifSegmentTiffTest, AValueThatBeginsInTheNextOffsetIsZeroedWithIt) {
    const Bytes segment = segmentOf(withValueAt(26, 8, ByteOrder::Little));
    ASSERT_EQ(segment.size(), 18U + 34);
    EXPECT_EQ(Bytes(segment.end() - 8, segment.end()), (Bytes{0, 0, 0, 0, 0x55, 0x55, 0x55, 0x55}));
}

TEST(ExifSegmentTiffTest, AllOf65517BytesIsTheMost) {
    EXPECT_EQ(segmentOf(withSpans(65517, 0)).size(), 65535U);
    EXPECT_EQ(segmentOf(withSpans(65517, 0))[2], 0xFF);
    EXPECT_EQ(segmentOf(withSpans(65517, 0))[3], 0xFD);
    EXPECT_EQ(segmentOf(withSpans(65518, 0)), Bytes{});
    EXPECT_EQ(segmentOf(withSpans(5517, 60000)).size(), 65535U);
    EXPECT_EQ(segmentOf(withSpans(5518, 60000)), Bytes{});
    EXPECT_EQ(segmentOf(withSpans(5517, 60001)), Bytes{});
    EXPECT_EQ(segmentOf(withSpans(65487, 30)).size(), 65535U);
    EXPECT_EQ(segmentOf(withSpans(35, 65482)).size(), 65535U);
}

TEST(ExifSegmentTiffTest, LargerDirectoriesGiveNone) {
    for (const uint32_t span : {65526U, 65527U, 65528U, 65529U, 65535U, 65536U, 65537U, 200000U}) {
        EXPECT_EQ(segmentOf(withSpans(span, 0)), Bytes{}) << span;
        EXPECT_EQ(segmentOf(withSpans(span, 40)), Bytes{}) << span;
        EXPECT_EQ(segmentOf(withSpans(40, span)), Bytes{}) << span;
    }
}

TEST(ExifSegmentTiffTest, WhatDoesNotLieInTheFileGivesNone) {
    for (const ByteOrder order : kOrders) {
        const Bytes whole = withValueAt(30, 20, order).bytes();
        const size_t end = 100 + 50;
        EXPECT_NE(segmentOf(Bytes(whole.begin(), whole.begin() + end)), Bytes{});
        for (size_t size = 0; size < end; ++size)
            EXPECT_EQ(segmentOf(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size))),
                      Bytes{});
        TiffBytes far(order);
        for (const uint32_t first : {9U, 1000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
            far.setFirst(first);
            EXPECT_EQ(segmentOf(far), Bytes{}) << first;
        }
        for (const uint32_t relative : {171U, 0x7FFFFFFFU, 0xFFFFFF00U})
            EXPECT_EQ(segmentOf(withValueAt(relative, 60, order)), Bytes{}) << relative;
        EXPECT_EQ(segmentOf(withValueAt(30, 0xFFFFFFFF, order)), Bytes{});
    }
}

TEST(ExifSegmentTiffTest, AnExifDirectoryThatCannotBeMovedAllowsNoSegment) {
    for (const ByteOrder order : kOrders) {
        const auto with = [order](const std::vector<TiffBytes::Entry>& exif, uint64_t pointer) {
            TiffBytes tiff(order);
            tiff.setFirst(tiff.addDirectory({{kExifPointer, kLong, 1, pointer}}));
            tiff.addDirectory(exif);
            tiff.addBytes(20, 0);
            return segmentOf(tiff);
        };
        const std::vector<TiffBytes::Entry> good = {{0x9003, kText, 5, 44}};
        EXPECT_NE(with(good, 26), Bytes{});
        EXPECT_EQ(with({}, 26).size(), 18U + 18 + 6);             // no entries
        EXPECT_EQ(with({{0x9003, kText, 5, 8}}, 26), Bytes{});    // a value in front
        EXPECT_EQ(with({{0x9003, kText, 5, 30}}, 26), Bytes{});   // a value inside
        EXPECT_EQ(with({{0x9003, kText, 50, 44}}, 26), Bytes{});  // a value that is cut
        for (const uint64_t nowhere : {uint64_t{0}, uint64_t{63}, uint64_t{64}, uint64_t{0xFFFFFFFF}})
            EXPECT_EQ(with(good, nowhere), Bytes{}) << nowhere;
    }
}

TEST(ExifSegmentTiffTest, ADirectoryWithoutEntriesIsCopiedLikeAnyOther) {
    TiffBytes empty(ByteOrder::Big);
    empty.addBytes(2, 0xCC);
    empty.setFirst(empty.addDirectory({}, 0x01020304));
    EXPECT_EQ(segmentOf(empty), bytesOf({std::string_view("\xFF\xE1\x00\x16"
                                                          "Exif\0\0"
                                                          "MM\0\x2A\0\0\0\x08"
                                                          "\0\0\0\0\0\0",
                                                          24)}));
    TiffBytes cut(ByteOrder::Big);
    cut.setFirst(8);
    cut.addBytes(5, 0);
    EXPECT_EQ(segmentOf(cut), Bytes{});
}

TEST(ExifSegmentTiffTest, TheExtentCountsEachTypeByItsUnit) {
    constexpr uint32_t kUnits[] = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 1, 1};
    for (const ByteOrder order : kOrders) {
        for (uint16_t type = 0; type < std::size(kUnits); ++type) {
            for (uint32_t count = 0; count <= 6; ++count) {
                TiffBytes tiff(order);
                const uint64_t start = tiff.addDirectory({{700, type, count, 1000 + 40}});
                const DirectoryExtent extent =
                    measureDirectory(ByteView(tiff.bytes()).cut(start).withOrder(order), 1000);
                const uint32_t size = kUnits[type] * count;
                EXPECT_EQ(extent.size, 14U);
                EXPECT_EQ(extent.span, size >= 5 ? 40 + size : 18U) << type << ' ' << count;
                EXPECT_FALSE(extent.exif);
            }
        }
    }
}

TEST(ExifSegmentTiffTest, TheExtentTellsTheExifPointer) {
    for (const ByteOrder order : kOrders) {
        TiffBytes tiff(order);
        const uint64_t start = tiff.addDirectory({{256, kShort, 1, tiff.inlineShort(1)},
                                                  {700, kByte, 9, 1070},
                                                  {701, kByte, 100, 1060},
                                                  {kExifPointer, kLong, 1, 0x12345678}});
        const DirectoryExtent extent =
            measureDirectory(ByteView(tiff.bytes()).cut(start).withOrder(order), 1000);
        EXPECT_EQ(extent.size, 50U);
        EXPECT_EQ(extent.span, 160U);
        ASSERT_TRUE(extent.exif);
        EXPECT_EQ(extent.exif->offset, 0x12345678U);
        EXPECT_EQ(extent.exif->fieldPosition, 2U + 3 * 12 + 8);
    }
}

TEST(ExifSegmentTiffTest, TheExtentOfAFarOrHugeDirectoryDoesNotWrap) {
    const auto spanOf = [](int64_t offset, uint16_t type, uint32_t count, uint32_t value) {
        TiffBytes tiff(ByteOrder::Little);
        const uint64_t start = tiff.addDirectory({{700, type, count, value}});
        return measureDirectory(ByteView(tiff.bytes()).cut(start), offset).span;
    };
    EXPECT_EQ(spanOf(0xC0000000, kByte, 5, 0xC0000020), 37U);
    EXPECT_EQ(spanOf(0xC0000000, kByte, 5, 100), 0U);
    EXPECT_EQ(spanOf(0, kByte, 0xFFFFFFFF, 0xFFFFFFFF), 0xFFFFFFFFU);
    EXPECT_EQ(spanOf(0, 12, 0x20000001, 20), 0xFFFFFFFFU);
    EXPECT_EQ(spanOf(0, 12, 0xFFFFFFFF, 20), 0xFFFFFFFFU);
}

TEST(ExifSegmentTiffTest, MovingRewritesOffsetsOfValuesThatStandElsewhere) {
    for (const ByteOrder order : kOrders) {
        const auto directory = [order](uint32_t first, uint32_t second) {
            TiffBytes tiff(order);
            tiff.addDirectory({{256, kLong, 1, 1000}, {700, kByte, 5, first}, {701, kShort, 3, second}},
                              77);
            return Bytes(tiff.bytes().begin() + 8, tiff.bytes().end());
        };
        Bytes moved = directory(1000, 0xFFFFFFFF);
        EXPECT_EQ(moveDirectory(moved, order, 100), 42U);
        EXPECT_EQ(moved, directory(900, 0xFFFFFF9B));
        EXPECT_EQ(moveDirectory(moved, order, -100), 42U);
        EXPECT_EQ(moved, directory(1000, 0xFFFFFFFF));
    }
}

TEST(ExifSegmentTiffTest, MovingNothingOrACutDirectoryGivesNothing) {
    Bytes empty = {0, 0, 0, 0, 0, 0};
    EXPECT_EQ(moveDirectory(empty, ByteOrder::Little, 8), 0U);
    TiffBytes tiff(ByteOrder::Little);
    tiff.addDirectory({{700, kByte, 5, 1000}});
    Bytes cut(tiff.bytes().begin() + 8, tiff.bytes().begin() + 8 + 13);
    const Bytes before = cut;
    EXPECT_EQ(moveDirectory(cut, ByteOrder::Little, 8), 0U);
    EXPECT_EQ(cut, before);
    EXPECT_EQ(measureDirectory(ByteView(cut), 8).span, 0U);
}

}  // namespace fi::test

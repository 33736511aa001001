// SPDX-License-Identifier: Apache-2.0
// The values of entries: where they stand, how long they are, and their byte order.
#include <gtest/gtest.h>

#include <cstring>

#include "ImageMetadata/TagParse.h"
#include "ImageMetadata/TagTypes.h"

namespace fi::test {

namespace {

using Numbers = std::vector<uint64_t>;

constexpr uint32_t kUnits[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};

/// A file with these entries, with room for 600 bytes of values from offset 400 on.
TagBytes fileOf(ByteOrder order, const std::vector<TagEntry>& entries) {
    return TagBytes(order).directory(8, entries).length(1000);
}

/// FixUpEntry() on an entry's twelve bytes.
Bytes fixedUp(ByteOrder order, Bytes entry) {
    OpenTag tag;
    tag.position().bigEndian = order == ByteOrder::Big ? 1 : 0;
    tag.FixUpEntry(reinterpret_cast<char*>(entry.data()));
    return entry;
}

/// An entry of big-endian data, its field as it stands in the file.
Bytes bigEntry(uint16_t type, uint32_t count, const Bytes& field) {
    Bytes entry;
    appendNumber(entry, 0x0112, 2, ByteOrder::Big);
    appendNumber(entry, type, 2, ByteOrder::Big);
    appendNumber(entry, count, 4, ByteOrder::Big);
    entry.insert(entry.end(), field.begin(), field.end());
    return entry;
}

Bytes fieldOf(const Bytes& entry) {
    return Bytes(entry.begin() + 8, entry.end());
}

/// The value of the only entry of a file whose field stands there byte for byte.
Bytes valueOfField(ByteOrder order, uint16_t type, uint32_t count, const std::vector<uint64_t>& field) {
    OpenTag tag;
    EXPECT_EQ(parse(tag, fileOf(order, {{274, type, count, 1, field}})).answer, kDone);
    return bytesOf(tag.record(0));
}

/// GetTagData() of an entry in host order, the record being filled with nonsense before.
Answer readEntry(OpenTag& tag, const Bytes& entry, const Bytes& data, IMAGETAG_INFO& record) {
    std::memset(&record, 0xA5, sizeof record);
    Answer answer{-1, kUntouched};
    answer.result = tag.GetTagData(reinterpret_cast<const char*>(entry.data()), &record,
                                   reinterpret_cast<const char*>(data.data()),
                                   static_cast<uint32_t>(data.size()), &answer.error);
    return answer;
}

}  // namespace

TEST(CIMAGETAGValuesTest, BothByteOrdersGiveTheSameRecords) {
    for (const ByteOrder order : kBothOrders) {
        OpenTag tag;
        TagBytes file = fileOf(order, {shortEntry(256, 4000),
                                       longEntry(257, 0x00010203),
                                       entryAt(282, 5, 2, 400),
                                       entryAt(270, 2, 6, 420),
                                       {277, 3, 2, 2, {8, 9}},
                                       entryAt(258, 3, 3, 430)});
        file.numbers(400, 4, {300, 1, 0x01020304, 7}).text(420, "hello").numbers(430, 2, {8, 0x1234, 9});
        ASSERT_EQ(parse(tag, file).answer, kDone);
        ASSERT_EQ(tag.tags(0), (Tags{256, 257, 282, 270, 277, 258}));
        EXPECT_EQ(numbersOf(tag.record(0, 0)), (Numbers{4000}));
        EXPECT_EQ(numbersOf(tag.record(0, 1)), (Numbers{0x00010203}));
        EXPECT_EQ(numbersOf(tag.record(0, 2)),
                  (Numbers{(uint64_t{1} << 32U) | 300, (uint64_t{7} << 32U) | 0x01020304}));
        EXPECT_STREQ(tag.record(0, 3).value, "hello");
        EXPECT_EQ(numbersOf(tag.record(0, 4)), (Numbers{8, 9}));
        EXPECT_EQ(numbersOf(tag.record(0, 5)), (Numbers{8, 0x1234, 9}));
        const uint16_t types[] = {3, 4, 5, 2, 3, 3};
        const int32_t counts[] = {1, 1, 2, 6, 2, 3};
        for (size_t i = 0; i < 6; ++i) {
            EXPECT_EQ(tag.record(0, i).type, types[i]);
            EXPECT_EQ(tag.record(0, i).count, counts[i]);
            EXPECT_EQ(tag.record(0, i).kind, kImageTagKindPlain);
        }
    }
}

TEST(CIMAGETAGValuesTest, TwelveTypesHaveTheirUnitSizes) {
    // A value that ends with the data is read; one byte less, and it is not.
    for (const ByteOrder order : kBothOrders) {
        for (uint16_t type = 1; type <= 12; ++type) {
            const TagBytes file = fileOf(order, {entryAt(300, type, 9, 400)});
            OpenTag tag;
            EXPECT_EQ(parse(tag, file.bytes(), 400 + 9 * kUnits[type]).answer, kDone) << type;
            EXPECT_EQ(tag.record(0).count, 9);
            OpenTag other;
            EXPECT_EQ(parse(other, file.bytes(), 400 + 9 * kUnits[type] - 1).answer, kBadData) << type;
        }
    }
}

TEST(CIMAGETAGValuesTest, OtherTypesEndTheParse) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint16_t type : Shorts{0, 13, 14, 256, 0x0300, 0xFFFF}) {
            OpenTag tag;
            const TagBytes file =
                TagBytes(order)
                    .directory(8,
                               {shortEntry(256, 1), longEntry(0x8769, 100), shortEntry(257, 2),
                                entryAt(300, type, 1, 0), shortEntry(274, 6)},
                               100)
                    .directory(100, {shortEntry(33434, 1)});
            EXPECT_EQ(parse(tag, file).answer, kBadData) << type;
            EXPECT_EQ(tag.tags(0), (Tags{256, 257})) << type;
            EXPECT_EQ(tag.counts(), (Counts{2})) << type;
        }
    }
}

TEST(CIMAGETAGValuesTest, ValuesOfUpToFourBytesStandInTheEntry) {
    struct Case {
        uint16_t type;
        uint32_t count;
    };
    for (const Case& c : {Case{1, 1}, Case{1, 4}, Case{2, 3}, Case{6, 2}, Case{7, 4}, Case{3, 1},
                          Case{3, 2}, Case{8, 2}, Case{4, 1}, Case{9, 1}, Case{11, 1}}) {
        SCOPED_TRACE(::testing::Message() << "type " << c.type << " count " << c.count);
        // Taken for an offset, the field leads out of the data.
        Bytes expected = {0x81, 0x82, 0x83, 0x84};
        expected.resize(c.count * kUnits[c.type]);
        EXPECT_EQ(valueOfField(ByteOrder::Little, c.type, c.count, {0x81, 0x82, 0x83, 0x84}), expected);
    }
}

TEST(CIMAGETAGValuesTest, LargerValuesStandAtTheOffset) {
    struct Case {
        uint16_t type;
        uint32_t count;
    };
    for (const Case& c : {Case{1, 5}, Case{2, 5}, Case{6, 5}, Case{7, 5}, Case{3, 3}, Case{8, 3},
                          Case{4, 2}, Case{9, 2}, Case{11, 2}, Case{5, 1}, Case{10, 1}, Case{12, 1}}) {
        SCOPED_TRACE(::testing::Message() << "type " << c.type << " count " << c.count);
        OpenTag tag;
        TagBytes file = fileOf(ByteOrder::Little, {entryAt(300, c.type, c.count, 400)});
        file.text(400, "0123456789");
        EXPECT_EQ(parse(tag, file).answer, kDone);
        const std::string expected = std::string("0123456789").substr(0, c.count * kUnits[c.type]);
        EXPECT_EQ(bytesOf(tag.record(0)), Bytes(expected.begin(), expected.end()));
    }
}

TEST(CIMAGETAGValuesTest, FractionsStandAtTheOffsetEvenWhenThereAreNone) {
    for (const uint16_t type : Shorts{5, 10}) {
        OpenTag tag;
        EXPECT_EQ(parse(tag, fileOf(ByteOrder::Little, {entryAt(300, type, 0, 400)})).answer, kDone);
        EXPECT_EQ(tag.record(0).count, 0);
        OpenTag other;
        EXPECT_EQ(parse(other, fileOf(ByteOrder::Little, {entryAt(300, type, 0, 5000)})).answer, kBadData);
    }
    for (const uint16_t type : Shorts{1, 2, 3, 4, 7, 8, 9, 11, 12}) {
        OpenTag tag;
        EXPECT_EQ(parse(tag, fileOf(ByteOrder::Little, {entryAt(300, type, 0, 5000)})).answer, kDone)
            << type;
        EXPECT_EQ(tag.record(0).count, 0);
    }
}

TEST(CIMAGETAGValuesTest, LittleEndianEntriesAreLeftAlone) {
    for (uint16_t type = 0; type <= 13; ++type) {
        for (const uint16_t count : Shorts{0, 1, 2, 3, 4, 5}) {
            Bytes entry = {
                0x12, 0x01, static_cast<uint8_t>(type), 0, static_cast<uint8_t>(count), 0, 0, 0, 0x12, 0x34,
                0x56, 0x78};
            EXPECT_EQ(fixedUp(ByteOrder::Little, entry), entry);
        }
    }
}

TEST(CIMAGETAGValuesTest, BigEndianEntriesAreTurnedByTypeAndCount) {
    const Bytes alone = {0x12, 0x34, 0x56, 0x78};
    const Bytes word = {0x78, 0x56, 0x34, 0x12};
    const Bytes halves = {0x34, 0x12, 0x78, 0x56};
    const Bytes upperHalf = {0x34, 0x12, 0, 0};
    for (uint16_t type = 0; type <= 13; ++type) {
        for (const uint32_t count : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 65536U, 65537U, 65538U}) {
            const bool bytes = type == 1 || type == 2 || type == 6 || type == 7;
            Bytes field = word;
            if (bytes && count < 5) field = alone;
            if (type == 3 && count < 2) field = upperHalf;
            if (type == 3 && count == 2) field = halves;
            const Bytes entry = fixedUp(ByteOrder::Big, bigEntry(type, count, alone));
            SCOPED_TRACE(::testing::Message() << "type " << type << " count " << count);
            EXPECT_EQ(fieldOf(entry), field);
            Bytes head;
            appendNumber(head, 0x0112, 2, ByteOrder::Little);
            appendNumber(head, type, 2, ByteOrder::Little);
            appendNumber(head, count, 4, ByteOrder::Little);
            EXPECT_EQ(Bytes(entry.begin(), entry.begin() + 8), head);
        }
    }
}

TEST(CIMAGETAGValuesTest, ABigEndianShortIsRead) {
    EXPECT_EQ(valueOfField(ByteOrder::Big, 3, 1, {0x12, 0x34, 0, 0}), (Bytes{0x34, 0x12}));
    EXPECT_EQ(valueOfField(ByteOrder::Big, 3, 1, {0x12, 0x34, 0x56, 0x78}), (Bytes{0x34, 0x12}));
}

TEST(CIMAGETAGValuesTest, ABigEndianSignedShortIsLostInTheUpperHalf) {
    EXPECT_EQ(fieldOf(fixedUp(ByteOrder::Big, bigEntry(8, 1, {0x12, 0x34, 0, 0}))),
              (Bytes{0, 0, 0x34, 0x12}));
    EXPECT_EQ(valueOfField(ByteOrder::Big, 8, 1, {0x12, 0x34, 0, 0}), (Bytes{0, 0}));
    // Two of them change places.
    EXPECT_EQ(valueOfField(ByteOrder::Big, 8, 2, {0x12, 0x34, 0x56, 0x78}),
              (Bytes{0x78, 0x56, 0x34, 0x12}));
}

TEST(CIMAGETAGValuesTest, TwoBigEndianShortsAreRead) {
    EXPECT_EQ(valueOfField(ByteOrder::Big, 3, 2, {0x12, 0x34, 0x56, 0x78}),
              (Bytes{0x34, 0x12, 0x78, 0x56}));
}

TEST(CIMAGETAGValuesTest, BigEndianBytesInTheEntryAreLeftAlone) {
    for (const uint16_t type : Shorts{1, 2, 6, 7}) {
        for (uint32_t count = 1; count <= 4; ++count) {
            Bytes expected = {0x81, 0x82, 0x83, 0x84};
            expected.resize(count);
            EXPECT_EQ(valueOfField(ByteOrder::Big, type, count, {0x81, 0x82, 0x83, 0x84}), expected);
        }
        OpenTag tag;
        TagBytes file = fileOf(ByteOrder::Big, {entryAt(300, type, 5, 400)});
        file.text(400, "01234");
        EXPECT_EQ(parse(tag, file).answer, kDone);
        EXPECT_EQ(bytesOf(tag.record(0)), (Bytes{'0', '1', '2', '3', '4'}));
    }
}

TEST(CIMAGETAGValuesTest, BigEndianWordsAreRead) {
    for (const uint16_t type : Shorts{4, 9, 11}) {
        EXPECT_EQ(valueOfField(ByteOrder::Big, type, 1, {0x12, 0x34, 0x56, 0x78}),
                  (Bytes{0x78, 0x56, 0x34, 0x12}));
        OpenTag tag;
        TagBytes file = fileOf(ByteOrder::Big, {entryAt(300, type, 3, 400)});
        file.numbers(400, 4, {0x12345678, 0x9ABCDEF0, 1});
        EXPECT_EQ(parse(tag, file).answer, kDone);
        EXPECT_EQ(numbersOf(tag.record(0)), (Numbers{0x12345678, 0x9ABCDEF0, 1}));
    }
}

TEST(CIMAGETAGValuesTest, BigEndianShortsAtTheOffsetAreRead) {
    for (const uint16_t type : Shorts{3, 8}) {
        OpenTag tag;
        TagBytes file = fileOf(ByteOrder::Big, {entryAt(300, type, 3, 400)});
        file.numbers(400, 2, {0x1234, 0x5678, 0x9ABC});
        EXPECT_EQ(parse(tag, file).answer, kDone);
        EXPECT_EQ(numbersOf(tag.record(0)), (Numbers{0x1234, 0x5678, 0x9ABC}));
    }
}

TEST(CIMAGETAGValuesTest, BothHalvesOfBigEndianFractionsAreRead) {
    for (const uint16_t type : Shorts{5, 10}) {
        OpenTag tag;
        TagBytes file = fileOf(ByteOrder::Big, {entryAt(300, type, 2, 400)});
        file.numbers(400, 4, {0x12345678, 0x9ABCDEF0, 3, 4});
        EXPECT_EQ(parse(tag, file).answer, kDone);
        EXPECT_EQ(numbersOf(tag.record(0)), (Numbers{0x9ABCDEF012345678, (uint64_t{4} << 32U) | 3}));
    }
}

TEST(CIMAGETAGValuesTest, OnlyTheFirstHalfOfBigEndianDoublesIsTurnedInWords) {
    OpenTag tag;
    TagBytes file = fileOf(ByteOrder::Big, {entryAt(300, 12, 2, 400), entryAt(301, 12, 1, 400)});
    file.numbers(400, 1, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    EXPECT_EQ(parse(tag, file).answer, kDone);
    EXPECT_EQ(bytesOf(tag.record(0, 0)), (Bytes{3, 2, 1, 0, 7, 6, 5, 4, 8, 9, 10, 11, 12, 13, 14, 15}));
    EXPECT_EQ(bytesOf(tag.record(0, 1)), (Bytes{3, 2, 1, 0, 4, 5, 6, 7}));
}

TEST(CIMAGETAGValuesTest, CountsAreTheirLow16Bits) {
    for (const ByteOrder order : kBothOrders) {
        OpenTag tag;
        const TagBytes file =
            fileOf(order, {longEntry(300, 7), entryAt(301, 4, 65537, 8), entryAt(302, 7, 65536, 0xFFFFFFFF),
                           entryAt(303, 4, 0x00020000, 0xFFFFFFFF), entryAt(304, 7, 0x12340003, 0)});
        EXPECT_EQ(parse(tag, file).answer, kDone);
        const int32_t counts[] = {1, 1, 0, 0, 3};
        for (size_t i = 0; i < 5; ++i)
            EXPECT_EQ(tag.record(0, i).count, counts[i]) << i;
        EXPECT_EQ(numbersOf(tag.record(0, 1)), (Numbers{8}));
        EXPECT_NE(tag.record(0, 2).value, nullptr);
    }
    // The field is turned by the whole count, the value is cut by what is left of it.
    EXPECT_EQ(valueOfField(ByteOrder::Big, 3, 65537, {0x12, 0x34, 0x56, 0x78}), (Bytes{0x78, 0x56}));
    EXPECT_EQ(valueOfField(ByteOrder::Big, 7, 65538, {0x12, 0x34, 0x56, 0x78}), (Bytes{0x78, 0x56}));
}

TEST(CIMAGETAGValuesTest, NegativeCountsFindNoMemory) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t count : {32768U, 40'000U, 65535U, 0x0001FFFFU, 0xFFFFFFFFU}) {
            for (uint16_t type = 1; type <= 12; ++type) {
                for (const uint32_t offset : {8U, 400U, 0xFFFFFF00U}) {
                    OpenTag tag;
                    TagBytes file =
                        fileOf(order, {shortEntry(274, 6), longEntry(0x8769, 200),
                                       entryAt(37500, type, count, offset), shortEntry(256, 1)});
                    file.directory(200, {shortEntry(33434, 1)});
                    EXPECT_EQ(parse(tag, file).answer, kNoMemory) << type << " " << count;
                    EXPECT_EQ(tag.counts(), (Counts{1})) << type << " " << count;
                    EXPECT_EQ(tag.tags(0), (Tags{274}));
                }
            }
        }
    }
}

TEST(CIMAGETAGValuesTest, ALongMakerNoteLeavesTheDatesBeforeIt) {
    OpenTag tag;
    const TagBytes file = TagBytes(ByteOrder::Big)
                              .directory(8, {longEntry(0x8769, 100)})
                              .directory(100, {entryAt(36867, 2, 20, 300), entryAt(37500, 7, 40'000, 400),
                                               shortEntry(40962, 4000)})
                              .text(300, "2019:05:06 10:11:12")
                              .length(50'000);
    EXPECT_EQ(parse(tag, file).answer, kNoMemory);
    EXPECT_EQ(tag.tags(1), (Tags{36867}));
    uint32_t error = kUntouched;
    IMAGETAG_INFO* date = tag.GetInfo(1, 36867, &error);
    ASSERT_NE(date, nullptr);
    EXPECT_EQ(parsedOf(*date), (Parsed{2019, 5, 6, 10, 11, 12}));
    tag.ReleaseInfo(date);
}

TEST(CIMAGETAGValuesTest, TheLargestPositiveCountIsRead) {
    OpenTag tag;
    const TagBytes file =
        TagBytes(ByteOrder::Big).directory(8, {entryAt(300, 12, 32767, 64)}).length(64 + 32767 * 8);
    EXPECT_EQ(parse(tag, file).answer, kDone);
    EXPECT_EQ(tag.record(0).count, 32767);
}

TEST(CIMAGETAGValuesTest, TextsAreFollowedByTwoZeros) {
    const DigitsInNewMemory digits;
    for (const ByteOrder order : kBothOrders) {
        OpenTag tag;
        TagBytes file =
            fileOf(order, {bytesEntry(270, 2, "abcd"), entryAt(271, 2, 5, 400), bytesEntry(272, 2, "x"),
                           entryAt(305, 2, 0, 400), entryAt(306, 2, 22, 400)});
        file.text(400, "abcdefghijklmnopqrstuvwxyz");
        EXPECT_EQ(parse(tag, file).answer, kDone);
        for (size_t i = 0; i < 5; ++i) {
            const IMAGETAG_INFO& record = tag.record(0, i);
            EXPECT_EQ(record.value[record.count], 0) << i;
            EXPECT_EQ(record.value[record.count + 1], 0) << i;
        }
        EXPECT_STREQ(tag.record(0, 0).value, "abcd");
        EXPECT_STREQ(tag.record(0, 1).value, "abcde");
        EXPECT_STREQ(tag.record(0, 3).value, "");
    }
}

TEST(CIMAGETAGValuesTest, ValuesBeyondTheDataEndTheParse) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t offset :
             {993U, 1000U, 5000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFF8U, 0xFFFFFFFFU}) {
            OpenTag tag;
            TagBytes file = fileOf(order, {longEntry(0x8769, 200), shortEntry(274, 6),
                                           entryAt(282, 5, 1, offset), shortEntry(256, 1)});
            file.directory(200, {shortEntry(33434, 1)});
            EXPECT_EQ(parse(tag, file).answer, kBadData) << offset;
            EXPECT_EQ(tag.tags(0), (Tags{274})) << offset;
            EXPECT_EQ(tag.counts(), (Counts{1})) << offset;
            uint32_t error = kUntouched;
            IMAGETAG_INFO* orientation = tag.GetInfo(0, 274, &error);
            EXPECT_EQ(error, kTagNoError);
            EXPECT_NE(orientation, nullptr);
            tag.ReleaseInfo(orientation);
        }
        OpenTag tag;
        EXPECT_EQ(parse(tag, fileOf(order, {entryAt(282, 5, 1, 992)})).answer, kDone);
    }
}

TEST(CIMAGETAGValuesTest, HugeOffsetsBehindAHeaderDoNotWrap) {
    for (const uint32_t header : {kExifHeader, kJfifExifHeader}) {
        for (const uint32_t offset : {0xFFFFFFF4U, 0xFFFFFFE2U, 0xFFFFFFFEU}) {
            OpenTag tag;
            const TagBytes file =
                TagBytes(ByteOrder::Little, header).directory(8, {entryAt(282, 5, 1, offset)}).length(200);
            EXPECT_EQ(parse(tag, file).answer, kBadData) << offset;
        }
    }
}

TEST(CIMAGETAGValuesTest, ValuesBeforeTheDirectoryAreRead) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            OpenTag tag;
            const TagBytes file = TagBytes(order, header)
                                      .first(200)
                                      .directory(200, {entryAt(282, 5, 1, 8), longEntry(0x8769, 40)})
                                      .directory(40, {entryAt(36867, 2, 20, 100)})
                                      .numbers(8, 4, {300, 1})
                                      .text(100, "2019:05:06 10:11:12");
            EXPECT_EQ(parse(tag, file).answer, kDone);
            EXPECT_EQ(numbersOf(tag.record(0)), (Numbers{(uint64_t{1} << 32U) | 300}));
            EXPECT_STREQ(tag.record(1).value, "2019:05:06 10:11:12");
        }
    }
}

TEST(CIMAGETAGValuesTest, ASingleEntryIsReadByItself) {
    OpenTag tag;
    const Bytes data = TagBytes(ByteOrder::Little).text(20, "some text").length(40).bytes();
    IMAGETAG_INFO record;
    EXPECT_EQ(readEntry(tag, {0x0E, 0x01, 2, 0, 9, 0, 0, 0, 20, 0, 0, 0}, data, record), kDone);
    EXPECT_EQ(record.tag, 270);
    EXPECT_EQ(record.type, 2);
    EXPECT_EQ(record.kind, kImageTagKindPlain);
    EXPECT_EQ(record.count, 9);
    EXPECT_STREQ(record.value, "some text");
    EXPECT_EQ(parsedOf(record), Parsed{});
    uint32_t error = kUntouched;
    ASSERT_EQ(tag.PushChain(&record, 0, &error), 1);
    EXPECT_EQ(tag.counts(), (Counts{1}));
}

TEST(CIMAGETAGValuesTest, ASingleEntryThatCannotBeReadLeavesNoValue) {
    OpenTag tag;
    const Bytes data(40);
    IMAGETAG_INFO record;
    EXPECT_EQ(readEntry(tag, {0x0E, 0x01, 13, 0, 9, 0, 0, 0, 20, 0, 0, 0}, data, record), kBadData);
    EXPECT_EQ(record.value, nullptr);
    EXPECT_EQ(readEntry(tag, {0x0E, 0x01, 2, 0, 9, 0, 0, 0, 32, 0, 0, 0}, data, record), kBadData);
    EXPECT_EQ(record.value, nullptr);
    EXPECT_EQ(record.tag, 270);
    EXPECT_EQ(record.type, 2);
    EXPECT_EQ(record.count, 9);
    EXPECT_EQ(readEntry(tag, {0x0E, 0x01, 2, 0, 0, 0x80, 0, 0, 20, 0, 0, 0}, data, record), kNoMemory);
    EXPECT_EQ(record.value, nullptr);
    EXPECT_EQ(record.count, -32768);
    const OneRefusal refusal(0);
    EXPECT_EQ(readEntry(tag, {0x0E, 0x01, 2, 0, 9, 0, 0, 0, 20, 0, 0, 0}, data, record), kNoMemory);
    EXPECT_EQ(record.value, nullptr);
}

TEST(CIMAGETAGValuesTest, ASingleBigEndianEntryIsTurnedOnce) {
    OpenTag tag;
    tag.position().bigEndian = 1;
    const Bytes data = TagBytes(ByteOrder::Big).numbers(20, 2, {0x1234, 0x5678, 0x9ABC}).bytes();
    IMAGETAG_INFO record;
    const Bytes entry = fixedUp(ByteOrder::Big, bigEntry(3, 3, {0, 0, 0, 20}));
    ASSERT_EQ(readEntry(tag, entry, data, record), kDone);
    EXPECT_EQ(record.tag, 0x0112);
    EXPECT_EQ(record.count, 3);
    EXPECT_EQ(numbersOf(record), (Numbers{0x1234, 0x5678, 0x9ABC}));
    uint32_t error = kUntouched;
    EXPECT_EQ(tag.PushChain(&record, 0, &error), 1);
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Which directories are read, in which order, into which slots.
#include <gtest/gtest.h>

#include <algorithm>

#include "ImageMetadata/TagParse.h"

namespace fi::test {

namespace {

constexpr uint16_t kExifPointer = 0x8769;
constexpr uint16_t kGpsPointer = 0x8825;
constexpr uint16_t kInteropPointer = 0xA005;

/// The five entries of an Interoperability directory's window: kept tags first, then what is dropped.
std::vector<TagEntry> interopWindow(std::vector<TagEntry> kept) {
    kept.resize(5, entryAt(0xEEEE, 0, 1, 0));
    return kept;
}

/// A file with all eight directories; each holds one record, which says where it stood.
TagBytes completeFile(ByteOrder order, uint32_t header) {
    return TagBytes(order, header)
        .directory(8, {shortEntry(256, 0), longEntry(kExifPointer, 100), longEntry(kGpsPointer, 200)}, 400)
        .directory(100, {shortEntry(33434, 1), longEntry(kInteropPointer, 300)})
        .directory(200, {shortEntry(30, 2)})
        .directory(300, interopWindow({shortEntry(1, 3)}))
        .directory(400, {shortEntry(256, 4), longEntry(kExifPointer, 500), longEntry(kGpsPointer, 600)},
                   800)
        .directory(500, {shortEntry(33434, 5), longEntry(kInteropPointer, 700)})
        .directory(600, {shortEntry(30, 6)})
        .directory(700, interopWindow({shortEntry(1, 7)}))
        .directory(800, {shortEntry(256, 8)});
}

}  // namespace

TEST(CIMAGETAGDirectoriesTest, RecordsKeepTheFilesOrder) {
    for (const ByteOrder order : kBothOrders) {
        OpenTag tag;
        const TagBytes file = TagBytes(order).directory(
            8, {shortEntry(300, 1), shortEntry(256, 2), shortEntry(274, 3), shortEntry(256, 4)});
        EXPECT_EQ(parse(tag, file).answer, kDone);
        EXPECT_EQ(tag.tags(0), (Tags{300, 256, 274, 256}));
        for (size_t i = 0; i < 4; ++i)
            EXPECT_EQ(numbersOf(tag.record(0, i)), (std::vector<uint64_t>{i + 1}));
    }
}

TEST(CIMAGETAGDirectoriesTest, EachDirectoryFillsItsSlot) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            OpenTag tag;
            EXPECT_EQ(parse(tag, completeFile(order, header)).answer, kDone);
            EXPECT_EQ(tag.counts(), (Counts{1, 1, 1, 1, 1, 1, 1, 1}));
            const Tags tags = {256, 33434, 30, 1, 256, 33434, 30, 1};
            for (size_t slot = 0; slot < 8; ++slot) {
                EXPECT_EQ(tag.record(slot).tag, tags[slot]) << slot;
                EXPECT_EQ(numbersOf(tag.record(slot)), (std::vector<uint64_t>{slot})) << slot;
            }
        }
    }
}

TEST(CIMAGETAGDirectoriesTest, PointersAreNoRecords) {
    OpenTag tag;
    ASSERT_EQ(parse(tag, completeFile(ByteOrder::Little, kTiffHeader)).answer, kDone);
    EXPECT_EQ(tag.tags(0), (Tags{256}));
    EXPECT_EQ(tag.tags(1), (Tags{33434}));
    EXPECT_EQ(tag.tags(4), (Tags{256}));
    EXPECT_EQ(tag.tags(5), (Tags{33434}));
}

TEST(CIMAGETAGDirectoriesTest, OtherPointersInASubdirectoryAreRecords) {
    OpenTag tag;
    const TagBytes file = TagBytes(ByteOrder::Little)
                              .directory(8, {longEntry(kExifPointer, 100), longEntry(kGpsPointer, 200)})
                              .directory(100, {longEntry(kExifPointer, 300), longEntry(kGpsPointer, 300)})
                              .directory(200, {shortEntry(30, 2), longEntry(kExifPointer, 300)})
                              .directory(300, {shortEntry(33434, 1)});
    EXPECT_EQ(parse(tag, file).answer, kDone);
    EXPECT_EQ(tag.tags(1), (Tags{kExifPointer, kGpsPointer}));
    EXPECT_EQ(tag.tags(2), (Tags{30, kExifPointer}));
}

TEST(CIMAGETAGDirectoriesTest, InteroperabilityIsReadAfterGPS) {
    // A fault in the GPS directory ends the parse; nothing behind it is read.
    for (const bool second : {false, true}) {
        OpenTag tag;
        TagBytes file = completeFile(ByteOrder::Big, kTiffHeader);
        file.directory(second ? 600 : 200, {shortEntry(30, 2), entryAt(31, 13, 1, 0)});
        EXPECT_EQ(parse(tag, file).answer, kBadData);
        EXPECT_EQ(tag.counts(), second ? (Counts{1, 1, 1, 1, 1, 1, 1, 0}) : (Counts{1, 1, 1, 0, 1}));
    }
}

TEST(CIMAGETAGDirectoriesTest, BothMainDirectoriesAreReadBeforeTheOthers) {
    OpenTag tag;
    TagBytes file = completeFile(ByteOrder::Little, kTiffHeader);
    file.directory(100, {shortEntry(33434, 1), entryAt(33437, 0, 1, 0)});
    EXPECT_EQ(parse(tag, file).answer, kBadData);
    EXPECT_EQ(tag.counts(), (Counts{1, 1, 0, 0, 1}));
}

TEST(CIMAGETAGDirectoriesTest, AMainDirectoryMayPointToGPSAndInteroperability) {
    for (const ByteOrder order : kBothOrders) {
        OpenTag tag;
        const TagBytes file =
            TagBytes(order)
                .directory(8, {longEntry(kGpsPointer, 100), longEntry(kInteropPointer, 200)}, 300)
                .directory(100, {shortEntry(30, 2)})
                .directory(200, interopWindow({shortEntry(2, 3)}))
                .directory(300, {longEntry(kInteropPointer, 200), longEntry(kGpsPointer, 100)});
        EXPECT_EQ(parse(tag, file).answer, kDone);
        EXPECT_EQ(tag.counts(), (Counts{0, 0, 1, 1, 0, 0, 1, 1}));
        EXPECT_EQ(tag.HasExifIFD(), 0);
    }
}

TEST(CIMAGETAGDirectoriesTest, ThePointerOfTheExifDirectoryReplacesThatOfTheMainDirectory) {
    OpenTag tag;
    const TagBytes file = TagBytes(ByteOrder::Little)
                              .directory(8, {longEntry(kExifPointer, 100), longEntry(kInteropPointer, 200)})
                              .directory(100, {longEntry(kInteropPointer, 300)})
                              .directory(200, interopWindow({shortEntry(1, 200)}))
                              .directory(300, interopWindow({shortEntry(1, 300)}));
    EXPECT_EQ(parse(tag, file).answer, kDone);
    EXPECT_EQ(tag.counts(), (Counts{0, 0, 0, 1}));
    EXPECT_EQ(numbersOf(tag.record(3)), (std::vector<uint64_t>{300}));
}

TEST(CIMAGETAGDirectoriesTest, NothingIsReadAfterTheSecondMainDirectory) {
    OpenTag tag;
    ASSERT_EQ(parse(tag, completeFile(ByteOrder::Little, kTiffHeader)).answer, kDone);
    EXPECT_EQ(numbersOf(tag.record(4)), (std::vector<uint64_t>{4}));
    EXPECT_EQ(tag.field(4).count, 1);
    // Not even looked at: its offset leads nowhere, or back.
    for (const uint32_t next : {0xFFFFFFF0U, 8U, 400U}) {
        OpenTag other;
        TagBytes file = completeFile(ByteOrder::Little, kTiffHeader);
        file.directory(400, {shortEntry(256, 4)}, next);
        EXPECT_EQ(parse(other, file).answer, kDone) << next;
        EXPECT_EQ(other.counts(), (Counts{1, 1, 1, 1, 1})) << next;
    }
}

TEST(CIMAGETAGDirectoriesTest, AnOffsetOfZeroEndsTheChain) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader}) {
            OpenTag tag;
            const TagBytes file = TagBytes(order, header).directory(8, {shortEntry(256, 1)}, 0);
            EXPECT_EQ(parse(tag, file).answer, kDone);
            EXPECT_EQ(tag.counts(), (Counts{1}));
        }
    }
}

TEST(CIMAGETAGDirectoriesTest, DirectoriesMayStandInAnyOrder) {
    for (const ByteOrder order : kBothOrders) {
        OpenTag tag;
        const TagBytes file = TagBytes(order)
                                  .first(500)
                                  .directory(500, {longEntry(kExifPointer, 100)}, 300)
                                  .directory(300, {shortEntry(256, 4), longEntry(kGpsPointer, 8)})
                                  .directory(100, {shortEntry(33434, 1)})
                                  .directory(8, {shortEntry(30, 6)});
        EXPECT_EQ(parse(tag, file).answer, kDone);
        EXPECT_EQ(tag.counts(), (Counts{0, 1, 0, 0, 1, 0, 1}));
    }
}

TEST(CIMAGETAGDirectoriesTest, ADirectoryThatIsReadTwiceReadsTheSameTwice) {
    OpenTag tag;
    const TagBytes file = TagBytes(ByteOrder::Big)
                              .directory(8, {shortEntry(256, 1), longEntry(kExifPointer, 100)}, 60)
                              .directory(60, {longEntry(kExifPointer, 100), longEntry(kGpsPointer, 100)})
                              .directory(100, {shortEntry(33434, 0x1234), entryAt(33437, 5, 1, 200)})
                              .numbers(200, 4, {28, 10});
    EXPECT_EQ(parse(tag, file).answer, kDone);
    EXPECT_EQ(tag.counts(), (Counts{1, 2, 0, 0, 0, 2, 2}));
    for (const size_t slot : {1U, 5U, 6U}) {
        EXPECT_EQ(numbersOf(tag.record(slot, 0)), (std::vector<uint64_t>{0x1234})) << slot;
        EXPECT_EQ(numbersOf(tag.record(slot, 1)), (std::vector<uint64_t>{(uint64_t{10} << 32U) | 28}));
    }
    OpenTag chain;
    EXPECT_EQ(parse(chain, TagBytes(ByteOrder::Big).directory(8, {shortEntry(256, 7)}, 8)).answer, kDone);
    EXPECT_EQ(chain.counts(), (Counts{1, 0, 0, 0, 1}));
    EXPECT_EQ(numbersOf(chain.record(4)), (std::vector<uint64_t>{7}));
}

TEST(CIMAGETAGDirectoriesTest, TheWindowOfInteroperabilityMayOverlapAnotherDirectory) {
    // It is the Exif directory of IFD1, too.
    OpenTag tag;
    const TagBytes file =
        TagBytes(ByteOrder::Big)
            .directory(8, {longEntry(kInteropPointer, 200)}, 100)
            .directory(100, {longEntry(kExifPointer, 200), longEntry(kInteropPointer, 200)})
            .directory(200, {shortEntry(1, 0x1234), shortEntry(2, 0x5678), shortEntry(3, 0),
                             shortEntry(4, 0), shortEntry(5, 0)});
    EXPECT_EQ(parse(tag, file).answer, kDone);
    EXPECT_EQ(tag.counts(), (Counts{0, 0, 0, 2, 0, 5, 0, 2}));
    for (const size_t slot : {3U, 5U, 7U}) {
        EXPECT_EQ(numbersOf(tag.record(slot, 0)), (std::vector<uint64_t>{0x1234})) << slot;
        EXPECT_EQ(numbersOf(tag.record(slot, 1)), (std::vector<uint64_t>{0x5678})) << slot;
    }
}

TEST(CIMAGETAGDirectoriesTest, FiveEntriesOfInteroperabilityAreReadWhateverTheCountSays) {
    const std::vector<TagEntry> entries = {shortEntry(1, 1),      shortEntry(2, 2),
                                           shortEntry(0x1000, 3), shortEntry(0x1001, 4),
                                           shortEntry(0x1002, 5), shortEntry(1, 6)};
    for (const ByteOrder order : kBothOrders) {
        for (const uint16_t count : Shorts{0, 1, 5, 6, 2731, 0xFFFF}) {
            OpenTag tag;
            const TagBytes file = TagBytes(order)
                                      .directory(8, {longEntry(kInteropPointer, 100)})
                                      .directoryOf(100, count, entries);
            EXPECT_EQ(parse(tag, file).answer, kDone) << count;
            EXPECT_EQ(tag.tags(3), (Tags{1, 2, 0x1000, 0x1001, 0x1002})) << count;
        }
    }
}

TEST(CIMAGETAGDirectoriesTest, InteroperabilityKeepsFiveTagsOnly) {
    for (const uint16_t tagNumber :
         Shorts{0, 1, 2, 3, 4, 256, 0x0FFF, 0x1000, 0x1001, 0x1002, 0x1003, 0xA005}) {
        const bool kept = tagNumber == 1 || tagNumber == 2 || (tagNumber >= 0x1000 && tagNumber <= 0x1002);
        OpenTag tag;
        const TagBytes file =
            TagBytes(ByteOrder::Little)
                .directory(8, {longEntry(kInteropPointer, 100)})
                .directory(100, interopWindow({shortEntry(1, 1), shortEntry(tagNumber, 9)}));
        EXPECT_EQ(parse(tag, file).answer, kDone) << tagNumber;
        EXPECT_EQ(tag.tags(3), kept ? (Tags{1, tagNumber}) : Tags{1}) << tagNumber;
    }
}

TEST(CIMAGETAGDirectoriesTest, ValuesThatInteroperabilityDropsAreNotLookedAt) {
    OpenTag tag;
    const TagBytes file =
        TagBytes(ByteOrder::Little)
            .directory(8, {longEntry(kInteropPointer, 100)})
            .directory(100, {entryAt(3, 0, 1, 0), entryAt(4, 13, 1, 0), entryAt(5, 7, 40'000, 0),
                             entryAt(6, 2, 100, 0xFFFFFF00), bytesEntry(1, 2, "R98")});
    EXPECT_EQ(parse(tag, file).answer, kDone);
    EXPECT_EQ(tag.tags(3), (Tags{1}));
    OpenTag other;
    TagBytes bad = file;
    bad.directory(100, interopWindow({shortEntry(1, 1), entryAt(2, 13, 1, 0)}));
    EXPECT_EQ(parse(other, bad).answer, kBadData);
}

TEST(CIMAGETAGDirectoriesTest, InteroperabilityEndsWithTheData) {
    const TagBytes file = TagBytes(ByteOrder::Little)
                              .directory(8, {longEntry(kInteropPointer, 100)})
                              .directory(100, {shortEntry(1, 1), shortEntry(2, 2), shortEntry(0x1000, 3),
                                               shortEntry(0x1001, 4), shortEntry(0x1002, 5)});
    // What is missing stands right behind the data, where nobody may read it.
    for (uint32_t size = 103; size <= 170; ++size) {
        OpenTag tag;
        EXPECT_EQ(parse(tag, file.bytes(), size).answer, kDone) << size;
        EXPECT_EQ(tag.field(3).count, static_cast<int>(std::min((size - 102) / 12, 5U))) << size;
    }
    for (uint32_t size = 30; size <= 101; ++size) {
        OpenTag tag;
        EXPECT_EQ(parse(tag, file.bytes(), size).answer, kMore) << size;
        EXPECT_EQ(tag.counts(), Counts{}) << size;
    }
}

TEST(CIMAGETAGDirectoriesTest, ASubdirectoryThatIsTooLargeReleasesFromItsMainDirectoryOn) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint16_t count : Shorts{300, 2731, 5461, 0xFFFF}) {
            for (const uint32_t at : {100U, 200U, 500U, 600U}) {
                OpenTag tag;
                TagBytes file = completeFile(order, kTiffHeader);
                file.directoryOf(at, count, {shortEntry(30, 1)});
                const Outcome outcome = parse(tag, file);
                EXPECT_EQ(outcome.answer, kMore) << count << " at " << at;
                EXPECT_EQ(outcome.nextSize, kStep);
                const bool first = at < 400;
                EXPECT_EQ(tag.counts(), first ? Counts{} : (Counts{1})) << count << " at " << at;
                EXPECT_EQ(outcome.nextOffset, first ? 8U : 400U) << count << " at " << at;
            }
        }
    }
}

TEST(CIMAGETAGDirectoriesTest, SubdirectoriesNeedTheirEntriesAndHalfAnOffset) {
    for (const uint16_t pointer : {kExifPointer, kGpsPointer}) {
        const TagBytes file = TagBytes(ByteOrder::Big)
                                  .directory(8, {longEntry(pointer, 100)})
                                  .directory(100, {shortEntry(30, 1), shortEntry(29, 2)});
        const size_t slot = pointer == kExifPointer ? 1 : 2;
        for (uint32_t size = 100; size < 100 + 28; ++size) {
            OpenTag tag;
            EXPECT_EQ(parse(tag, file.bytes(), size).answer, kMore) << size;
            EXPECT_EQ(tag.counts(), Counts{});
        }
        for (uint32_t size = 100 + 28; size <= 100 + directorySize(2); ++size) {
            OpenTag tag;
            EXPECT_EQ(parse(tag, file.bytes(), size).answer, kDone) << size;
            EXPECT_EQ(tag.field(slot).count, 2);
        }
    }
}

TEST(CIMAGETAGDirectoriesTest, HasExifTellsOfTheLastParse) {
    const TagBytes with = completeFile(ByteOrder::Little, kTiffHeader);
    const TagBytes without = TagBytes(ByteOrder::Little).directory(8, {shortEntry(256, 1)});
    const TagBytes second = TagBytes(ByteOrder::Little)
                                .directory(8, {}, 100)
                                .directory(100, {longEntry(kExifPointer, 200)})
                                .directory(200, {});
    OpenTag tag;
    EXPECT_EQ(tag.HasExifIFD(), 0);
    for (const TagBytes* file : {&with, &without, &second, &without}) {
        EXPECT_EQ(parse(tag, *file).answer, kDone);
        EXPECT_EQ(tag.HasExifIFD(), file == &without ? 0 : 1);
        tag.CloseField();
    }
    parse(tag, with);
    EXPECT_EQ(parse(tag, Bytes{}).answer, kNotRecognised);
    EXPECT_EQ(tag.HasExifIFD(), 0);
}

TEST(CIMAGETAGDirectoriesTest, TheStepsOneByOneDoWhatAParseDoes) {
    for (const ByteOrder order : kBothOrders) {
        const Bytes bytes = completeFile(order, kTiffHeader).bytes();
        const Bytes before = bytes;
        const char* data = reinterpret_cast<const char*>(bytes.data());
        const auto size = static_cast<uint32_t>(bytes.size());
        OpenTag tag;
        Outcome outcome;
        ASSERT_EQ(tag.SearchFirstIFD(data, size, &outcome.answer.error), 1);
        outcome.answer.result =
            tag.SetTiffInfo(data, size, &outcome.nextOffset, &outcome.nextSize, &outcome.answer.error);
        EXPECT_EQ(outcome.answer, kDone);
        EXPECT_EQ(tag.counts(), (Counts{1, 1, 1, 1, 1, 1, 1, 1}));
        EXPECT_TRUE(bytes == before);
        OpenTag cut;
        ASSERT_EQ(cut.SearchFirstIFD(data, size, &outcome.answer.error), 1);
        outcome.answer.result =
            cut.SetTiffInfo(data, 350, &outcome.nextOffset, &outcome.nextSize, &outcome.answer.error);
        EXPECT_EQ(outcome.answer, kMore);
        EXPECT_EQ(outcome.nextOffset, 400U);
        EXPECT_EQ(outcome.nextSize, kStep);
        EXPECT_EQ(cut.counts(), (Counts{1}));
    }
}

TEST(CIMAGETAGDirectoriesTest, AnotherParseAddsToTheSlots) {
    OpenTag tag;
    const TagBytes file = completeFile(ByteOrder::Little, kTiffHeader);
    EXPECT_EQ(parse(tag, file).answer, kDone);
    EXPECT_EQ(parse(tag, file).answer, kDone);
    EXPECT_EQ(tag.counts(), (Counts{2, 2, 2, 2, 2, 2, 2, 2}));
}

TEST(CIMAGETAGDirectoriesTest, FilesOfBothByteOrdersInARowAreRead) {
    OpenTag tag;
    for (const ByteOrder order : {ByteOrder::Big, ByteOrder::Little, ByteOrder::Little, ByteOrder::Big}) {
        EXPECT_EQ(parse(tag, completeFile(order, kExifHeader)).answer, kDone);
        EXPECT_EQ(tag.counts(), (Counts{1, 1, 1, 1, 1, 1, 1, 1}));
        for (size_t slot = 0; slot < 8; ++slot)
            EXPECT_EQ(numbersOf(tag.record(slot)), (std::vector<uint64_t>{slot}));
        tag.CloseField();
    }
}

TEST(CIMAGETAGDirectoriesTest, PointersOfAnyTypeAreFollowed) {
    // As type 13, a directory, is no type of a value, it must not end the parse either.
    for (const ByteOrder order : kBothOrders) {
        for (const uint16_t type : Shorts{0, 4, 9, 13}) {
            OpenTag tag;
            const TagBytes file = TagBytes(order)
                                      .directory(8, {entryAt(kExifPointer, type, 1, 100),
                                                     entryAt(kGpsPointer, type, 40'000, 200)})
                                      .directory(100, {entryAt(kInteropPointer, type, 1, 300)})
                                      .directory(200, {shortEntry(30, 2)})
                                      .directory(300, interopWindow({shortEntry(1, 3)}));
            EXPECT_EQ(parse(tag, file).answer, kDone) << type;
            EXPECT_EQ(tag.counts(), (Counts{0, 0, 1, 1})) << type;
            EXPECT_EQ(tag.HasExifIFD(), 1) << type;
        }
        OpenTag tag;
        const TagBytes file = TagBytes(order)
                                  .directory(8, {shortEntry(kExifPointer, 100)})
                                  .directory(100, {shortEntry(33434, 1)});
        EXPECT_EQ(parse(tag, file).answer, kDone);
        EXPECT_EQ(tag.counts(), (Counts{0, 1}));
    }
}

}  // namespace fi::test

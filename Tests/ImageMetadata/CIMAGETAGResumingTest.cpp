// SPDX-License-Identifier: Apache-2.0
// What a parse asks for when the data end too early, and how it goes on with what the caller brings.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "ImageMetadata/TagParse.h"

namespace fi::test {

namespace {

using Numbers = std::vector<uint64_t>;

constexpr uint16_t kExifPointer = 0x8769;
constexpr uint16_t kGpsPointer = 0x8825;
constexpr uint16_t kInteropPointer = 0xA005;
constexpr uint32_t kFar = 30'000;

/// A file whose first directory stands far behind its head.
TagBytes farFile(ByteOrder order, uint32_t header, const std::vector<TagEntry>& entries,
                 uint32_t next = 0) {
    return TagBytes(order, header).first(kFar).directory(kFar, entries, next);
}

/// The head of a file: 64 bytes.
Outcome parseHead(OpenTag& tag, const TagBytes& file) {
    return parse(tag, file.bytes(), 64);
}

Outcome resumeAt(OpenTag& tag, const TagBytes& file, uint32_t offset, uint32_t length = kStep) {
    return resume(tag, file.bytes(), file.position(offset), length);
}

/// IFD0 with Exif and GPS, all in the first 1000 bytes; IFD1 with subdirectories far behind them.
TagBytes farSecond(ByteOrder order, uint32_t header = kTiffHeader) {
    return TagBytes(order, header)
        .directory(8, {shortEntry(256, 1), longEntry(kExifPointer, 100), longEntry(kGpsPointer, 200)}, kFar)
        .directory(100, {shortEntry(33434, 2)})
        .directory(200, {shortEntry(30, 3)})
        .directory(kFar, {shortEntry(256, 4), longEntry(kExifPointer, kFar + 100)})
        .directory(kFar + 100, {shortEntry(33434, 5), longEntry(kInteropPointer, kFar + 200)})
        .directory(kFar + 200, std::vector<TagEntry>(5, shortEntry(1, 6)));
}

}  // namespace

TEST(CIMAGETAGResumingTest, AFarFirstDirectoryIsReadInTheNextStep) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            OpenTag tag;
            const TagBytes file = farFile(order, header,
                                          {shortEntry(256, 1), entryAt(282, 5, 1, kFar + 50),
                                           longEntry(kExifPointer, kFar + 60)},
                                          kFar + 100)
                                      .numbers(kFar + 50, 4, {300, 1})
                                      .directory(kFar + 60, {shortEntry(33434, 2)})
                                      .directory(kFar + 100, {shortEntry(256, 3)});
            const Outcome head = parseHead(tag, file);
            EXPECT_EQ(head.answer, kMore);
            EXPECT_EQ(head.nextOffset, file.position(kFar));
            EXPECT_EQ(head.nextSize, kStep);
            EXPECT_EQ(resumeAt(tag, file, kFar).answer, kDone);
            EXPECT_EQ(tag.counts(), (Counts{2, 1, 0, 0, 1}));
            EXPECT_EQ(numbersOf(tag.record(0, 1)), (Numbers{(uint64_t{1} << 32U) | 300}));
            EXPECT_EQ(tag.HasExifIFD(), 1);
        }
    }
}

TEST(CIMAGETAGResumingTest, AFarSecondDirectoryKeepsTheFirstAlone) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            OpenTag tag;
            const TagBytes file = farSecond(order, header);
            const Outcome outcome = parse(tag, file.bytes(), 1000);
            EXPECT_EQ(outcome.answer, kMore);
            EXPECT_EQ(outcome.nextOffset, file.position(kFar));
            EXPECT_EQ(outcome.nextSize, kStep);
            EXPECT_EQ(tag.counts(), (Counts{1}));
            EXPECT_EQ(numbersOf(tag.record(0)), (Numbers{1}));
            EXPECT_EQ(tag.position().currentMainIFD, 1U);
            EXPECT_EQ(tag.HasExifIFD(), 1);
        }
    }
}

TEST(CIMAGETAGResumingTest, AFarSecondDirectoryIsReadInTheNextStep) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            OpenTag tag;
            const TagBytes file = farSecond(order, header);
            ASSERT_EQ(parse(tag, file.bytes(), 1000).answer, kMore);
            EXPECT_EQ(resumeAt(tag, file, kFar).answer, kDone);
            EXPECT_EQ(tag.counts(), (Counts{1, 0, 0, 0, 1, 1, 0, 5}));
            EXPECT_EQ(numbersOf(tag.record(0)), (Numbers{1}));
            EXPECT_EQ(numbersOf(tag.record(4)), (Numbers{4}));
            EXPECT_EQ(numbersOf(tag.record(5)), (Numbers{5}));
        }
    }
}

TEST(CIMAGETAGResumingTest, ASecondDirectoryWhoseEntriesAreCutOffIsAskedFor) {
    const TagBytes file = farSecond(ByteOrder::Big);
    for (uint32_t size = kFar - 2; size < kFar + 2 + 24 + 2; ++size) {
        OpenTag tag;
        const Outcome outcome = parse(tag, file.bytes(), size);
        EXPECT_EQ(outcome.answer, kMore) << size;
        EXPECT_EQ(outcome.nextOffset, kFar) << size;
        EXPECT_EQ(tag.counts(), (Counts{1})) << size;
    }
}

TEST(CIMAGETAGResumingTest, ASecondDirectoryOfHugeCountIsAskedFor) {
    for (const uint16_t count : Shorts{2731, 5461, 0xFFFF}) {
        OpenTag tag;
        const TagBytes file = TagBytes(ByteOrder::Little)
                                  .directory(8, {shortEntry(256, 1)}, 100)
                                  .directoryOf(100, count, {shortEntry(256, 2)})
                                  .length(900'000);
        const Outcome outcome = parse(tag, file);
        EXPECT_EQ(outcome.answer, kMore);
        EXPECT_EQ(outcome.nextOffset, 100U);
        EXPECT_EQ(tag.counts(), (Counts{1}));
    }
}

TEST(CIMAGETAGResumingTest, ASecondStepThatIsCutOffAgainKeepsTheFirstDirectory) {
    const TagBytes file = farSecond(ByteOrder::Little);
    // Cut in IFD1, behind it, in its Exif directory, behind that.
    for (const uint32_t length : {0U, 1U, 20U, 27U, 30U, 99U, 110U, 150U}) {
        OpenTag tag;
        ASSERT_EQ(parse(tag, file.bytes(), 1000).answer, kMore);
        for (int round = 0; round < 3; ++round) {
            const Outcome outcome = resumeAt(tag, file, kFar, length);
            EXPECT_EQ(outcome.answer, kMore) << length;
            EXPECT_EQ(outcome.nextOffset, kFar) << length;
            EXPECT_EQ(outcome.nextSize, kStep);
            EXPECT_EQ(tag.counts(), (Counts{1})) << length;
            EXPECT_EQ(tag.position().currentMainIFD, 1U);
        }
        EXPECT_EQ(resumeAt(tag, file, kFar).answer, kDone);
        EXPECT_EQ(tag.counts(), (Counts{1, 0, 0, 0, 1, 1, 0, 5}));
    }
}

TEST(CIMAGETAGResumingTest, AFarSubdirectoryStartsAllOver) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint16_t pointer : {kExifPointer, kGpsPointer, kInteropPointer}) {
            for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
                OpenTag tag;
                const TagBytes file =
                    TagBytes(order, header)
                        .first(50)
                        .directory(50, {shortEntry(256, 1), longEntry(pointer, kFar)}, 100)
                        .directory(100, {shortEntry(256, 2)})
                        .directory(kFar, std::vector<TagEntry>(5, shortEntry(1, 3)));
                const Outcome outcome = parse(tag, file.bytes(), 1000);
                EXPECT_EQ(outcome.answer, kMore);
                EXPECT_EQ(outcome.nextOffset, file.position(50));
                EXPECT_EQ(outcome.nextSize, kStep);
                EXPECT_EQ(tag.counts(), Counts{});
                EXPECT_EQ(tag.HasExifIFD(), pointer == kExifPointer ? 1 : 0);
                EXPECT_EQ(tag.position().currentMainIFD, 0U);
                EXPECT_EQ(resumeAt(tag, file, 50, 40'000).answer, kDone);
                EXPECT_EQ(tag.field(0).count, 1);
                EXPECT_EQ(tag.field(4).count, 1);
                EXPECT_EQ(tag.field(pointer == kExifPointer ? 1 : pointer == kGpsPointer ? 2 : 3).count, 5);
            }
        }
    }
}

TEST(CIMAGETAGResumingTest, AFarSubdirectoryCountsMoreThanAFarSecondDirectory) {
    OpenTag tag;
    TagBytes file = farSecond(ByteOrder::Little);
    file.directory(8, {shortEntry(256, 1), longEntry(kExifPointer, 5000), longEntry(kGpsPointer, 200)},
                   kFar);
    const Outcome outcome = parse(tag, file.bytes(), 1000);
    EXPECT_EQ(outcome.answer, kMore);
    EXPECT_EQ(outcome.nextOffset, 8U);
    EXPECT_EQ(tag.counts(), Counts{});
}

TEST(CIMAGETAGResumingTest, ASubdirectoryThatIsTooFarForAStepIsAskedForAgainAndAgain) {
    OpenTag tag;
    const TagBytes file = TagBytes(ByteOrder::Big)
                              .directory(8, {shortEntry(256, 1), longEntry(kExifPointer, kFar)})
                              .directory(kFar, {shortEntry(33434, 2)});
    Outcome outcome = parse(tag, file.bytes(), 1000);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(outcome.answer, kMore);
        EXPECT_EQ(outcome.nextOffset, 8U);
        EXPECT_EQ(tag.position().currentMainIFD, 0U);
        EXPECT_EQ(tag.HasExifIFD(), 1);
        outcome = resume(tag, file.bytes(), outcome.nextOffset, outcome.nextSize);
    }
    EXPECT_EQ(outcome.answer, kMore);
}

TEST(CIMAGETAGResumingTest, HugePointersAreFar) {
    for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
        for (const uint32_t offset : {0x80000000U, 0xFFFFFFF4U, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
            for (const uint16_t pointer : {kExifPointer, kGpsPointer, kInteropPointer}) {
                OpenTag tag;
                const TagBytes file = TagBytes(ByteOrder::Little, header)
                                          .directory(8, {shortEntry(256, 1), longEntry(pointer, offset)})
                                          .length(200);
                EXPECT_EQ(parse(tag, file).answer, kMore) << offset;
                EXPECT_EQ(tag.counts(), Counts{});
            }
            OpenTag tag;
            const TagBytes file =
                TagBytes(ByteOrder::Little, header).directory(8, {shortEntry(256, 1)}, offset).length(200);
            EXPECT_EQ(parse(tag, file).answer, kMore) << offset;
            EXPECT_EQ(tag.counts(), (Counts{1}));
        }
    }
}

TEST(CIMAGETAGResumingTest, ASecondDirectoryBeforeTheDataEndsTheChain) {
    for (const ByteOrder order : kBothOrders) {
        OpenTag tag;
        const TagBytes file =
            farFile(order, kTiffHeader, {shortEntry(256, 1)}, 16).directory(16, {shortEntry(256, 2)});
        ASSERT_EQ(parseHead(tag, file).answer, kMore);
        EXPECT_EQ(resumeAt(tag, file, kFar).answer, kDone);
        EXPECT_EQ(tag.counts(), (Counts{1}));
    }
}

TEST(CIMAGETAGResumingTest, ASubdirectoryBeforeTheDataEndsThemAll) {
    for (const ByteOrder order : kBothOrders) {
        OpenTag tag;
        const TagBytes file =
            farFile(order, kTiffHeader,
                    {shortEntry(256, 1), longEntry(kExifPointer, 16), longEntry(kGpsPointer, kFar + 100)},
                    kFar + 200)
                .directory(16, {shortEntry(33434, 2)})
                .directory(kFar + 100, {shortEntry(30, 3)})
                .directory(kFar + 200, {shortEntry(256, 4), longEntry(kGpsPointer, kFar + 100)});
        ASSERT_EQ(parseHead(tag, file).answer, kMore);
        EXPECT_EQ(resumeAt(tag, file, kFar).answer, kDone);
        EXPECT_EQ(tag.counts(), (Counts{1, 0, 0, 0, 1}));
        EXPECT_EQ(tag.HasExifIFD(), 1);
    }
}

TEST(CIMAGETAGResumingTest, SubdirectoriesInFrontOfOneBeforeTheDataAreRead) {
    OpenTag tag;
    const TagBytes file =
        farFile(ByteOrder::Little, kTiffHeader,
                {longEntry(kExifPointer, kFar + 100), longEntry(kGpsPointer, 16)})
            .directory(kFar + 100, {shortEntry(33434, 2), longEntry(kInteropPointer, kFar + 200)})
            .directory(kFar + 200, std::vector<TagEntry>(5, shortEntry(1, 3)));
    ASSERT_EQ(parseHead(tag, file).answer, kMore);
    EXPECT_EQ(resumeAt(tag, file, kFar).answer, kDone);
    EXPECT_EQ(tag.counts(), (Counts{0, 1}));
}

TEST(CIMAGETAGResumingTest, ValuesBeforeTheDataEndTheParse) {
    for (const ByteOrder order : kBothOrders) {
        OpenTag tag;
        const TagBytes file =
            farFile(order, kTiffHeader, {shortEntry(256, 1), entryAt(282, 5, 1, 16), shortEntry(257, 2)});
        ASSERT_EQ(parseHead(tag, file).answer, kMore);
        EXPECT_EQ(resumeAt(tag, file, kFar).answer, kBadData);
        EXPECT_EQ(tag.tags(0), (Tags{256}));
    }
}

TEST(CIMAGETAGResumingTest, ValuesEndWithTheDataThatTheyStandIn) {
    for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
        const TagBytes file =
            farFile(ByteOrder::Big, header, {shortEntry(256, 1), entryAt(270, 2, 50, kFar + 60)})
                .text(kFar + 60, std::string(60, 'x'));
        OpenTag whole;
        ASSERT_EQ(parseHead(whole, file).answer, kMore);
        EXPECT_EQ(resumeAt(whole, file, kFar, 110).answer, kDone);
        for (const uint32_t length : {109U, 80U, 60U, 45U}) {
            OpenTag tag;
            ASSERT_EQ(parseHead(tag, file).answer, kMore);
            EXPECT_EQ(resumeAt(tag, file, kFar, length).answer, kBadData) << length;
            EXPECT_EQ(tag.tags(0), (Tags{256}));
        }
    }
}

TEST(CIMAGETAGResumingTest, PositionsCountFromTheFilesStart) {
    // Behind a JFIF header, what follows a small directory has offsets below the position of the data.
    constexpr uint32_t kBehind = kFar + directorySize(1);
    static_assert(kBehind < kJfifExifHeader + kFar);
    for (const ByteOrder order : kBothOrders) {
        const auto resumed = [order](OpenTag& tag, const TagEntry& entry, uint32_t next) {
            const TagBytes file = farFile(order, kJfifExifHeader, {entry}, next)
                                      .directory(kBehind, {entryAt(271, 2, 4, 0x41424344)});
            EXPECT_EQ(parseHead(tag, file).answer, kMore);
            return resumeAt(tag, file, kFar).answer;
        };
        OpenTag value;
        EXPECT_EQ(resumed(value, entryAt(270, 2, 5, kBehind + 7), 0), kDone);
        // The end of the count and the start of the field of the entry there.
        EXPECT_EQ(bytesOf(value.record(0)),
                  order == ByteOrder::Big ? (Bytes{0, 0, 4, 'A', 'B'}) : (Bytes{0, 0, 0, 'D', 'C'}));
        OpenTag pointer;
        EXPECT_EQ(resumed(pointer, longEntry(kExifPointer, kBehind), 0), kDone);
        EXPECT_EQ(pointer.counts(), (Counts{0, 1}));
        OpenTag next;
        EXPECT_EQ(resumed(next, shortEntry(256, 1), kBehind), kDone);
        EXPECT_EQ(next.counts(), (Counts{1, 0, 0, 0, 1}));
    }
}

TEST(CIMAGETAGResumingTest, TheDirectoryOfAResumedParseMayBeCutOffAgain) {
    const TagBytes file = farFile(ByteOrder::Little, kExifHeader, {shortEntry(256, 1), shortEntry(257, 2)});
    for (uint32_t length = 0; length < 28; ++length) {
        OpenTag tag;
        ASSERT_EQ(parseHead(tag, file).answer, kMore);
        const Outcome outcome = resumeAt(tag, file, kFar, length);
        EXPECT_EQ(outcome.answer, kMore) << length;
        EXPECT_EQ(outcome.nextOffset, file.position(kFar));
        EXPECT_EQ(outcome.nextSize, kStep);
        EXPECT_EQ(tag.counts(), Counts{});
    }
    for (uint32_t length = 28; length <= 30; ++length) {
        OpenTag tag;
        ASSERT_EQ(parseHead(tag, file).answer, kMore);
        EXPECT_EQ(resumeAt(tag, file, kFar, length).answer, kDone) << length;
        EXPECT_EQ(tag.counts(), (Counts{2}));
    }
}

TEST(CIMAGETAGResumingTest, AnotherFileStartsAfresh) {
    OpenTag tag;
    ASSERT_EQ(parse(tag, farSecond(ByteOrder::Big).bytes(), 1000).answer, kMore);
    tag.CloseField();
    const TagBytes other = TagBytes(ByteOrder::Little)
                               .directory(8, {shortEntry(256, 1)}, 100)
                               .directory(100, {shortEntry(256, 2)});
    EXPECT_EQ(parse(tag, other).answer, kDone);
    EXPECT_EQ(tag.counts(), (Counts{1, 0, 0, 0, 1}));
}

TEST(CIMAGETAGResumingTest, TruncatedFilesAreAskedForAtMostTwiceAtAPlace) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            const Bytes whole = farSecond(order, header).bytes();
            for (size_t size = 0; size < whole.size(); size = size == 1200 ? kFar - 50 : size + 1) {
                const Bytes file(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
                OpenTag tag;
                Outcome outcome = parse(tag, file, 500);
                std::set<uint32_t> asked;
                while (outcome.answer == kMore && asked.insert(outcome.nextOffset).second)
                    outcome = resume(tag, file, outcome.nextOffset, outcome.nextSize);
                // The places of IFD0 and IFD1; a plain start of a JFIF file asks for itself.
                EXPECT_LE(asked.size(), 2U) << size;
                if (outcome.answer == kMore) {
                    EXPECT_TRUE(asked.contains(outcome.nextOffset)) << size;
                }
            }
        }
    }
}

TEST(CIMAGETAGResumingTest, TheBufferStartIsWhereTheDataInHandStand) {
    OpenTag tag;
    const TagBytes file =
        farFile(ByteOrder::Big, kExifHeader, {shortEntry(256, 1), entryAt(282, 5, 1, kFar + 50)})
            .numbers(kFar + 50, 4, {300, 1});
    ASSERT_EQ(parseHead(tag, file).answer, kMore);
    EXPECT_EQ(tag.position().bufferStart, 0U);
    ASSERT_EQ(resumeAt(tag, file, kFar).answer, kDone);
    EXPECT_EQ(tag.position().bufferStart, file.position(kFar));
    // The single steps go by it.
    const char* data = reinterpret_cast<const char*>(file.bytes().data()) + file.position(kFar);
    const auto length = static_cast<uint32_t>(file.bytes().size() - file.position(kFar));
    Outcome outcome;
    tag.CloseField();
    outcome.answer.result =
        tag.SetTiffInfo(data, length, &outcome.nextOffset, &outcome.nextSize, &outcome.answer.error);
    EXPECT_EQ(outcome.answer, kDone);
    EXPECT_EQ(tag.tags(0), (Tags{256, 282}));
    EXPECT_EQ(numbersOf(tag.record(0, 1)), (Numbers{(uint64_t{1} << 32U) | 300}));
    // Another file's first byte is its own.
    EXPECT_EQ(parse(tag, TagBytes(ByteOrder::Big).directory(8, {})).answer, kDone);
    EXPECT_EQ(tag.position().bufferStart, 0U);
}

}  // namespace fi::test

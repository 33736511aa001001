// SPDX-License-Identifier: Apache-2.0
// The header of a TIFF structure, and whether a directory's entries are in hand.
#include <gtest/gtest.h>

#include "ImageMetadata/TagParse.h"

namespace fi::test {

namespace {

const char* characters(const Bytes& bytes) {
    return reinterpret_cast<const char*>(bytes.data());
}

/// SearchFirstIFD() of a TIFF file.
Answer firstDirectory(OpenTag& tag, const Bytes& bytes) {
    Answer answer{-1, kUntouched};
    answer.result =
        tag.SearchFirstIFD(characters(bytes), static_cast<uint32_t>(bytes.size()), &answer.error);
    return answer;
}

Answer sizeTest(OpenTag& tag, const Bytes& directory, size_t remaining) {
    Answer answer{-1, kUntouched};
    answer.result =
        tag.CheckIFDSize(characters(directory), static_cast<uint32_t>(remaining), &answer.error);
    return answer;
}

constexpr Answer kTooShort = {0, kTagMoreNeeded};

/// `count` entries, orientation each.
std::vector<TagEntry> manyEntries(size_t count) {
    return std::vector<TagEntry>(count, shortEntry(274, 6));
}

}  // namespace

TEST(CIMAGETAGHeaderTest, TheHeaderGivesByteOrderAndDirectory) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            OpenTag tag;
            tag.position().headerPosition = header;
            const TagBytes file = TagBytes(order, header).first(40).directory(40, {shortEntry(274, 6)});
            EXPECT_EQ(firstDirectory(tag, file.bytes()), kDone);
            EXPECT_EQ(tag.position().nextIFDPosition, header + 40);
            EXPECT_EQ(tag.position().bigEndian, order == ByteOrder::Big ? 1 : 0);
        }
    }
}

TEST(CIMAGETAGHeaderTest, TheByteOrderIsOfThisHeader) {
    OpenTag tag;
    EXPECT_EQ(tag.position().bigEndian, 0);
    for (const ByteOrder order : {ByteOrder::Big, ByteOrder::Little, ByteOrder::Big}) {
        EXPECT_EQ(firstDirectory(tag, TagBytes(order).directory(8, {}).bytes()), kDone);
        EXPECT_EQ(tag.position().bigEndian, order == ByteOrder::Big ? 1 : 0);
    }
}

TEST(CIMAGETAGHeaderTest, TheNumberBehindTheMarkIsNotLookedAt) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint64_t magic : {0U, 43U, 0x2A00U, 0xFFFFU}) {
            OpenTag tag;
            const TagBytes file = TagBytes(order).numbers(2, 2, {magic}).directory(8, {shortEntry(274, 6)});
            EXPECT_EQ(parse(tag, file).answer, kDone) << magic;
            EXPECT_EQ(tag.counts(), (Counts{1})) << magic;
        }
    }
}

TEST(CIMAGETAGHeaderTest, AHeaderWithoutAMarkIsNotRecognised) {
    for (const char* mark : {"IM", "MI", "ii", "XX", "I*"}) {
        for (const uint32_t header : {kExifHeader, kJfifExifHeader}) {
            OpenTag tag;
            const TagBytes file =
                TagBytes(ByteOrder::Little, header).directory(8, {shortEntry(274, 6)}).text(0, mark);
            EXPECT_EQ(parse(tag, file).answer, kNotRecognised) << mark;
            EXPECT_EQ(tag.counts(), Counts{});
        }
    }
    OpenTag tag;
    EXPECT_EQ(firstDirectory(tag, TagBytes(ByteOrder::Big).directory(8, {}).text(0, "MI").bytes()),
              kNotRecognised);
}

TEST(CIMAGETAGHeaderTest, AHeaderThatIsNotAllThereIsNotRecognised) {
    for (const uint32_t header : {kExifHeader, kJfifExifHeader}) {
        const Bytes file = TagBytes(ByteOrder::Little, header).directory(8, {}).bytes();
        for (uint32_t size = header; size < header + 8; ++size) {
            OpenTag tag;
            EXPECT_EQ(parse(tag, file, size).answer, kNotRecognised) << size;
        }
    }
}

TEST(CIMAGETAGHeaderTest, TwelveBytesMayHoldAnEmptyDirectory) {
    for (const ByteOrder order : kBothOrders) {
        const Bytes file = TagBytes(order).length(12).bytes();
        ASSERT_EQ(file.size(), 12U);
        OpenTag tag;
        const Outcome outcome = parse(tag, file);
        EXPECT_EQ(outcome.answer, kDone);
        EXPECT_EQ(outcome.format, kImageTagFormatTIFF);
        EXPECT_EQ(tag.counts(), Counts{});
    }
}

TEST(CIMAGETAGHeaderTest, ADirectoryWhoseCountIsNotInTheDataNeedsMore) {
    constexpr uint32_t kSize = 64;
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t offset : {kSize - 3, kSize - 2, kSize - 1, kSize, kSize + 1, 0x7FFFFFFFU,
                                      0x80000000U, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
            OpenTag tag;
            EXPECT_EQ(firstDirectory(tag, TagBytes(order).first(offset).length(kSize).bytes()), kTooShort)
                << offset;
            EXPECT_EQ(tag.position().nextIFDPosition, offset);
        }
        OpenTag tag;
        EXPECT_EQ(firstDirectory(tag, TagBytes(order).first(kSize - 4).length(kSize).bytes()), kDone);
    }
}

TEST(CIMAGETAGHeaderTest, HugeOffsetsBehindAHeaderNeedMoreToo) {
    for (const uint32_t offset : {0xFFFFFFF4U, 0xFFFFFFFCU, 0xFFFFFFFFU}) {
        OpenTag tag;
        const TagBytes file = TagBytes(ByteOrder::Little, kExifHeader).first(offset).length(64);
        const Outcome outcome = parse(tag, file);
        EXPECT_EQ(outcome.answer, kMore) << offset;
        EXPECT_EQ(outcome.nextOffset, 0xFFFFFFFFU) << "not at the file's start";
        EXPECT_EQ(tag.counts(), Counts{});
    }
}

TEST(CIMAGETAGHeaderTest, TheFirstDirectoryNeedsItsEntriesAndHalfAnOffset) {
    for (const ByteOrder order : kBothOrders) {
        for (const size_t entries : {1U, 2U, 100U}) {
            const TagBytes file = TagBytes(order).directory(8, manyEntries(entries));
            const size_t needed = 8 + 12 * entries + 4;
            Bytes bytes = file.bytes();
            bytes.resize(needed);
            OpenTag tag;
            EXPECT_EQ(firstDirectory(tag, bytes), kDone) << entries;
            bytes.resize(needed - 1);
            EXPECT_EQ(firstDirectory(tag, bytes), kTooShort) << entries;
        }
    }
}

TEST(CIMAGETAGHeaderTest, DirectoriesOfUpTo2730EntriesAreParsed) {
    for (const ByteOrder order : kBothOrders) {
        OpenTag tag;
        EXPECT_EQ(parse(tag, TagBytes(order).directory(8, manyEntries(2730))).answer, kDone);
        EXPECT_EQ(tag.counts(), (Counts{2730}));
    }
}

TEST(CIMAGETAGHeaderTest, DirectoriesOfMoreThan2730EntriesAreTooLargeForAnyData) {
    // Among them those whose size modulo 2^16 is small or positive.
    for (const uint16_t count :
         Shorts{2731, 4096, 5461, 5462, 8192, 10923, 21845, 32767, 32768, 43691, 0xD8FF, 0xFFFF}) {
        for (const ByteOrder order : kBothOrders) {
            OpenTag tag;
            const TagBytes file = TagBytes(order).directory(8, manyEntries(count));
            const Outcome outcome = parse(tag, file);
            EXPECT_EQ(outcome.answer, kMore) << count;
            EXPECT_EQ(outcome.nextOffset, 8U) << count;
            EXPECT_EQ(tag.counts(), Counts{}) << count;
            EXPECT_EQ(firstDirectory(tag, file.bytes()), kTooShort) << count;
            EXPECT_EQ(
                sizeTest(tag, Bytes(file.bytes().begin() + 8, file.bytes().end()), file.bytes().size() - 8),
                kTooShort)
                << count;
        }
    }
}

TEST(CIMAGETAGHeaderTest, AFirstDirectoryThatIsNotInHandIsAskedFor) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            OpenTag tag;
            const Outcome outcome = parse(tag, TagBytes(order, header).first(70'000).length(64));
            EXPECT_EQ(outcome.answer, kMore);
            EXPECT_EQ(outcome.nextOffset, header + 70'000);
            EXPECT_EQ(outcome.nextSize, kStep);
        }
    }
}

TEST(CIMAGETAGHeaderTest, TheSizeTestAlone) {
    for (const ByteOrder order : kBothOrders) {
        OpenTag tag;
        tag.position().bigEndian = order == ByteOrder::Big ? 1 : 0;
        for (const uint32_t entries : {0U, 1U, 3U, 2730U}) {
            Bytes directory;
            appendNumber(directory, entries, 2, order);
            directory.resize(directorySize(entries));
            const size_t needed = 12 * entries + 4;
            EXPECT_EQ(sizeTest(tag, directory, needed), kDone) << entries;
            EXPECT_EQ(sizeTest(tag, directory, needed + 1), kDone) << entries;
            EXPECT_EQ(sizeTest(tag, directory, needed - 1), kTooShort) << entries;
        }
    }
}

TEST(CIMAGETAGHeaderTest, TheSizeTestReadsNoCountThatIsNotThere) {
    OpenTag tag;
    for (const size_t size : {0U, 1U})
        EXPECT_EQ(sizeTest(tag, Bytes(size), size), kTooShort);
}

TEST(CIMAGETAGHeaderTest, TheChainEndsWhenTheOffsetOfTheNextDirectoryIsCutOff) {
    for (const ByteOrder order : kBothOrders) {
        const TagBytes file =
            TagBytes(order).directory(8, manyEntries(3), 100).directory(100, manyEntries(2));
        OpenTag whole;
        ASSERT_EQ(parse(whole, file).answer, kDone);
        ASSERT_EQ(whole.counts(), (Counts{3, 0, 0, 0, 2}));
        // The missing bytes stand right behind the data, where nobody may read them.
        for (const uint32_t missing : {1U, 2U}) {
            OpenTag tag;
            EXPECT_EQ(parse(tag, file.bytes(), 8 + directorySize(3) - missing).answer, kDone) << missing;
            EXPECT_EQ(tag.counts(), (Counts{3})) << missing;
            const Bytes exact(file.bytes().begin(), file.bytes().begin() + 8 + directorySize(3) - missing);
            OpenTag again;
            EXPECT_EQ(parse(again, exact).answer, kDone) << missing;
            EXPECT_EQ(again.counts(), (Counts{3})) << missing;
        }
    }
}

}  // namespace fi::test

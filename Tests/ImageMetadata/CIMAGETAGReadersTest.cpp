// SPDX-License-Identifier: Apache-2.0
// Parsing a file by its URL, and a caller's data with a reader that brings what is not in hand.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "ImageMetadata/TagParse.h"
#include "Support/Privileges.h"
#include "Support/ScopedFaults.h"

namespace fi::test {

namespace {

using Numbers = std::vector<uint64_t>;

constexpr uint16_t kExifPointer = 0x8769;
constexpr uint32_t kFar = 30'000;

size_t openDescriptors() {
    const auto listing = std::filesystem::directory_iterator("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(listing), end(listing)));
}

/// IFD0 in the head; its value, its Exif directory and IFD1 where the test says.
TagBytes splitFile(ByteOrder order, uint32_t header, uint32_t value, uint32_t exif, uint32_t second) {
    return TagBytes(order, header)
        .directory(8,
                   {shortEntry(256, 1), entryAt(270, 2, 5, value), entryAt(282, 5, 1, value + 8),
                    longEntry(kExifPointer, exif)},
                   second)
        .text(value, "text")
        .numbers(value + 8, 4, {300, 1})
        .directory(exif, {shortEntry(33434, 2)})
        .directory(second, {shortEntry(256, 3)});
}

void expectValues(const OpenTag& tag) {
    EXPECT_EQ(tag.tags(0), (Tags{256, 270, 282}));
    EXPECT_STREQ(tag.record(0, 1).value, "text");
    EXPECT_EQ(numbersOf(tag.record(0, 2)), (Numbers{(uint64_t{1} << 32U) | 300}));
}

}  // namespace

TEST(CIMAGETAGReadersTest, AFileIsParsedByItsURL) {
    const TemporaryFolder folder;
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            const TagBytes file = splitFile(order, header, kFar, 200, 300);
            const std::string path = folder.write("photo", file.bytes());
            const size_t before = openDescriptors();
            OpenTag tag;
            const Outcome outcome = parseFile(tag, path);
            EXPECT_EQ(outcome.answer, kDone);
            EXPECT_EQ(outcome.format, header == kTiffHeader ? 3 : header == kExifHeader ? 2 : 1);
            EXPECT_EQ(tag.counts(), (Counts{3, 1, 0, 0, 1}));
            expectValues(tag);
            EXPECT_EQ(openDescriptors(), before);
            EXPECT_EQ(tag.ownReader(), nullptr);
            EXPECT_EQ(tag.reader(), nullptr);
            EXPECT_EQ(readFile(path), std::string(file.bytes().begin(), file.bytes().end()));
        }
    }
}

TEST(CIMAGETAGReadersTest, AFileThatIsNoImageIsClosedToo) {
    const TemporaryFolder folder;
    const size_t before = openDescriptors();
    OpenTag tag;
    EXPECT_EQ(parseFile(tag, folder.write("text", "this is no image at all")).answer, kNotAnImage);
    EXPECT_EQ(parseFile(tag, folder.write("short", "II*")).answer, kNotRecognised);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(tag.ownReader(), nullptr);
    EXPECT_EQ(tag.reader(), nullptr);
}

TEST(CIMAGETAGReadersTest, AMissingFileIsCreatedEmpty) {
    const TemporaryFolder folder;
    OpenTag tag;
    EXPECT_EQ(parseFile(tag, folder.at("missing")).answer, kNotRecognised);
    EXPECT_TRUE(std::filesystem::is_empty(folder.at("missing")));
}

TEST(CIMAGETAGReadersTest, AFileThatCannotBeOpenedIsToldApart) {
    OpenTag tag;
    EXPECT_EQ(parseFile(tag, "/" + std::string(3000, 'x')).answer, (Answer{0, kTagOpenFailed}));
    const Ref<const CFURL> none = CFURL::createFromString("https://example.org/photo.jpg");
    Outcome outcome;
    outcome.answer.result = tag.CreateField(none.get(), nullptr, 0, &outcome.format, &outcome.nextOffset,
                                            &outcome.nextSize, &outcome.answer.error);
    EXPECT_EQ(outcome.answer, (Answer{0, kTagOpenFailed}));
    EXPECT_EQ(tag.ownReader(), nullptr);
    EXPECT_EQ(tag.reader(), nullptr);
}

TEST(CIMAGETAGReadersTest, ABlockThatCannotBeReadIsMemoryThatIsMissing) {
    const TemporaryFolder folder;
    const size_t before = openDescriptors();
    OpenTag tag;
    // A folder has a size, and cannot be opened for writing.
    EXPECT_EQ(parseFile(tag, folder.path()).answer, kNoMemory);
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    const std::string path =
        folder.write("locked", splitFile(ByteOrder::Little, kTiffHeader, 100, 200, 300).bytes());
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    {
        const OrdinaryUser user;
        EXPECT_EQ(parseFile(tag, path).answer, kNoMemory);
    }
    EXPECT_EQ(tag.counts(), Counts{});
    EXPECT_EQ(tag.ownReader(), nullptr);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(CIMAGETAGReadersTest, EveryRequestForMemoryOfAFileMayFail) {
    const TemporaryFolder folder;
    const std::string path =
        folder.write("photo", splitFile(ByteOrder::Big, kTiffHeader, 100, 200, 300).bytes());
    const size_t before = openDescriptors();
    std::vector<uint32_t> errors;
    for (int nth = 0;; ++nth) {
        ASSERT_LT(nth, 100);
        const OneRefusal refusal(nth);
        OpenTag tag;
        const Answer answer = parseFile(tag, path).answer;
        if (!OneRefusal::happened()) {
            EXPECT_EQ(answer, kDone);
            break;
        }
        EXPECT_EQ(answer.result, 0) << nth;
        errors.push_back(answer.error);
        EXPECT_EQ(tag.ownReader(), nullptr);
        EXPECT_EQ(openDescriptors(), before);
    }
    // The reader's block first, which is an open that failed; then the parse's own requests.
    ASSERT_GT(errors.size(), 6U);
    EXPECT_EQ(errors[0], kTagOpenFailed);
    for (size_t i = 1; i < errors.size(); ++i)
        EXPECT_EQ(errors[i], kTagNoMemory) << i;
}

TEST(CIMAGETAGReadersTest, ARentedReaderBringsValues) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            const TagBytes file = splitFile(order, header, kFar, 200, 300);
            Card card(file.bytes());
            OpenTag tag;
            tag.RentMemCard(&card);
            EXPECT_EQ(parse(tag, file.bytes(), 1000).answer, kDone);
            EXPECT_EQ(tag.counts(), (Counts{3, 1, 0, 0, 1}));
            expectValues(tag);
        }
    }
}

TEST(CIMAGETAGReadersTest, AValueThatIsPartlyInHandIsBrought) {
    const TagBytes file = splitFile(ByteOrder::Big, kTiffHeader, 990, 200, 300);
    Card card(file.bytes());
    for (const size_t size : {990U, 992U, 995U, 1000U, 1005U, 1006U}) {
        OpenTag tag;
        tag.RentMemCard(&card);
        EXPECT_EQ(parse(tag, file.bytes(), size).answer, kDone) << size;
        expectValues(tag);
    }
}

TEST(CIMAGETAGReadersTest, ValuesOutsideOfTheFileAreBadData) {
    for (const uint32_t value : {995U, 1000U, 1024U, 5000U, 0x7FFFFFFFU, 0xFFFFFFF0U}) {
        Bytes file = TagBytes(ByteOrder::Little)
                         .directory(8, {shortEntry(256, 1), entryAt(270, 2, 6, value)})
                         .length(1000)
                         .bytes();
        Card card(file);
        OpenTag tag;
        tag.RentMemCard(&card);
        EXPECT_EQ(parse(tag, file, 500).answer, kBadData) << value;
        EXPECT_EQ(tag.tags(0), (Tags{256}));
    }
}

TEST(CIMAGETAGReadersTest, TheRentedReaderStaysTheCallers) {
    const TagBytes file = splitFile(ByteOrder::Little, kTiffHeader, kFar, 200, 300);
    Card card(file.bytes());
    {
        OpenTag tag;
        tag.RentMemCard(&card);
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(parse(tag, file.bytes(), 1000).answer, kDone);
            EXPECT_EQ(tag.reader(), &card);
            EXPECT_EQ(tag.ownReader(), nullptr);
        }
        tag.CloseField();
    }
    char text[5] = {};
    uint32_t got = 0;
    uint32_t error = kUntouched;
    EXPECT_EQ(card.GetDataBlockSpecification(text, kFar, 5, &got, &error), 1);
    EXPECT_STREQ(text, "text");
    OpenTag tag;
    tag.RentMemCard(&card);
    tag.RentMemCard(nullptr);
    EXPECT_EQ(parse(tag, file.bytes(), 1000).answer, kBadData);
}

TEST(CIMAGETAGReadersTest, WhatIsInHandIsNotFetched) {
    // The reader's file has nothing of the photo in it.
    Card card(Bytes(1000, 'x'));
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            OpenTag tag;
            tag.RentMemCard(&card);
            // Values and Exif directory stand before IFD0.
            const TagBytes file = splitFile(order, header, 150, 180, 400)
                                      .first(300)
                                      .directory(300,
                                                 {shortEntry(256, 1), entryAt(270, 2, 5, 150),
                                                  entryAt(282, 5, 1, 158), longEntry(kExifPointer, 180)},
                                                 400);
            EXPECT_EQ(parse(tag, file).answer, kDone);
            EXPECT_EQ(tag.counts(), (Counts{3, 1, 0, 0, 1}));
            expectValues(tag);
        }
    }
}

TEST(CIMAGETAGReadersTest, DataMayBeLongerThanTheReadersFile) {
    const TagBytes file = splitFile(ByteOrder::Little, kTiffHeader, kFar, 200, 300);
    for (const size_t size : {0U, 1U, 100U}) {
        Card card(Bytes(size, 'x'));
        OpenTag tag;
        tag.RentMemCard(&card);
        EXPECT_EQ(parse(tag, file).answer, kDone) << size;
        expectValues(tag);
    }
}

TEST(CIMAGETAGReadersTest, AFarFirstDirectoryIsFetched) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            const TagBytes file =
                TagBytes(order, header)
                    .first(kFar)
                    .directory(kFar, {shortEntry(256, 1), entryAt(270, 2, 5, kFar + 100)}, kFar + 50)
                    .directory(kFar + 50, {shortEntry(256, 2)})
                    .text(kFar + 100, "text")
                    .length(kFar + 105);
            Card card(file.bytes());
            OpenTag tag;
            tag.RentMemCard(&card);
            EXPECT_EQ(parse(tag, file.bytes(), 64).answer, kDone);
            EXPECT_EQ(tag.counts(), (Counts{2, 0, 0, 0, 1}));
            EXPECT_STREQ(tag.record(0, 1).value, "text");
            EXPECT_EQ(tag.position().bufferStart, file.position(kFar));
        }
    }
}

TEST(CIMAGETAGReadersTest, ValuesBeforeAFetchedDirectoryAreBadData) {
    const TagBytes file = TagBytes(ByteOrder::Little)
                              .first(kFar)
                              .directory(kFar, {shortEntry(256, 1), entryAt(270, 2, 5, 16)})
                              .text(16, "text");
    Card card(file.bytes());
    OpenTag tag;
    tag.RentMemCard(&card);
    EXPECT_EQ(parse(tag, file.bytes(), 64).answer, kBadData);
    EXPECT_EQ(tag.tags(0), (Tags{256}));
}

TEST(CIMAGETAGReadersTest, AFirstDirectoryThatTheFileDoesNotHaveCannotBeFetched) {
    for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
        for (const uint32_t at : {999U, 1000U, 1100U, 5000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
            const TagBytes file = TagBytes(ByteOrder::Little, header).first(at).length(1000);
            Card card(file.bytes());
            OpenTag tag;
            tag.RentMemCard(&card);
            EXPECT_EQ(parse(tag, file.bytes(), 64).answer, kNotRecognised) << at;
            EXPECT_EQ(parse(tag, file).answer, kNotRecognised) << at;
            EXPECT_EQ(tag.counts(), Counts{});
        }
    }
}

TEST(CIMAGETAGReadersTest, AFarSubdirectoryIsFetchedWithItsMainDirectory) {
    for (const ByteOrder order : kBothOrders) {
        const TagBytes file = splitFile(order, kTiffHeader, 100, kFar, 300);
        Card card(file.bytes());
        OpenTag tag;
        tag.RentMemCard(&card);
        EXPECT_EQ(parse(tag, file.bytes(), 1000).answer, kDone);
        EXPECT_EQ(tag.counts(), (Counts{3, 1, 0, 0, 1}));
        expectValues(tag);
    }
}

TEST(CIMAGETAGReadersTest, AFarSecondDirectoryIsFetchedAndCostsTheSubdirectories) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            const TagBytes file = splitFile(order, header, 100, 200, kFar);
            Card card(file.bytes());
            OpenTag tag;
            tag.RentMemCard(&card);
            EXPECT_EQ(parse(tag, file.bytes(), 1000).answer, kDone);
            EXPECT_EQ(tag.counts(), (Counts{3, 0, 0, 0, 1}));
            expectValues(tag);
            EXPECT_EQ(numbersOf(tag.record(4)), (Numbers{3}));
            EXPECT_EQ(tag.HasExifIFD(), 1);
        }
    }
}

TEST(CIMAGETAGReadersTest, ASecondDirectoryThatTheFileDoesNotHaveCannotBeFetched) {
    const TagBytes whole = splitFile(ByteOrder::Little, kTiffHeader, 100, 200, kFar);
    for (const uint32_t length : {1000U, kFar - 1, kFar, kFar + 1, kFar + 15}) {
        TagBytes file = whole;
        file.length(length);
        Card card(file.bytes());
        OpenTag tag;
        tag.RentMemCard(&card);
        EXPECT_EQ(parse(tag, file.bytes(), 1000).answer, kNotRecognised) << length;
        EXPECT_EQ(tag.counts(), (Counts{3})) << length;
        const TemporaryFolder folder;
        OpenTag byURL;
        EXPECT_EQ(parseFile(byURL, folder.write("photo", file.bytes())).answer, kNotRecognised) << length;
        EXPECT_EQ(byURL.counts(), (Counts{3})) << length;
    }
}

TEST(CIMAGETAGReadersTest, APlainJFIFFileIsNotFetchedOn) {
    Bytes file = jpegFile({jpegSegment(0xE0, jfifContents())});
    file.resize(30'000);
    Card card(file);
    OpenTag tag;
    tag.RentMemCard(&card);
    Outcome outcome = parse(tag, file, 1000);
    EXPECT_EQ(outcome.answer, kMore);
    EXPECT_EQ(outcome.nextOffset, 0U);
    EXPECT_EQ(outcome.nextSize, kStep);
    EXPECT_EQ(tag.counts(), Counts{});
    const TemporaryFolder folder;
    OpenTag byURL;
    outcome = parseFile(byURL, folder.write("photo", file));
    EXPECT_EQ(outcome.answer, kMore);
    EXPECT_EQ(outcome.nextOffset, 0U);
}

TEST(CIMAGETAGReadersTest, AResumedParseLeavesTheNextStepToItsCaller) {
    const TagBytes file = splitFile(ByteOrder::Little, kTiffHeader, 100, kFar, 300);
    Card card(file.bytes());
    OpenTag tag;
    ASSERT_EQ(parse(tag, file.bytes(), 1000).answer, kMore);
    tag.RentMemCard(&card);
    const Outcome outcome = resume(tag, file.bytes(), 8, 1000);
    EXPECT_EQ(outcome.answer, kMore);
    EXPECT_EQ(outcome.nextOffset, 8U);
}

TEST(CIMAGETAGReadersTest, WithARentedReaderMemoryIsAskedForFirst) {
    const Bytes file = TagBytes(ByteOrder::Little).length(1000).bytes();
    Card card(file);
    OpenTag tag;
    EXPECT_EQ(parse(tag, file).answer, kDone);
    tag.RentMemCard(&card);
    EXPECT_EQ(parse(tag, file).answer, kDone);
    const ScopedFaults faults{Fault::Allocation};
    EXPECT_EQ(parse(tag, file).answer, kNoMemory);
}

TEST(CIMAGETAGReadersTest, TruncatedFilesEndWithAReader) {
    const TemporaryFolder folder;
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            const Bytes whole = splitFile(order, header, 120, 150, 200).bytes();
            const std::string path = folder.write("photo", whole);
            for (uint32_t size = static_cast<uint32_t>(whole.size()); size >= header + 8; --size) {
                ASSERT_EQ(truncate(path.c_str(), size), 0);
                const uint32_t offset = size - header;
                // IFD0, values, Exif, IFD1; the last two bytes of a directory may be missing.
                const bool value = offset >= 60 && offset < 136;
                const bool complete = offset >= 216;
                const Answer expected = complete ? kDone : value ? kBadData : kNotRecognised;
                Card card(path);
                OpenTag tag;
                tag.RentMemCard(&card);
                EXPECT_EQ(parse(tag, whole, std::min(size, 100U)).answer, expected) << "size " << size;
                OpenTag byURL;
                EXPECT_EQ(parseFile(byURL, path).answer, expected) << "size " << size;
            }
        }
    }
}

TEST(CIMAGETAGReadersTest, AFileByItsURLHasAReaderOfItsOwn) {
    const TemporaryFolder folder;
    const TagBytes file = splitFile(ByteOrder::Little, kTiffHeader, kFar, 200, kFar + 100);
    // The rented reader's file has nothing of the photo in it.
    Card card(Bytes(100, 'x'));
    OpenTag tag;
    tag.RentMemCard(&card);
    EXPECT_EQ(parseFile(tag, folder.write("photo", file.bytes())).answer, kDone);
    EXPECT_EQ(tag.counts(), (Counts{3, 1, 0, 0, 1}));
    expectValues(tag);
    EXPECT_EQ(tag.ownReader(), nullptr);
    EXPECT_EQ(tag.reader(), &card);
    uint32_t size = kUntouched;
    uint32_t error = kUntouched;
    EXPECT_EQ(card.GetMaxSizeofDataBlock(&size, &error), 1) << "it stays open";
    EXPECT_EQ(size, 100U);
}

TEST(CIMAGETAGReadersTest, AReaderWithoutAFileIsMemoryThatIsMissing) {
    const TagBytes file = splitFile(ByteOrder::Little, kTiffHeader, 100, 200, 300);
    CMEMCARDFILE closed;
    OpenTag tag;
    tag.RentMemCard(&closed);
    EXPECT_EQ(parse(tag, file).answer, kNoMemory);
    EXPECT_EQ(tag.counts(), Counts{});
}

TEST(CIMAGETAGReadersTest, HugeOffsetsBehindAHeaderDoNotWrap) {
    // Modulo 2^32 they would lead to the file's first bytes, which a reader can bring.
    for (const uint32_t header : {kExifHeader, kJfifExifHeader}) {
        for (uint32_t position = 0; position < header; ++position) {
            const uint32_t offset = position - header;
            const TagBytes file = TagBytes(ByteOrder::Big, header)
                                      .directory(8, {shortEntry(256, 1), entryAt(282, 5, 1, offset)})
                                      .length(200);
            Card card(file.bytes());
            OpenTag tag;
            tag.RentMemCard(&card);
            EXPECT_EQ(parse(tag, file).answer, kBadData) << header << " " << position;
            EXPECT_EQ(tag.tags(0), (Tags{256}));
            OpenTag first;
            first.RentMemCard(&card);
            EXPECT_EQ(parse(first, TagBytes(file).first(offset)).answer, kNotRecognised) << position;
        }
    }
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Which kind of file some bytes begin, and where its header stands.
#include <gtest/gtest.h>

#include "ImageMetadata/TagParse.h"

namespace fi::test {

namespace {

using namespace std::string_literals;

struct FormatAnswer {
    Answer answer{-1, kUntouched};
    int16_t format = -1;
};

FormatAnswer formatOf(const Bytes& bytes, size_t size) {
    CIMAGETAG tag;
    FormatAnswer given;
    given.answer.result = tag.CheckFormat(reinterpret_cast<const char*>(bytes.data()),
                                          static_cast<uint32_t>(size), &given.format, &given.answer.error);
    return given;
}

FormatAnswer formatOf(const Bytes& bytes) {
    return formatOf(bytes, bytes.size());
}

Bytes bytesOfText(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

void expectFormat(const Bytes& bytes, int16_t format) {
    const FormatAnswer given = formatOf(bytes);
    EXPECT_EQ(given.answer, kDone);
    EXPECT_EQ(given.format, format);
}

Answer exifSearch(const Bytes& bytes, size_t size) {
    CIMAGETAG tag;
    Answer answer{-1, kUntouched};
    answer.result = tag.SearchExifMagicInAPP1(reinterpret_cast<const char*>(bytes.data()),
                                              static_cast<uint32_t>(size), &answer.error);
    return answer;
}

Answer exifSearch(const Bytes& bytes) {
    return exifSearch(bytes, bytes.size());
}

/// A directory with one entry and nothing else.
TagBytes smallFile(ByteOrder order, uint32_t header) {
    return TagBytes(order, header).directory(8, {shortEntry(274, 6)});
}

const Bytes kJfif = jpegSegment(0xE0, jfifContents());
const Bytes kExif = jpegSegment(0xE1, "Exif\0\0MM\0*"s);
const Bytes kComment = jpegSegment(0xFE, "a comment");

}  // namespace

TEST(CIMAGETAGFormatTest, ElevenBytesAreTooFewForAFormat) {
    for (const std::string& start : {"MM\0*"s, "II*\0"s, "\xFF\xD8\xFF\xE0\0\20JFIF"s, "GIF89a"s}) {
        Bytes bytes = bytesOfText(start);
        bytes.resize(12);
        EXPECT_EQ(formatOf(bytes, 11).answer, kNotRecognised) << start;
        EXPECT_EQ(formatOf(bytes, 0).answer, kNotRecognised) << start;
    }
}

TEST(CIMAGETAGFormatTest, TwelveBytesWithAByteOrderMarkAreTIFF) {
    expectFormat(bytesOfText("MM\0*\0\0\0\10\0\0\0\0"s), kImageTagFormatTIFF);
    expectFormat(bytesOfText("II*\0\10\0\0\0\0\0\0\0"s), kImageTagFormatTIFF);
}

TEST(CIMAGETAGFormatTest, MixedByteOrderMarksAreNoImage) {
    EXPECT_EQ(formatOf(bytesOfText("MI\0*\0\0\0\10\0\0\0\0"s)).answer, kNotAnImage);
    EXPECT_EQ(formatOf(bytesOfText("IM\0*\0\0\0\10\0\0\0\0"s)).answer, kNotAnImage);
}

TEST(CIMAGETAGFormatTest, OtherBytesAreNoImage) {
    for (const std::string& start : {"GIF89a"s, "\xFF\xD9\xFF\xE0\0\20JFIF"s, "\xFE\xD8\xFF\xE0\0\20JFIF"s,
                                     "\xD8\xFF\xFF\xE0\0\20JFIF"s, "\0\0"s}) {
        Bytes bytes = bytesOfText(start);
        bytes.resize(40);
        EXPECT_EQ(formatOf(bytes).answer, kNotAnImage) << start;
    }
}

TEST(CIMAGETAGFormatTest, AJPEGWithoutApplicationSegmentsIsJFIF) {
    expectFormat(jpegFile({kComment, jpegSegment(0xC0, frameContents(8, 16))}), kImageTagFormatJFIF);
    expectFormat(jpegFile({jpegSegment(0xE2, "ICC_PROFILE"), kComment}), kImageTagFormatJFIF);
}

TEST(CIMAGETAGFormatTest, TheFirstSegmentsNameTellsTheFormat) {
    expectFormat(jpegFile({kJfif}), kImageTagFormatJFIF);
    expectFormat(jpegFile({kExif}), kImageTagFormatExif);
    expectFormat(jpegFile({jpegSegment(0xE0, "Exif\0\0........"s)}), kImageTagFormatExif);
    expectFormat(jpegFile({kJfif, kExif}), kImageTagFormatJFIF);
    expectFormat(jpegFile({kExif, kJfif}), kImageTagFormatExif);
}

TEST(CIMAGETAGFormatTest, AFirstSegmentOfAnotherNameIsNotRecognised) {
    for (const char* name :
         {"http://ns.adobe.com/xap/1.0/", "JFXX........", "exif........", "JFIf........"}) {
        EXPECT_EQ(formatOf(jpegFile({jpegSegment(0xE1, name), kExif})).answer, kNotRecognised) << name;
        EXPECT_EQ(formatOf(jpegFile({jpegSegment(0xE0, name)})).answer, kNotRecognised) << name;
    }
}

TEST(CIMAGETAGFormatTest, SegmentsBeforeTheFirstOfItsKindArePassedOver) {
    const Bytes profile = jpegSegment(0xE2, "ICC_PROFILE\0\1\1"s);
    expectFormat(jpegFile({kComment, kJfif}), kImageTagFormatJFIF);
    expectFormat(jpegFile({profile, kJfif, kExif}), kImageTagFormatJFIF);
    expectFormat(jpegFile({profile, kComment, kExif}), kImageTagFormatExif);
}

TEST(CIMAGETAGFormatTest, AMarkerInsideOfAnotherSegmentCounts) {
    expectFormat(jpegFile({jpegSegment(0xFE, "\xFF\xE1..Exif"s), kJfif}), kImageTagFormatExif);
    EXPECT_EQ(formatOf(jpegFile({jpegSegment(0xFE, "\xFF\xE0..none"s), kJfif})).answer, kNotRecognised);
}

TEST(CIMAGETAGFormatTest, ANameThatIsCutOffIsNotRecognised) {
    // The whole name stands in memory; only `size` bytes of it are the caller's to show.
    const Bytes bytes = bytesOfText("\xFF\xD8......\xFF\xE1..Exif\0\0"s);
    for (size_t size = 12; size < 16; ++size)
        EXPECT_EQ(formatOf(bytes, size).answer, kNotRecognised) << size;
    EXPECT_EQ(formatOf(bytes, 16).answer, kDone);
    const Bytes atTheEnd = bytesOfText("\xFF\xD8........\xFF\xE0"s);
    EXPECT_EQ(formatOf(atTheEnd).answer, kNotRecognised);
    const Bytes half = bytesOfText("\xFF\xD8.........\xFF\xE0..none"s);
    EXPECT_EQ(formatOf(half, 12).answer, kDone);
    EXPECT_EQ(formatOf(half, 12).format, kImageTagFormatJFIF);
}

TEST(CIMAGETAGFormatTest, ElevenBytesAreTooFewForTheExifSearch) {
    const Bytes bytes = bytesOfText("\xFF\xD8\xFF\xE1..Exif\0\0"s);
    ASSERT_EQ(bytes.size(), 12U);
    EXPECT_EQ(exifSearch(bytes, 11), kNotRecognised);
    EXPECT_EQ(exifSearch(bytes, 12), kDone);
}

TEST(CIMAGETAGFormatTest, TheExifSearchWantsAJPEG) {
    EXPECT_EQ(exifSearch(bytesOfText("II*\0\10\0\0\0\xFF\xE1..Exif"s)), kNotAnImage);
    EXPECT_EQ(exifSearch(bytesOfText("\xFF\xD9\xFF\xE1..Exif......"s)), kNotAnImage);
}

TEST(CIMAGETAGFormatTest, TheExifSearchSaysWhenThereIsNoAPP1) {
    EXPECT_EQ(exifSearch(jpegFile({kJfif, kComment})), (Answer{0, kTagMoreNeeded}));
    EXPECT_EQ(exifSearch(jpegFile({jpegSegment(0xE0, "Exif\0\0........"s)})), (Answer{0, kTagMoreNeeded}));
    const Bytes half = bytesOfText("\xFF\xD8.........\xFF\xE1..Exif"s);
    EXPECT_EQ(exifSearch(half, 12), (Answer{0, kTagMoreNeeded}));
}

TEST(CIMAGETAGFormatTest, TheExifSearchFindsTheFirstAPP1) {
    EXPECT_EQ(exifSearch(jpegFile({kExif})), kDone);
    EXPECT_EQ(exifSearch(jpegFile({kJfif, kComment, kExif})), kDone);
}

TEST(CIMAGETAGFormatTest, TheExifSearchLooksAtNoSecondAPP1) {
    const Bytes packet = jpegSegment(0xE1, "http://ns.adobe.com/xap/1.0/");
    EXPECT_EQ(exifSearch(jpegFile({packet, kExif})), kNotRecognised);
    const Bytes cut = bytesOfText("\xFF\xD8......\xFF\xE1..Exif"s);
    for (size_t size = 12; size < 16; ++size)
        EXPECT_EQ(exifSearch(cut, size), kNotRecognised) << size;
}

TEST(CIMAGETAGFormatTest, FormatsAndHeaderPositionsOfTheThreeKinds) {
    struct Kind {
        uint32_t header;
        int16_t format;
    };
    for (const Kind& kind : {Kind{kTiffHeader, 3}, Kind{kExifHeader, 2}, Kind{kJfifExifHeader, 1}}) {
        for (const ByteOrder order : kBothOrders) {
            SCOPED_TRACE(kind.header);
            OpenTag tag;
            const Outcome outcome = parse(tag, smallFile(order, kind.header));
            EXPECT_EQ(outcome.answer, kDone);
            EXPECT_EQ(outcome.format, kind.format);
            EXPECT_EQ(tag.position().headerPosition, kind.header);
            EXPECT_EQ(tag.position().format, kind.format);
            EXPECT_EQ(tag.position().bigEndian, order == ByteOrder::Big ? 1 : 0);
            EXPECT_EQ(tag.counts(), (Counts{1}));
            EXPECT_EQ(numbersOf(tag.record(0)), (std::vector<uint64_t>{6}));
        }
    }
}

TEST(CIMAGETAGFormatTest, UnknownFilesAreRefused) {
    OpenTag tag;
    EXPECT_EQ(parse(tag, bytesOfText("GIF89a......")).answer, kNotAnImage);
    EXPECT_EQ(parse(tag, bytesOfText("II*\0"s)).answer, kNotRecognised);
    EXPECT_EQ(parse(tag, Bytes{}).answer, kNotRecognised);
    EXPECT_EQ(parse(tag, jpegFile({jpegSegment(0xE1, "http://ns.adobe.com/xap/1.0/")})).answer,
              kNotRecognised);
    EXPECT_EQ(tag.counts(), Counts{});
}

TEST(CIMAGETAGFormatTest, AnExifSegmentThatIsNotTheFirstIsNotRecognised) {
    for (const Bytes& first : {kComment, jpegSegment(0xE2, "ICC_PROFILE\0\1\1"s)}) {
        const Bytes exif = smallFile(ByteOrder::Little, kExifHeader).bytes();
        Bytes file = jpegFile({first});
        file.insert(file.end(), exif.begin() + 2, exif.end());
        OpenTag tag;
        const Outcome outcome = parse(tag, file);
        EXPECT_EQ(outcome.answer, kNotRecognised);
        EXPECT_EQ(outcome.format, kImageTagFormatExif);
        EXPECT_EQ(tag.position().headerPosition, kExifHeader);
        EXPECT_EQ(tag.counts(), Counts{});
    }
}

TEST(CIMAGETAGFormatTest, NothingIsFoundInAPlainJFIFFile) {
    // Long enough for as many entries as the first two bytes, taken as a count modulo 2^16, may promise.
    for (const size_t size : {size_t{24}, size_t{27}, size_t{100}, size_t{20'000}, size_t{800'000}}) {
        Bytes file = jpegFile({kJfif, jpegSegment(0xC0, frameContents(8, 16))});
        file.resize(size);
        OpenTag tag;
        const Outcome outcome = parse(tag, file);
        EXPECT_EQ(outcome.answer, kMore) << size;
        EXPECT_EQ(outcome.format, kImageTagFormatJFIF);
        EXPECT_EQ(outcome.nextOffset, 0U);
        EXPECT_EQ(outcome.nextSize, kStep);
        EXPECT_EQ(tag.counts(), Counts{}) << size;
    }
}

TEST(CIMAGETAGFormatTest, APlainJFIFFileFindsNothingAfterAnyOtherFile) {
    Bytes plain = jpegFile({kJfif});
    plain.resize(20'000);
    for (const ByteOrder order : kBothOrders) {
        for (const uint32_t header : {kTiffHeader, kExifHeader, kJfifExifHeader}) {
            OpenTag tag;
            // Ends in the middle, so that there is something to go on with.
            const TagBytes cut = TagBytes(order, header).first(3000).length(64);
            ASSERT_EQ(parse(tag, cut).nextOffset, cut.position(3000));
            const Outcome outcome = parse(tag, plain);
            EXPECT_EQ(outcome.answer, kMore);
            EXPECT_EQ(outcome.nextOffset, 0U);
            EXPECT_EQ(outcome.nextSize, kStep);
            EXPECT_EQ(tag.counts(), Counts{});
        }
    }
}

TEST(CIMAGETAGFormatTest, BehindAJFIFSegmentOnlyTheWholeNameMakesExif) {
    for (const size_t place : {20U + 4, 20U + 5, 20U + 6, 20U + 7}) {
        Bytes file = smallFile(ByteOrder::Little, kJfifExifHeader).bytes();
        file[place] ^= 0x20;  // its case
        OpenTag tag;
        EXPECT_EQ(parse(tag, file).answer, kMore) << place;
        EXPECT_EQ(tag.position().headerPosition, 0U) << place;
        EXPECT_EQ(tag.counts(), Counts{}) << place;
    }
}

}  // namespace fi::test

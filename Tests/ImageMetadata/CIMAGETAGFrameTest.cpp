// SPDX-License-Identifier: Apache-2.0
// The sizes that a JPEG's frame gives.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "ImageMetadata/TagParse.h"

namespace fi::test {

namespace {

Outcome search(OpenTag& tag, Bytes& bytes) {
    Outcome outcome;
    outcome.answer.result =
        tag.SetJfifInfo(reinterpret_cast<char*>(bytes.data()), static_cast<uint32_t>(bytes.size()),
                        &outcome.nextOffset, &outcome.nextSize, &outcome.answer.error);
    return outcome;
}

void expectFrame(Bytes bytes, uint16_t width, uint16_t height) {
    OpenTag tag;
    EXPECT_EQ(search(tag, bytes).answer, kDone);
    EXPECT_EQ(tag.counts(), (Counts{2}));
    EXPECT_EQ(tag.tags(0), (Tags{256, 257}));
    EXPECT_EQ(numbersOf(tag.record(0, 0)), (std::vector<uint64_t>{width}));
    EXPECT_EQ(numbersOf(tag.record(0, 1)), (std::vector<uint64_t>{height}));
}

void expectNoFrame(Bytes bytes) {
    OpenTag tag;
    const Outcome outcome = search(tag, bytes);
    EXPECT_EQ(outcome.answer, kMore);
    EXPECT_EQ(outcome.nextOffset, 0U);
    EXPECT_EQ(outcome.nextSize, kStep);
    EXPECT_EQ(tag.counts(), Counts{});
}

Bytes frame(uint8_t marker, uint16_t width, uint16_t height) {
    return jpegSegment(marker, frameContents(height, width));
}

const Bytes kJfif = jpegSegment(0xE0, jfifContents());
const Bytes kTables = jpegSegment(0xDB, "tables");

}  // namespace

TEST(CIMAGETAGFrameTest, AFewBytesHoldNoFrame) {
    const Bytes whole = jpegFile({frame(0xC0, 640, 480)});
    for (size_t size = 0; size < 6; ++size) {
        Bytes bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        const Bytes before = bytes;
        OpenTag tag;
        EXPECT_EQ(search(tag, bytes).answer.error, kTagMoreNeeded);
        EXPECT_EQ(tag.counts(), Counts{});
        EXPECT_EQ(bytes, before);
    }
}

TEST(CIMAGETAGFrameTest, ABaselineFrameGivesWidthAndHeight) {
    OpenTag tag;
    Bytes bytes = jpegFile({kJfif, kTables, frame(0xC0, 640, 480), kTables});
    EXPECT_EQ(search(tag, bytes).answer, kDone);
    ASSERT_EQ(tag.counts(), (Counts{2}));
    for (size_t i = 0; i < 2; ++i) {
        const IMAGETAG_INFO& record = tag.record(0, i);
        EXPECT_EQ(record.tag, 256 + i);
        EXPECT_EQ(record.type, 3);
        EXPECT_EQ(record.count, 1);
        EXPECT_EQ(record.kind, kImageTagKindPlain);
        EXPECT_EQ(parsedOf(record), Parsed{});
        EXPECT_EQ(numbersOf(record), (std::vector<uint64_t>{i == 0 ? 640U : 480U}));
    }
    expectFrame(jpegFile({frame(0xC0, 0x1234, 0x5678)}), 0x1234, 0x5678);
}

TEST(CIMAGETAGFrameTest, OfProgressiveFramesTheLastCounts) {
    expectFrame(jpegFile({kJfif, frame(0xC2, 640, 480), kTables}), 640, 480);
    expectFrame(jpegFile({frame(0xC2, 640, 480), kTables, frame(0xC2, 320, 200), kTables}), 320, 200);
}

TEST(CIMAGETAGFrameTest, ABaselineFrameWinsOverProgressiveOnes) {
    expectFrame(jpegFile({frame(0xC2, 640, 480), frame(0xC0, 320, 200), kTables}), 320, 200);
    expectFrame(jpegFile({frame(0xC0, 320, 200), frame(0xC2, 640, 480), kTables}), 320, 200);
    expectFrame(jpegFile({frame(0xC0, 320, 200), frame(0xC0, 640, 480), kTables}), 320, 200);
}

TEST(CIMAGETAGFrameTest, OtherFramesAreNone) {
    for (const uint8_t marker : Bytes{0xC1, 0xC3, 0xC4, 0xC5, 0xC6, 0xC9, 0xCA, 0xDB})
        expectNoFrame(jpegFile({kJfif, frame(marker, 640, 480), kTables}));
    expectNoFrame(jpegFile({kJfif, kTables, kTables}));
    expectNoFrame(Bytes(10, 0xFF));
}

TEST(CIMAGETAGFrameTest, AFrameInsideOfAnotherSegmentIsNone) {
    const Bytes inner = frame(0xC0, 640, 480);
    expectNoFrame(jpegFile({jpegSegment(0xE1, std::string(inner.begin(), inner.end())), kTables}));
}

TEST(CIMAGETAGFrameTest, ACutFrameIsNone) {
    const Bytes whole = jpegFile({kJfif, frame(0xC0, 640, 480)});
    const size_t start = 2 + kJfif.size();
    for (size_t size = 6; size <= start + 12; ++size) {
        const Bytes bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        SCOPED_TRACE(size);
        if (size < start + 9) {
            expectNoFrame(bytes);
        } else {
            expectFrame(bytes, 640, 480);
        }
    }
}

TEST(CIMAGETAGFrameTest, LengthsAndSizesAreLeftTurned) {
    OpenTag tag;
    const Bytes before = jpegFile({kJfif, kTables, frame(0xC0, 0x0280, 0x01E0), kTables});
    Bytes bytes = before;
    EXPECT_EQ(search(tag, bytes).answer, kDone);
    Bytes expected = before;
    const size_t tables = 2 + kJfif.size();
    const size_t start = tables + kTables.size();
    for (const size_t at : {size_t{4}, tables + 2, start + 5, start + 7})
        std::swap(expected[at], expected[at + 1]);
    // Whether the frame's own length is turned is not of interest.
    bytes[start + 2] = expected[start + 2];
    bytes[start + 3] = expected[start + 3];
    EXPECT_EQ(bytes, expected);
}

TEST(CIMAGETAGFrameTest, EmptySegmentsArePassed) {
    // A length of zero leads on by the two bytes of a marker, to what the length stood in.
    const Bytes inner = frame(0xC0, 640, 480);
    Bytes bytes = {0xFF, 0xD8, 0xFF, 0xE0, 0, 0, 0, 4, 0, 0};
    bytes.insert(bytes.end(), inner.begin(), inner.end());
    expectFrame(bytes, 640, 480);
    expectNoFrame(Bytes(4096, 0));
    Bytes none(4096, 0);
    none[0] = 0xFF;
    none[1] = 0xD8;
    expectNoFrame(none);
}

TEST(CIMAGETAGFrameTest, SegmentsThatLeadOutOfTheDataEndTheWalk) {
    for (const uint16_t length : Shorts{20, 100, 0x7FFF, 0x8000, 0xFFFF}) {
        Bytes bytes = {0xFF, 0xD8, 0xFF, 0xE0};
        appendNumber(bytes, length, 2, ByteOrder::Big);
        bytes.resize(20);
        expectNoFrame(bytes);
    }
}

TEST(CIMAGETAGFrameTest, TheRecordsNeedMemory) {
    for (int nth = 0;; ++nth) {
        ASSERT_LT(nth, 20);
        OpenTag tag;
        Bytes bytes = jpegFile({frame(0xC0, 640, 480)});
        const OneRefusal refusal(nth);
        const Answer answer = search(tag, bytes).answer;
        if (!OneRefusal::happened()) {
            EXPECT_GE(nth, 2);
            EXPECT_EQ(answer, kDone);
            break;
        }
        EXPECT_EQ(answer, kNoMemory) << nth;
    }
}

TEST(CIMAGETAGFrameTest, AProgressiveFrameCountsBeforeACutBaselineFrame) {
    const Bytes whole = jpegFile({frame(0xC2, 640, 480), frame(0xC0, 320, 200)});
    const size_t start = whole.size() - frame(0xC0, 320, 200).size();
    for (size_t size = start; size < whole.size(); ++size) {
        SCOPED_TRACE(size);
        const Bytes bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        if (size < start + 9) {
            expectFrame(bytes, 640, 480);
        } else {
            expectFrame(bytes, 320, 200);
        }
    }
}

TEST(CIMAGETAGFrameTest, ASegmentWithoutMarkerIsPassedByItsLength) {
    for (const uint8_t code : Bytes{0xC0, 0xC2}) {
        Bytes none = frame(code, 640, 480);
        none[0] = 0;
        expectNoFrame(jpegFile({none, kTables}));
        expectFrame(jpegFile({none, frame(code, 320, 200), kTables}), 320, 200);
    }
}

TEST(CIMAGETAGFrameTest, TheWalkEndsSixBytesBeforeTheEnd) {
    for (const size_t left : {5U, 6U, 7U}) {
        Bytes bytes = jpegFile({kTables, jpegSegment(0xDB, std::string(left - 4, '.'))});
        const size_t last = bytes.size() - left;
        OpenTag tag;
        EXPECT_EQ(search(tag, bytes).answer, kMore);
        const uint8_t length = static_cast<uint8_t>(left - 2);
        const Bytes turned = {length, 0};
        const Bytes kept = {0, length};
        EXPECT_EQ(Bytes({bytes[last + 2], bytes[last + 3]}), left > 6 ? turned : kept) << left;
    }
}

}  // namespace fi::test

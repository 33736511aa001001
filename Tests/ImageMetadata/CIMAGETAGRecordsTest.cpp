// SPDX-License-Identifier: Apache-2.0
// What a CIMAGETAG holds, what it hands out, and who frees it.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "ImageMetadata/TagParse.h"
#include "Support/ScopedFaults.h"

namespace fi::test {

namespace {

/// One record in each slot; the last slots have more.
TagBytes completeFile() {
    return TagBytes(ByteOrder::Little)
        .directory(8, {shortEntry(256, 10), longEntry(0x8769, 100), longEntry(0x8825, 200)}, 400)
        .directory(100, {shortEntry(33434, 11), longEntry(0xA005, 300)})
        .directory(200, {shortEntry(30, 12)})
        .directory(300, std::vector<TagEntry>(5, shortEntry(1, 13)))
        .directory(400, {shortEntry(256, 14), longEntry(0x8769, 500), longEntry(0x8825, 600)})
        .directory(500, {shortEntry(33434, 15), longEntry(0xA005, 700)})
        .directory(600, {shortEntry(30, 16)})
        .directory(700, std::vector<TagEntry>(5, shortEntry(1, 17)));
}

constexpr Counts kComplete = {1, 1, 1, 5, 1, 1, 1, 5};

/// Where the members of an object stand.
class Layout : public CIMAGETAG {
public:
    template <typename Member>
    [[nodiscard]] ptrdiff_t offsetOf(const Member& member) const {
        return reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(this);
    }
    void check() const {
        EXPECT_EQ(offsetOf(m_ownReader), 8);
        EXPECT_EQ(offsetOf(m_reader), 16);
        EXPECT_EQ(offsetOf(m_fields), 24);
        EXPECT_EQ(offsetOf(m_fields[0].mainIFD), 24);
        EXPECT_EQ(offsetOf(m_fields[0].pointerTag), 26);
        EXPECT_EQ(offsetOf(m_fields[0].count), 28);
        EXPECT_EQ(offsetOf(m_fields[0].records), 32);
        EXPECT_EQ(offsetOf(m_fields[7]), 24 + 7 * 16);
        EXPECT_EQ(offsetOf(m_position.bufferStart), 152);
        EXPECT_EQ(offsetOf(m_position.headerPosition), 156);
        EXPECT_EQ(offsetOf(m_position.bigEndian), 160);
        EXPECT_EQ(offsetOf(m_position.format), 162);
        EXPECT_EQ(offsetOf(m_position.currentMainIFD), 164);
        EXPECT_EQ(offsetOf(m_position.nextIFDPosition), 168);
        EXPECT_EQ(offsetOf(m_position.hasExifIFD), 172);
        EXPECT_EQ(sizeof(CIMAGETAG), 176U);
    }
};

/// A pointer to a virtual method is an odd number, its place in the table and 1.
template <typename Method>
bool isVirtual(Method method) {
    uintptr_t words[2];
    static_assert(sizeof words == sizeof method);
    std::memcpy(words, &method, sizeof words);
#ifdef __aarch64__
    return (words[1] & 1U) != 0;
#else
    return (words[0] & 1U) != 0;
#endif
}

IMAGETAG_INFO recordWithValue(uint16_t tag, uint16_t number) {
    IMAGETAG_INFO record{};
    record.tag = tag;
    record.type = 3;
    record.count = 1;
    record.value = static_cast<char*>(std::malloc(2));
    std::memcpy(record.value, &number, 2);
    return record;
}

size_t memoryInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace

TEST(CIMAGETAGRecordsTest, MembersStandInTheirHistoricOrder) {
    Layout().check();
}

TEST(CIMAGETAGRecordsTest, RecordsAreLaidOutInTheirHistoricOrder) {
    EXPECT_EQ(offsetof(IMAGETAG_INFO, tag), 0U);
    EXPECT_EQ(offsetof(IMAGETAG_INFO, type), 2U);
    EXPECT_EQ(offsetof(IMAGETAG_INFO, kind), 4U);
    EXPECT_EQ(offsetof(IMAGETAG_INFO, count), 8U);
    EXPECT_EQ(offsetof(IMAGETAG_INFO, value), 16U);
    EXPECT_EQ(offsetof(IMAGETAG_INFO, parsed), 24U);
    EXPECT_EQ(sizeof(IMAGETAG_INFO), 40U);
    EXPECT_EQ(offsetof(IMAGETAG_ARRAY, count), 0U);
    EXPECT_EQ(offsetof(IMAGETAG_ARRAY, records), 8U);
}

TEST(CIMAGETAGRecordsTest, OnlyTheDestructorIsVirtual) {
    EXPECT_TRUE(std::has_virtual_destructor_v<CIMAGETAG>);
    EXPECT_FALSE(isVirtual(&CIMAGETAG::CreateField));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::PutExtraField));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::CheckFormat));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::SearchExifMagicInAPP1));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::SearchFirstIFD));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::CheckIFDSize));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::SetTiffInfo));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::SetJfifInfo));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::FixUpEntry));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::GetTagData));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::PushChain));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::GetInfo));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::GetArray));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::ReleaseInfo));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::ReleaseArray));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::ReleaseField));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::CloseField));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::RentMemCard));
    EXPECT_FALSE(isVirtual(&CIMAGETAG::HasExifIFD));
}

TEST(CIMAGETAGRecordsTest, ANewOneHasEightEmptySlots) {
    struct Slot {
        uint16_t mainIFD;
        uint16_t pointerTag;
    };
    constexpr Slot kSlots[] = {{0, 0}, {0, 0x8769}, {0, 0x8825}, {0, 0xA005},
                               {1, 0}, {1, 0x8769}, {1, 0x8825}, {1, 0xA005}};
    OpenTag tag;
    for (size_t slot = 0; slot < 8; ++slot) {
        EXPECT_EQ(tag.field(slot).mainIFD, kSlots[slot].mainIFD) << slot;
        EXPECT_EQ(tag.field(slot).pointerTag, kSlots[slot].pointerTag) << slot;
        EXPECT_EQ(tag.field(slot).count, 0) << slot;
        EXPECT_EQ(tag.field(slot).records, nullptr) << slot;
    }
    EXPECT_EQ(tag.ownReader(), nullptr);
    EXPECT_EQ(tag.reader(), nullptr);
    EXPECT_EQ(tag.HasExifIFD(), 0);
}

TEST(CIMAGETAGRecordsTest, GetInfoGivesTheFirstRecordWithTheTag) {
    OpenTag tag;
    ASSERT_EQ(parse(tag, TagBytes(ByteOrder::Little)
                             .directory(8, {shortEntry(274, 1), shortEntry(256, 2), shortEntry(256, 3)}))
                  .answer,
              kDone);
    uint32_t error = kUntouched;
    IMAGETAG_INFO* info = tag.GetInfo(0, 256, &error);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(error, kTagNoError);
    EXPECT_EQ(numbersOf(*info), (std::vector<uint64_t>{2}));
    EXPECT_EQ(std::memcmp(info, &tag.record(0, 1), sizeof *info), 0);
    EXPECT_NE(info, &tag.record(0, 1));
    EXPECT_EQ(info->value, tag.record(0, 1).value);
    tag.ReleaseInfo(info);
    EXPECT_EQ(numbersOf(tag.record(0, 1)), (std::vector<uint64_t>{2}));
}

TEST(CIMAGETAGRecordsTest, GetInfoLooksInOneSlot) {
    OpenTag tag;
    ASSERT_EQ(parse(tag, completeFile()).answer, kDone);
    const uint16_t tags[] = {256, 33434, 30, 1, 256, 33434, 30, 1};
    for (uint16_t slot = 0; slot < 8; ++slot) {
        uint32_t error = kUntouched;
        IMAGETAG_INFO* info = tag.GetInfo(slot, tags[slot], &error);
        ASSERT_NE(info, nullptr) << slot;
        EXPECT_EQ(numbersOf(*info), (std::vector<uint64_t>{10U + slot}));
        tag.ReleaseInfo(info);
        error = kUntouched;
        EXPECT_EQ(tag.GetInfo(slot, tags[(slot + 1) % 8], &error), nullptr);
        EXPECT_EQ(error, kTagMoreNeeded);
    }
}

TEST(CIMAGETAGRecordsTest, WhatIsNotThereIsNotFound) {
    OpenTag tag;
    for (const uint16_t slot : Shorts{0, 1, 7, 8, 9, 65535}) {
        uint32_t error = kUntouched;
        EXPECT_EQ(tag.GetInfo(slot, 256, &error), nullptr) << slot;
        EXPECT_EQ(error, kTagMoreNeeded) << slot;
        error = kUntouched;
        uint32_t size = kUntouched;
        EXPECT_EQ(tag.GetArray(slot, &size, &error), nullptr) << slot;
        EXPECT_EQ(error, kTagMoreNeeded) << slot;
    }
}

TEST(CIMAGETAGRecordsTest, GetArrayCopiesASlot) {
    OpenTag tag;
    ASSERT_EQ(parse(tag, completeFile()).answer, kDone);
    for (uint16_t slot = 0; slot < 8; ++slot) {
        uint32_t error = kUntouched;
        uint32_t size = kUntouched;
        IMAGETAG_ARRAY* array = tag.GetArray(slot, &size, &error);
        ASSERT_NE(array, nullptr) << slot;
        EXPECT_EQ(error, kTagNoError);
        ASSERT_EQ(array->count, kComplete[slot]);
        EXPECT_EQ(size, offsetof(IMAGETAG_ARRAY, records) + array->count * sizeof(IMAGETAG_INFO));
        EXPECT_NE(&array->records[0], tag.field(slot).records);
        EXPECT_EQ(
            std::memcmp(array->records, tag.field(slot).records, array->count * sizeof(IMAGETAG_INFO)), 0);
        EXPECT_GE(malloc_usable_size(array), size);
        tag.ReleaseArray(array);
        EXPECT_EQ(numbersOf(tag.record(slot)), (std::vector<uint64_t>{10U + slot}));
    }
}

TEST(CIMAGETAGRecordsTest, CopiesNeedMemory) {
    OpenTag tag;
    ASSERT_EQ(parse(tag, completeFile()).answer, kDone);
    const ScopedFaults faults{Fault::Allocation};
    uint32_t error = kUntouched;
    EXPECT_EQ(tag.GetInfo(0, 256, &error), nullptr);
    EXPECT_EQ(error, kTagNoMemory);
    error = kUntouched;
    EXPECT_EQ(tag.GetInfo(0, 257, &error), nullptr);
    EXPECT_EQ(error, kTagMoreNeeded);
    uint32_t size = kUntouched;
    error = kUntouched;
    EXPECT_EQ(tag.GetArray(0, &size, &error), nullptr);
    EXPECT_EQ(error, kTagNoMemory);
}

TEST(CIMAGETAGRecordsTest, NothingMayBeReleased) {
    OpenTag tag;
    tag.ReleaseInfo(nullptr);
    tag.ReleaseArray(nullptr);
    tag.CloseField();
    EXPECT_EQ(tag.counts(), Counts{});
}

TEST(CIMAGETAGRecordsTest, ReleaseFieldEmptiesFromASlotOn) {
    for (int from = -2; from <= 9; ++from) {
        OpenTag tag;
        ASSERT_EQ(parse(tag, completeFile()).answer, kDone);
        ASSERT_EQ(tag.counts(), kComplete);
        tag.ReleaseField(from);
        Counts expected = kComplete;
        for (int slot = std::max(from, 0); slot < 8; ++slot)
            expected[static_cast<size_t>(slot)] = 0;
        EXPECT_EQ(tag.counts(), expected) << from;
        for (size_t slot = 0; slot < 8; ++slot)
            EXPECT_EQ(tag.field(slot).records == nullptr, expected[slot] == 0) << from << " " << slot;
        // The slots can be filled again.
        EXPECT_EQ(parse(tag, completeFile()).answer, kDone);
    }
}

TEST(CIMAGETAGRecordsTest, ReleasedSlotsStayWhatTheyAre) {
    OpenTag tag;
    ASSERT_EQ(parse(tag, completeFile()).answer, kDone);
    tag.CloseField();
    EXPECT_EQ(tag.field(6).mainIFD, 1);
    EXPECT_EQ(tag.field(6).pointerTag, 0x8825);
}

TEST(CIMAGETAGRecordsTest, CloseFieldEmptiesAllSlotsAnyNumberOfTimes) {
    OpenTag tag;
    ASSERT_EQ(parse(tag, completeFile()).answer, kDone);
    tag.CloseField();
    EXPECT_EQ(tag.counts(), Counts{});
    tag.CloseField();
    EXPECT_EQ(tag.counts(), Counts{});
    uint32_t error = kUntouched;
    EXPECT_EQ(tag.GetInfo(0, 256, &error), nullptr);
    EXPECT_EQ(error, kTagMoreNeeded);
}

TEST(CIMAGETAGRecordsTest, NothingIsLeftWhenOneGoes) {
    // Values of a size that the allocator does not keep back, 16 of them in each round.
    constexpr uint32_t kSize = 20'000;
    const std::vector<TagEntry> entries(16, entryAt(700, 7, kSize, 300));
    const TagBytes file = TagBytes(ByteOrder::Big).directory(8, entries).length(300 + kSize);
    const auto round = [&file](bool closes) {
        OpenTag tag;
        EXPECT_EQ(parse(tag, file).answer, kDone);
        EXPECT_EQ(tag.counts(), (Counts{16}));
        if (closes) tag.CloseField();
        EXPECT_EQ(parse(tag, file.bytes(), 200).answer, kMore);
        EXPECT_EQ(parse(tag, file).answer, kDone);
    };
    round(false);
    const size_t before = memoryInUse();
    for (int i = 0; i < 10; ++i) {
        round(false);
        round(true);
    }
    EXPECT_LT(memoryInUse(), before + kSize);
}

TEST(CIMAGETAGRecordsTest, PushChainKeepsRecordsInTheirOrder) {
    OpenTag tag;
    for (uint16_t i = 0; i < 300; ++i) {
        const IMAGETAG_INFO record = recordWithValue(static_cast<uint16_t>(1000 - i), i);
        uint32_t error = kUntouched;
        EXPECT_EQ(tag.PushChain(&record, i % 8, &error), 1);
        EXPECT_EQ(error, kTagNoError);
    }
    for (uint16_t i = 0; i < 300; ++i) {
        const IMAGETAG_INFO& record = tag.record(i % 8, i / 8);
        EXPECT_EQ(record.tag, 1000 - i);
        EXPECT_EQ(numbersOf(record), (std::vector<uint64_t>{i}));
    }
}

TEST(CIMAGETAGRecordsTest, PushChainNeedsMemory) {
    OpenTag tag;
    const IMAGETAG_INFO first = recordWithValue(1, 1);
    uint32_t error = kUntouched;
    {
        const ScopedFaults faults{Fault::Allocation};
        EXPECT_EQ(tag.PushChain(&first, 3, &error), 0);
        EXPECT_EQ(error, kTagNoMemory);
    }
    EXPECT_EQ(tag.counts(), Counts{});
    EXPECT_EQ(tag.PushChain(&first, 3, &error), 1);
    IMAGETAG_INFO second = recordWithValue(2, 2);
    {
        const ScopedFaults faults{Fault::Allocation};
        EXPECT_EQ(tag.PushChain(&second, 3, &error), 0);
        EXPECT_EQ(error, kTagNoMemory);
    }
    EXPECT_EQ(tag.tags(3), (Tags{1}));
    std::free(second.value);
}

TEST(CIMAGETAGRecordsTest, EveryRequestForMemoryOfAParseMayFail) {
    int refusals = 0;
    for (int nth = 0;; ++nth) {
        ASSERT_LT(nth, 100);
        OpenTag tag;
        Answer answer{};
        Counts counts{};
        {
            const OneRefusal refusal(nth);
            answer = parse(tag, completeFile()).answer;
            counts = tag.counts();
            if (!OneRefusal::happened()) break;
        }
        ++refusals;
        EXPECT_EQ(answer, kNoMemory) << nth;
        // What was read before stays.
        if (counts[1] > 0) {
            EXPECT_EQ(counts[0], 1) << nth;
        }
        if (counts[7] > 0) {
            EXPECT_EQ(counts[6], 1) << nth;
        }
        tag.CloseField();
        EXPECT_EQ(parse(tag, completeFile()).answer, kDone);
        EXPECT_EQ(tag.counts(), kComplete);
    }
    EXPECT_GE(refusals, 2 * 16);
}

TEST(CIMAGETAGRecordsTest, EntriesThatShareAValueDoNotMultiplyIt) {
    constexpr uint32_t kCount = 32767;
    const std::vector<TagEntry> entries(2730, entryAt(700, 12, kCount, 40'000));
    const TagBytes file = TagBytes(ByteOrder::Little).directory(8, entries).length(40'000 + 8 * kCount);
    OpenTag tag;
    EXPECT_EQ(parse(tag, file).answer, kNoMemory);
    EXPECT_GT(tag.field(0).count, 1);
    EXPECT_LE(uint64_t{8 * kCount} * static_cast<uint64_t>(tag.field(0).count),
              file.bytes().size() + (16U << 20U));
}

TEST(CIMAGETAGRecordsTest, TheLibrarysOwnReaderIsReadyForUse) {
    ASSERT_EQ(parse(gImageTag, completeFile()).answer, kDone);
    uint32_t error = kUntouched;
    IMAGETAG_INFO* info = gImageTag.GetInfo(4, 256, &error);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(numbersOf(*info), (std::vector<uint64_t>{14}));
    gImageTag.ReleaseInfo(info);
    gImageTag.CloseField();
}

}  // namespace fi::test

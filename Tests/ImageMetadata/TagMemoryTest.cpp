// SPDX-License-Identifier: Apache-2.0
// What the tag reader does without memory, and how much of it a file may ask for.
#include "ImageMetadata/TagMemory.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "FileImporter/CIMAGETAG.h"
#include "Support/TiffBlock.h"

namespace fi {
namespace {

using test::TiffDirectory;

struct Answer {
    uint8_t result = 9;
    int16_t format = 0;
    uint32_t nextOffset = 0;
    uint32_t nextSize = 0;
    uint32_t error = 99;
};

Answer parse(CIMAGETAG& field, const std::vector<uint8_t>& bytes) {
    Answer answer;
    answer.result = field.CreateField(nullptr, reinterpret_cast<const char*>(bytes.data()),
                                      static_cast<uint32_t>(bytes.size()), &answer.format,
                                      &answer.nextOffset, &answer.nextSize, &answer.error);
    return answer;
}

uint16_t recordsIn(CIMAGETAG& field, uint16_t slot) {
    uint32_t size = 0;
    uint32_t error = 0;
    IMAGETAG_ARRAY* array = field.GetArray(slot, &size, &error);
    const uint16_t count = array == nullptr ? 0 : array->count;
    field.ReleaseArray(array);
    return count;
}

/// Fails the allocations of one asker from the `successes` + 1st on.
class WithoutMemoryFor {
public:
    explicit WithoutMemoryFor(std::string_view who, int successes = 0) {
        s_who = who;
        s_successes = successes;
        g_faultInjector = [](Fault fault, std::string_view detail) {
            return fault == Fault::Allocation && detail == s_who && s_successes-- <= 0;
        };
    }
    ~WithoutMemoryFor() { g_faultInjector = nullptr; }
    WithoutMemoryFor(const WithoutMemoryFor&) = delete;
    WithoutMemoryFor& operator=(const WithoutMemoryFor&) = delete;

private:
    inline static std::string_view s_who;
    inline static int s_successes = 0;
};

std::vector<uint8_t> threeTags() {
    TiffDirectory main;
    main.shorts(256, {4000});
    main.text(271, "a maker of cameras");
    main.shorts(274, {6});
    return test::tiffBlock({main}, ByteOrder::Little);
}

TEST(TagMemory, AValueThatFindsNoneEndsTheParseAndLeavesWhatWasRead) {
    CIMAGETAG field;
    const WithoutMemoryFor fault("GetTagData", 2);
    const Answer answer = parse(field, threeTags());
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.error, kTagNoMemory);
    EXPECT_EQ(recordsIn(field, 0), 2);
}

TEST(TagMemory, ARecordThatFindsNoneEndsTheParseAndLeavesWhatWasRead) {
    CIMAGETAG field;
    const WithoutMemoryFor fault("PushChain", 1);
    const Answer answer = parse(field, threeTags());
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.error, kTagNoMemory);
    EXPECT_EQ(recordsIn(field, 0), 1);
}

TEST(TagMemory, CopiesThatFindNoneAreNull) {
    CIMAGETAG field;
    ASSERT_EQ(parse(field, threeTags()).error, kTagNoError);
    uint32_t size = 7;
    uint32_t error = 0;
    {
        const WithoutMemoryFor fault("GetInfo");
        EXPECT_EQ(field.GetInfo(0, 274, &error), nullptr);
        EXPECT_EQ(error, kTagNoMemory);
    }
    const WithoutMemoryFor fault("GetArray");
    EXPECT_EQ(field.GetArray(0, &size, &error), nullptr);
    EXPECT_EQ(error, kTagNoMemory);
    EXPECT_EQ(size, 7u);
}

TEST(TagMemory, ASlotHoldsNoMoreThanItsCountCanSay) {
    CIMAGETAG field;
    uint32_t error = 99;
    const IMAGETAG_INFO record{256, 3, 0, 0, nullptr, {}};
    for (int i = 0; i < 32767; ++i)
        ASSERT_EQ(field.PushChain(&record, 2, &error), 1) << i;
    EXPECT_EQ(field.PushChain(&record, 2, &error), 0);
    EXPECT_EQ(error, kTagNoMemory);
    EXPECT_EQ(recordsIn(field, 2), 32767);
}

TEST(TagMemory, ThereIsNoSlotBeyondTheEighth) {
    CIMAGETAG field;
    uint32_t size = 0;
    uint32_t error = 99;
    const IMAGETAG_INFO record{256, 3, 0, 0, nullptr, {}};
    EXPECT_EQ(field.PushChain(&record, 8, &error), 0);
    EXPECT_EQ(error, kTagNoMemory);
    EXPECT_EQ(field.GetInfo(8, 256, &error), nullptr);
    EXPECT_EQ(error, kTagMoreNeeded);
    EXPECT_EQ(field.GetArray(8, &size, &error), nullptr);
    EXPECT_EQ(error, kTagMoreNeeded);
}

/// A directory whose entries all have the same 32,767 bytes for their value.
std::vector<uint8_t> sharedValues(uint16_t entries) {
    const uint16_t valueAt = static_cast<uint16_t>(10 + 12 * entries + 4);
    std::vector<uint8_t> bytes = {'I', 'I', 42, 0, 8, 0, 0, 0};
    const auto add = [&bytes](std::initializer_list<int> more) {
        for (const int byte : more)
            bytes.push_back(static_cast<uint8_t>(byte));
    };
    add({entries & 0xFF, entries >> 8});
    for (uint16_t i = 0; i < entries; ++i)
        add({i & 0xFF, i >> 8, 7, 0, 0xFF, 0x7F, 0, 0, valueAt & 0xFF, valueAt >> 8, 0, 0});
    bytes.resize(size_t{valueAt} + 32767);
    return bytes;
}

TEST(TagMemory, EntriesThatShareBytesMayTakeSixteenMebibytesMoreThanTheData) {
    const auto few = sharedValues(500);
    CIMAGETAG field;
    EXPECT_EQ(parse(field, few).error, kTagNoError);
    EXPECT_EQ(recordsIn(field, 0), 500);
    field.CloseField();

    const auto many = sharedValues(600);
    const Answer answer = parse(field, many);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.error, kTagNoMemory);
    EXPECT_EQ(recordsIn(field, 0), (many.size() + (16 << 20)) / 32767);
}

}  // namespace
}  // namespace fi

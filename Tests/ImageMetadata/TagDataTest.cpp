// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/TagData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "Support/ScopedFaults.h"

namespace fi {
namespace {

std::vector<uint8_t> countingBytes(size_t size) {
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(i * 7 + i / 256);
    return bytes;
}

/// Remembers what was read of it, and may hold less than it promises.
class WatchedSource final : public ByteSource {
public:
    explicit WatchedSource(std::vector<uint8_t> bytes) : m_bytes(std::move(bytes)) {}
    uint64_t size() const override { return m_bytes.size(); }
    size_t read(uint64_t offset, std::span<uint8_t> out) override {
        reads.emplace_back(offset, out.size());
        return MemorySource(m_bytes).read(offset, out);
    }

    std::vector<std::pair<uint64_t, size_t>> reads;

private:
    std::vector<uint8_t> m_bytes;
};

using Reads = std::vector<std::pair<uint64_t, size_t>>;

TEST(TagData, OfMemoryGivesWhatLiesInsideAndNothingElse) {
    const auto bytes = countingBytes(100);
    TagData data(bytes.data(), bytes.size(), 1000);
    EXPECT_EQ(data.start(), 1000u);
    EXPECT_EQ(data.length(), 100u);
    EXPECT_EQ(data.at(0, 100), bytes.data());
    EXPECT_EQ(data.at(98, 2), bytes.data() + 98);
    EXPECT_EQ(data.at(100, 0), bytes.data() + 100);
    EXPECT_EQ(data.at(99, 2), nullptr);
    EXPECT_EQ(data.at(101, 0), nullptr);
    EXPECT_EQ(data.at(0, 101), nullptr);
    EXPECT_EQ(data.at(UINT64_MAX, 2), nullptr);
    EXPECT_EQ(data.at(2, UINT64_MAX), nullptr);
    EXPECT_FALSE(data.cameShort());
}

TEST(TagData, OfNothingGivesNothing) {
    TagData data(nullptr, 0);
    EXPECT_EQ(data.at(0, 1), nullptr);
    EXPECT_TRUE(data.contains(0, 0));
}

TEST(TagData, LoadsTheFirstStepIntoTheCallersBufferAndNoMore) {
    WatchedSource source(countingBytes(70000));
    std::array<uint8_t, 4096> first;
    TagData data(source, 65567, first);
    EXPECT_TRUE(source.reads.empty());
    EXPECT_EQ(data.at(0, 12), first.data());
    EXPECT_EQ(data.at(4000, 96), first.data() + 4000);
    EXPECT_EQ(data.at(65567, 1), nullptr);
    EXPECT_EQ(source.reads, (Reads{{0, 4096}}));
}

void expectBytes(TagData& data, const std::vector<uint8_t>& bytes, uint64_t offset, uint64_t size) {
    const uint8_t* at = data.at(offset, size);
    ASSERT_NE(at, nullptr) << offset;
    EXPECT_TRUE(std::equal(at, at + size, bytes.begin() + static_cast<ptrdiff_t>(offset))) << offset;
}

TEST(TagData, BehindTheFirstStepLoadsAFewStretchesThenAll) {
    const auto bytes = countingBytes(70000);
    WatchedSource source(bytes);
    std::array<uint8_t, 4096> first;
    TagData data(source, 65567, first);
    expectBytes(data, bytes, 0, 12);
    expectBytes(data, bytes, 4095, 2);
    expectBytes(data, bytes, 5000, 119);
    EXPECT_EQ(source.reads, (Reads{{0, 4096}, {4095, 1024}})) << "what came is not read again";
    expectBytes(data, bytes, 5000, 120);
    EXPECT_EQ(source.reads.back(), (Reads::value_type{4488, 1024})) << "with what stands before it";
    expectBytes(data, bytes, 65055, 512);
    expectBytes(data, bytes, 64543, 2);
    EXPECT_EQ(source.reads.back(), (Reads::value_type{64543, 1024}));
    expectBytes(data, bytes, 4, 4);
    expectBytes(data, bytes, 4200, 512);
    EXPECT_EQ(source.reads.back(), (Reads::value_type{4096, 1024})) << "but for what is in hand";
    EXPECT_EQ(source.reads.size(), 5U);
    expectBytes(data, bytes, 30000, 2);
    EXPECT_EQ(source.reads.size(), 6U);
    EXPECT_EQ(source.reads.back(), (Reads::value_type{4096, 61471})) << "all the rest";
    for (uint64_t offset = 0; offset < 65000; offset += 500)
        expectBytes(data, bytes, offset, 567);
    EXPECT_EQ(source.reads.size(), 6U);
    EXPECT_FALSE(data.cameShort());
}

TEST(TagData, WhatIsTooLongForAStretchComesWithAllTheRest) {
    const auto bytes = countingBytes(9000);
    WatchedSource source(bytes);
    std::array<uint8_t, 4096> first;
    TagData data(source, 9000, first);
    expectBytes(data, bytes, 100, 1);
    expectBytes(data, bytes, 4000, 513);
    EXPECT_EQ(source.reads, (Reads{{0, 4096}, {4096, 4904}}));
}

TEST(TagData, NeedsNoBufferOfACaller) {
    const auto bytes = countingBytes(9000);
    WatchedSource source(bytes);
    TagData data(source, 9000, {});
    for (uint64_t offset = 0; offset < 9000; offset += 10)
        expectBytes(data, bytes, offset, 10);
}

TEST(TagData, OfAShortFileFitsTheCallersBuffer) {
    WatchedSource source(countingBytes(40));
    std::array<uint8_t, 64> first;
    TagData data(source, 40, first);
    EXPECT_EQ(data.at(38, 2), first.data() + 38);
    EXPECT_EQ(data.at(39, 2), nullptr);
    EXPECT_EQ(source.reads, (Reads{{0, 40}}));
}

TEST(TagData, SaysWhenLessCameThanWasPromised) {
    WatchedSource source(countingBytes(5000));
    std::array<uint8_t, 4096> first;
    TagData data(source, 9000, first);
    EXPECT_NE(data.at(0, 12), nullptr);
    EXPECT_FALSE(data.cameShort());
    EXPECT_EQ(data.at(5000, 1), nullptr);
    EXPECT_TRUE(data.cameShort());
    EXPECT_NE(data.at(4095, 1), nullptr);
    EXPECT_EQ(data.at(6000, 1), nullptr);
    EXPECT_EQ(source.reads.size(), 2u);
}

TEST(TagData, SaysSoWithoutMemoryAndKeepsWhatItHas) {
    WatchedSource source(countingBytes(9000));
    std::array<uint8_t, 4096> first;
    TagData data(source, 9000, first);
    ASSERT_NE(data.at(0, 12), nullptr);
    const test::ScopedFaults faults{Fault::Allocation};
    EXPECT_NE(data.at(5000, 1), nullptr);
    EXPECT_EQ(data.at(5000, 2000), nullptr);
    EXPECT_TRUE(data.cameShort());
    EXPECT_EQ(data.at(4095, 1), first.data() + 4095);
}

}  // namespace
}  // namespace fi

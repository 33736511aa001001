// SPDX-License-Identifier: Apache-2.0
// Memory read as if it were a file.
#include <gtest/gtest.h>

#include <array>

#include "PlatformKit/Base/ByteSource.h"

namespace fi::test {

namespace {

TEST(MemorySource, ReadsUpToTheEnd) {
    constexpr std::array<uint8_t, 4> kBytes = {1, 2, 3, 4};
    MemorySource source(kBytes);
    EXPECT_EQ(source.size(), 4U);
    std::array<uint8_t, 3> out{};
    EXPECT_EQ(source.read(0, out), 3U);
    EXPECT_EQ(out, (std::array<uint8_t, 3>{1, 2, 3}));
    EXPECT_EQ(source.read(2, out), 2U);
    EXPECT_EQ(out, (std::array<uint8_t, 3>{3, 4, 3}));
}

TEST(MemorySource, BringsNothingBeyondTheEnd) {
    constexpr std::array<uint8_t, 1> kBytes = {1};
    MemorySource source(kBytes);
    std::array<uint8_t, 1> out{};
    EXPECT_EQ(source.read(1, out), 0U);
    EXPECT_EQ(source.read(UINT64_MAX, out), 0U);
    EXPECT_EQ(source.read(0, {}), 0U);
    MemorySource empty({});
    EXPECT_EQ(empty.read(0, out), 0U);
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// The checked view: every accessor at, before and beyond every edge.
#include "PlatformKit/Base/ByteView.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

namespace fi::test {

namespace {

constexpr std::array<uint8_t, 8> kBytes = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x88};

TEST(ByteView, ReadsBothByteOrders) {
    const ByteView little(kBytes);
    EXPECT_EQ(little.u8(7), 0x88);
    EXPECT_EQ(little.u16(6), 0x8807);
    EXPECT_EQ(little.u32(4), 0x88070605U);
    EXPECT_EQ(little.u64(0), 0x8807060504030201ULL);
    const ByteView big = little.withOrder(ByteOrder::Big);
    EXPECT_EQ(big.u16(6), 0x0788);
    EXPECT_EQ(big.u32(4), 0x05060788U);
    EXPECT_EQ(big.u64(0), 0x0102030405060788ULL);
    EXPECT_EQ(big.order(), ByteOrder::Big);
}

TEST(ByteView, AnswersNothingForWhatLiesPartlyOutside) {
    for (size_t size = 0; size <= kBytes.size(); ++size) {
        // An allocation of exactly this size lets the sanitizer see a read beyond it.
        const std::unique_ptr<uint8_t[]> exact(new uint8_t[size]());
        const ByteView view(exact.get(), size);
        for (size_t offset = 0; offset <= size + 8; ++offset) {
            EXPECT_EQ(view.u8(offset).has_value(), offset + 1 <= size);
            EXPECT_EQ(view.u16(offset).has_value(), offset + 2 <= size);
            EXPECT_EQ(view.u32(offset).has_value(), offset + 4 <= size);
            EXPECT_EQ(view.u64(offset).has_value(), offset + 8 <= size);
        }
    }
}

TEST(ByteView, HugeOffsetsAndLengthsDoNotWrap) {
    const ByteView view(kBytes);
    for (const uint64_t huge : {UINT64_MAX, UINT64_MAX - 1, UINT64_MAX - 7, uint64_t{1} << 63}) {
        EXPECT_FALSE(view.contains(huge, 1));
        EXPECT_FALSE(view.contains(1, huge));
        EXPECT_FALSE(view.contains(huge, huge));
        EXPECT_FALSE(view.u8(huge));
        EXPECT_FALSE(view.u64(huge));
        EXPECT_TRUE(view.cut(huge).empty());
        EXPECT_EQ(view.cut(1, huge).size(), 7U);
        EXPECT_FALSE(view.startsWith("a", huge));
    }
}

TEST(ByteView, ContainsAgreesWithTheDefinition) {
    const ByteView view(kBytes);
    for (uint64_t offset = 0; offset < 12; ++offset) {
        for (uint64_t length = 0; length < 12; ++length)
            EXPECT_EQ(view.contains(offset, length),
                      offset + length <= kBytes.size() && offset <= kBytes.size());
    }
}

TEST(ByteView, CutIsLimitedToWhatThereIsAndKeepsTheOrder) {
    const ByteView view(kBytes, ByteOrder::Big);
    const ByteView middle = view.cut(2, 3);
    EXPECT_EQ(middle.size(), 3U);
    EXPECT_EQ(middle.u8(0), 0x03);
    EXPECT_FALSE(middle.u8(3)) << "a cut must not see what follows it";
    EXPECT_EQ(middle.order(), ByteOrder::Big);
    EXPECT_EQ(view.cut(6, 100).size(), 2U);
    EXPECT_TRUE(view.cut(8).empty());
    EXPECT_TRUE(view.cut(9, 1).empty());
    EXPECT_EQ(view.cut(9).order(), ByteOrder::Big);
}

TEST(ByteView, StartsWithComparesInsideOnly) {
    const std::string_view text = "JFIF";
    const ByteView view(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    EXPECT_TRUE(view.startsWith("JF"));
    EXPECT_TRUE(view.startsWith("IF", 2));
    EXPECT_FALSE(view.startsWith("IFX", 2));
    EXPECT_FALSE(view.startsWith("jf"));
    EXPECT_TRUE(view.startsWith("", 4));
    EXPECT_FALSE(view.startsWith("", 5));
}

TEST(ByteView, CutsWhileCompilingWhereUndefinedBehaviourWouldNotCompile) {
    static_assert(ByteView(kBytes).cut(6, 9).size() == 2);
    static_assert(ByteView(kBytes).u8(7) == 0x88);
    static_assert(!ByteView(kBytes).u8(8));
    static_assert(!ByteView(kBytes).contains(1, UINT64_MAX));
}

TEST(ByteView, EmptyViewAnswersNothing) {
    const ByteView view;
    EXPECT_TRUE(view.empty());
    EXPECT_FALSE(view.u8(0));
    EXPECT_TRUE(view.contains(0, 0));
    EXPECT_TRUE(view.cut(0).empty());
    EXPECT_TRUE(view.startsWith(""));
}

}  // namespace

}  // namespace fi::test

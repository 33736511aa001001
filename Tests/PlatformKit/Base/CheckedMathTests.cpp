// SPDX-License-Identifier: Apache-2.0
// Sizes that do not fit are told; numbers out of range are cut, never undefined.
#include "PlatformKit/Base/CheckedMath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace fi::test {

namespace {

TEST(CheckedMath, AgreesWithWideArithmeticOnAllBytes) {
    for (unsigned a = 0; a < 256; ++a) {
        for (unsigned b = 0; b < 256; ++b) {
            const auto x = static_cast<uint8_t>(a);
            const auto y = static_cast<uint8_t>(b);
            const auto sum = checkedAdd<uint8_t>(x, y);
            const auto product = checkedMultiply<uint8_t>(x, y);
            ASSERT_EQ(sum.has_value(), a + b < 256);
            ASSERT_EQ(product.has_value(), a * b < 256);
            ASSERT_EQ(sum.value_or(0), a + b < 256 ? a + b : 0);
            ASSERT_EQ(product.value_or(0), a * b < 256 ? a * b : 0);
        }
    }
}

TEST(CheckedMath, HoldsAtTheEndsOfWideTypes) {
    EXPECT_EQ(checkedAdd<uint64_t>(UINT64_MAX, 0), UINT64_MAX);
    EXPECT_FALSE(checkedAdd<uint64_t>(UINT64_MAX, 1));
    EXPECT_EQ(checkedMultiply<uint64_t>(UINT64_MAX, 1), UINT64_MAX);
    EXPECT_FALSE(checkedMultiply<uint64_t>(uint64_t{1} << 32, uint64_t{1} << 32));
    EXPECT_EQ(checkedMultiply<uint64_t>(0, UINT64_MAX), 0U);
}

TEST(CheckedMath, RoundsUpToTheUnit) {
    EXPECT_EQ(checkedRoundUp(0, 64), 0U);
    EXPECT_EQ(checkedRoundUp(1, 64), 64U);
    EXPECT_EQ(checkedRoundUp(64, 64), 64U);
    EXPECT_EQ(checkedRoundUp(65, 64), 128U);
    EXPECT_EQ(checkedRoundUp(7, 1), 7U);
    EXPECT_EQ(checkedRoundUp(UINT64_MAX - 63, 64), UINT64_MAX - 63);
    EXPECT_FALSE(checkedRoundUp(UINT64_MAX - 62, 64));
}

TEST(CheckedMath, TruncatesTowardZeroAndCutsToTheRange) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(truncateToInt64(2.9), 2);
    EXPECT_EQ(truncateToInt64(-2.9), -2);
    EXPECT_EQ(truncateToInt64(std::nan("")), 0);
    EXPECT_EQ(truncateToInt64(kInfinity), INT64_MAX);
    EXPECT_EQ(truncateToInt64(-kInfinity), INT64_MIN);
    EXPECT_EQ(truncateToInt64(0x1p63), INT64_MAX);
    EXPECT_EQ(truncateToInt64(-0x1p63), INT64_MIN);
    EXPECT_EQ(truncateToInt64(std::nextafter(0x1p63, 0.0)), 0x7FFF'FFFF'FFFF'FC00);
}

TEST(CheckedMath, SixteenBitTruncationKeepsTheLowBits) {
    EXPECT_EQ(truncateToInt16(-1.5), -1);
    EXPECT_EQ(truncateToInt16(32767.9), 32767);
    EXPECT_EQ(truncateToInt16(32768.0), -32768);
    EXPECT_EQ(truncateToInt16(65536.0 + 12), 12);
    EXPECT_EQ(truncateToInt16(-32769.0), 32767);
    EXPECT_EQ(truncateToInt16(std::nan("")), 0);
}

}  // namespace

}  // namespace fi::test

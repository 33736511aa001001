// SPDX-License-Identifier: Apache-2.0
// Numbers in every other type, and when two of them are equal.
#include "PlatformKit/Number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "PlatformKit/String.h"

namespace fi::test {

namespace {

TEST(Number, RemembersWhatItWasMadeFrom) {
    EXPECT_EQ(CFNumber::create(int64_t{1})->kind(), CFNumber::Kind::Integer);
    EXPECT_EQ(CFNumber::create(1.0)->kind(), CFNumber::Kind::Real);
    EXPECT_EQ(CFNumber::createBoolean(true)->kind(), CFNumber::Kind::Boolean);
}

TEST(Number, IntegersThatDoNotFitKeepTheirLowBits) {
    const auto number = CFNumber::create(int64_t{0x1'2345'8001});
    EXPECT_EQ(number->int64Value(), 0x1'2345'8001);
    EXPECT_EQ(number->int32Value(), 0x2345'8001);
    EXPECT_EQ(number->uint32Value(), 0x2345'8001U);
    EXPECT_EQ(number->int16Value(), -32767);
    EXPECT_EQ(number->uint16Value(), 0x8001);
    EXPECT_EQ(CFNumber::create(int64_t{-1})->uint16Value(), 0xFFFF);
    EXPECT_EQ(CFNumber::create(int64_t{-1})->uint32Value(), 0xFFFF'FFFFU);
}

TEST(Number, IntegersRoundTripThroughRealNumbersUpTo53Bits) {
    for (const int64_t value :
         {int64_t{0}, int64_t{-1}, int64_t{32767}, int64_t{1} << 53, -(int64_t{1} << 53)}) {
        const auto real = CFNumber::create(CFNumber::create(value)->doubleValue());
        EXPECT_EQ(real->int64Value(), value);
    }
}

TEST(Number, RealNumbersAreTruncatedTowardZero) {
    EXPECT_EQ(CFNumber::create(72.9)->int16Value(), 72);
    EXPECT_EQ(CFNumber::create(-72.9)->int32Value(), -72);
    EXPECT_EQ(CFNumber::create(65537.5)->uint16Value(), 1);
    EXPECT_EQ(CFNumber::create(std::nan(""))->int64Value(), 0);
    EXPECT_EQ(CFNumber::create(1e300)->int64Value(), INT64_MAX);
}

TEST(Number, AnyNumberButZeroIsTrue) {
    EXPECT_TRUE(CFNumber::create(int64_t{256})->boolValue());
    EXPECT_TRUE(CFNumber::create(0.25)->boolValue());
    EXPECT_FALSE(CFNumber::create(-0.0)->boolValue());
    EXPECT_FALSE(CFNumber::create(int64_t{0})->boolValue());
    EXPECT_EQ(CFNumber::createBoolean(true)->int16Value(), 1);
    EXPECT_EQ(CFNumber::createBoolean(false)->doubleValue(), 0.0);
}

TEST(Number, EqualityIsNumericWhateverTheKinds) {
    const auto one = CFNumber::create(int64_t{1});
    EXPECT_TRUE(one->isEqual(CFNumber::create(1.0).get()));
    EXPECT_TRUE(one->isEqual(CFNumber::createBoolean(true).get()));
    EXPECT_TRUE(CFNumber::createBoolean(true)->isEqual(CFNumber::create(1.0).get()));
    EXPECT_FALSE(one->isEqual(CFNumber::create(1.5).get()));
    EXPECT_FALSE(one->isEqual(CFString::create("1").get()));
    EXPECT_FALSE(one->isEqual(nullptr));
    EXPECT_TRUE(CFNumber::create(0.0)->isEqual(CFNumber::create(-0.0).get()));
}

TEST(Number, EqualityIsExactWhereRealNumbersAreCoarse) {
    const int64_t odd = (int64_t{1} << 53) + 1;
    EXPECT_FALSE(CFNumber::create(odd)->isEqual(CFNumber::create(0x1p53).get()));
    EXPECT_FALSE(CFNumber::create(0x1p53)->isEqual(CFNumber::create(odd).get()));
    EXPECT_FALSE(CFNumber::create(INT64_MAX)->isEqual(CFNumber::create(0x1p63).get()));
    EXPECT_TRUE(CFNumber::create(INT64_MIN)->isEqual(CFNumber::create(-0x1p63).get()));
    EXPECT_FALSE(CFNumber::create(int64_t{0})->isEqual(CFNumber::create(std::nan("")).get()));
}

TEST(Number, EqualNumbersHaveEqualHashes) {
    EXPECT_EQ(CFNumber::create(int64_t{7})->hash(), CFNumber::create(7.0)->hash());
    EXPECT_EQ(CFNumber::create(0.0)->hash(), CFNumber::create(-0.0)->hash());
    EXPECT_EQ(CFNumber::createBoolean(true)->hash(), CFNumber::create(int64_t{1})->hash());
}

}  // namespace

}  // namespace fi::test

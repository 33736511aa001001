// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/TagValue.h"

#include <gtest/gtest.h>

#include <array>
#include <string_view>

namespace fi {
namespace {

using Numbers = std::array<uint16_t, 6>;

Numbers numbersOf(std::string_view text) {
    uint16_t numbers[6];
    splitDate(text, numbers);
    return std::to_array(numbers);
}

TEST(TagValue, DatesAreSplitIntoSixNumbers) {
    EXPECT_EQ(numbersOf("2019:05:06 10:11:12"), (Numbers{2019, 5, 6, 10, 11, 12}));
    EXPECT_EQ(numbersOf("2019/05/06 10:11:12"), (Numbers{2019, 5, 6, 10, 11, 12}));
    EXPECT_EQ(numbersOf("2019:05:06 10:11:12:13"), (Numbers{2019, 5, 6, 10, 11, 12}));
}

TEST(TagValue, MissingFieldsOfADateEqualTheFirst) {
    EXPECT_EQ(numbersOf("2019:05:06"), (Numbers{2019, 5, 6, 2019, 2019, 2019}));
    EXPECT_EQ(numbersOf("2019"), (Numbers{2019, 2019, 2019, 2019, 2019, 2019}));
    EXPECT_EQ(numbersOf(""), Numbers{});
}

TEST(TagValue, EmptyFieldsOfADateAreZero) {
    EXPECT_EQ(numbersOf("    :  :     :  :  "), Numbers{});
    EXPECT_EQ(numbersOf("2019::06"), (Numbers{2019, 0, 6, 2019, 2019, 2019}));
    EXPECT_EQ(numbersOf("2019:05:06 "), (Numbers{2019, 5, 6, 0, 2019, 2019}));
}

TEST(TagValue, NumbersAreTheLeadingDigits) {
    EXPECT_EQ(leadingNumber("0220"), 220);
    EXPECT_EQ(leadingNumber("12x4"), 12);
    EXPECT_EQ(leadingNumber("-5"), 0);
    EXPECT_EQ(leadingNumber("65537"), 1);
    EXPECT_EQ(leadingNumber(std::string_view("\0\0\0\0", 4)), 0);
}

}  // namespace
}  // namespace fi

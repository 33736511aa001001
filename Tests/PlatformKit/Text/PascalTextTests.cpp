// SPDX-License-Identifier: Apache-2.0
// Length-prefixed strings, byte order and digits.
#include "PlatformKit/Text/PascalText.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace fi::test {

namespace {

TEST(PascalText, ViewIsAsLongAsItsFirstByteSays) {
    constexpr unsigned char kText[] =
        "\x03"
        "abcd";
    EXPECT_EQ(pascalView(kText), "abc");
    constexpr unsigned char kEmpty[] = {0};
    EXPECT_EQ(pascalView(kEmpty), "");
    PascalBuffer longest;
    longest.fill('x');
    longest[0] = 255;
    EXPECT_EQ(pascalView(longest.data()), std::string(255, 'x'));
}

TEST(PascalText, StoresUpTo255BytesAndClearsTheRest) {
    PascalBuffer buffer;
    buffer.fill(0xEE);
    EXPECT_TRUE(storePascal("abc", buffer));
    EXPECT_EQ(pascalView(buffer.data()), "abc");
    EXPECT_EQ(buffer[4], 0);
    EXPECT_EQ(buffer[255], 0);
    EXPECT_TRUE(storePascal(std::string(255, 'y'), buffer));
    EXPECT_EQ(buffer[255], 'y');
}

TEST(PascalText, LongerTextIsNotStoredAtAll) {
    PascalBuffer buffer;
    ASSERT_TRUE(storePascal("before", buffer));
    EXPECT_FALSE(storePascal(std::string(256, 'y'), buffer));
    EXPECT_EQ(pascalView(buffer.data()), "before");
}

TEST(PascalText, ComparesBytesAsUnsignedNumbers) {
    EXPECT_EQ(compareBytes("", ""), 0);
    EXPECT_EQ(compareBytes("a", "a"), 0);
    EXPECT_EQ(compareBytes("", "a"), -1);
    EXPECT_EQ(compareBytes("ab", "a"), 1);
    EXPECT_EQ(compareBytes("Z", "a"), -1) << "capitals come first";
    EXPECT_EQ(compareBytes("\x80", "\x7F"), 1);
    EXPECT_EQ(compareBytes(std::string_view("a\0b", 3), std::string_view("a\0c", 3)), -1);
}

TEST(PascalText, ComparingIsAnOrder) {
    std::mt19937 random(2);
    const auto text = [&random] {
        std::string result;
        for (size_t i = random() % 4; i > 0; --i)
            result += static_cast<char>(random() % 3 * 100);
        return result;
    };
    for (int i = 0; i < 5000; ++i) {
        const std::string a = text();
        const std::string b = text();
        EXPECT_EQ(compareBytes(a, b), -compareBytes(b, a));
        EXPECT_EQ(compareBytes(a, b) == 0, a == b);
        EXPECT_EQ(compareBytes(a, b) < 0, a < b);
    }
}

TEST(PascalText, ReadsDigitsUpToAnotherCharacter) {
    EXPECT_EQ(numberFromDigits("0042"), 42);
    EXPECT_EQ(numberFromDigits("12a3"), 12);
    EXPECT_EQ(numberFromDigits(""), 0);
    EXPECT_EQ(numberFromDigits("-5"), 0);
    EXPECT_EQ(numberFromDigits(" 5"), 0);
    EXPECT_EQ(numberFromDigits("2147483647"), 2147483647);
}

TEST(PascalText, DigitsBeyondTheRangeWrap) {
    EXPECT_EQ(numberFromDigits("4294967295"), -1);
    EXPECT_EQ(numberFromDigits("4294967296"), 0);
    EXPECT_EQ(numberFromDigits("99999999999999999999"), 1661992959);
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
#include "Text.h"

#include <gtest/gtest.h>

#include <clocale>

namespace fi::test {
namespace {

TEST(Text, TellsUtf8FromOtherBytes) {
    EXPECT_TRUE(isUtf8(""));
    EXPECT_TRUE(isUtf8("K\u00fcste \u6771\u4eac \U0001F4F7"));
    EXPECT_FALSE(isUtf8("K\xFCste"));
    EXPECT_FALSE(isUtf8("\xC0\xAF"));          // a slash in two bytes
    EXPECT_FALSE(isUtf8("\xED\xA0\x80"));      // half of a pair
    EXPECT_FALSE(isUtf8("\xF4\x90\x80\x80"));  // beyond the last character
    EXPECT_FALSE(isUtf8("\xE6\x9D"));          // cut
}

TEST(Text, ReplacesEachByteThatIsNoUtf8) {
    EXPECT_EQ(asUtf8("a\xFF\xFE"
                     "b"),
              "a\uFFFD\uFFFD"
              "b");
    EXPECT_EQ(asUtf8("\xE6\x9D"), "\uFFFD\uFFFD");
    EXPECT_EQ(asUtf8("K\u00fcste"), "K\u00fcste");
}

TEST(Text, EscapesWhatWouldSteerATerminal) {
    EXPECT_EQ(printable("a\x1b[31m\nb\tc\r\x7f"), "a\\x1b[31m\\nb\\tc\\r\\x7f");
    EXPECT_EQ(printable("\u009b"
                        "1m"),
              "\\x9b1m");
    EXPECT_EQ(printable("gnp\u202egpj.jpg"), "gnp\\u202egpj.jpg");
    EXPECT_EQ(printable("\u2028"), "\\u2028");
    EXPECT_EQ(printable("K\u00fcste \u6771\u4eac.jpg"), "K\u00fcste \u6771\u4eac.jpg");
}

TEST(Text, MeasuresTextInColumnsOfATerminal) {
    const std::string before = setlocale(LC_CTYPE, nullptr);
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    EXPECT_EQ(displayWidth("abc"), 3U);
    EXPECT_EQ(displayWidth("K\u00fcste"), 5U);
    EXPECT_EQ(displayWidth("Ku\u0308ste"), 5U);  // the dots take no room
    EXPECT_EQ(displayWidth("\u6771\u4eac"), 4U);
    EXPECT_EQ(displayWidth("\xFF"), 1U);
    setlocale(LC_CTYPE, before.c_str());
}

TEST(Text, ShortensWhatIsTooWideWithAnEllipsis) {
    const std::string before = setlocale(LC_CTYPE, nullptr);
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    EXPECT_EQ(shortened("abcd", 4), "abcd");
    EXPECT_EQ(shortened("abcde", 4), "abc\u2026");
    EXPECT_EQ(shortened("\u6771\u4eac\u6771", 5), "\u6771\u4eac\u2026");
    EXPECT_EQ(shortened("\u6771\u4eac\u6771", 4), "\u6771\u2026");  // no half of a wide character
    EXPECT_EQ(shortened("", 4), "");
    setlocale(LC_CTYPE, before.c_str());
}

TEST(Text, EncodesBytesInBase64) {
    EXPECT_EQ(base64(""), "");
    EXPECT_EQ(base64("a"), "YQ==");
    EXPECT_EQ(base64("ab"), "YWI=");
    EXPECT_EQ(base64("abc"), "YWJj");
    EXPECT_EQ(base64("abcd"), "YWJjZA==");
    EXPECT_EQ(base64("\xFF\xFE\xFD"), "//79");
}

TEST(Text, TellsSizesInUnitsForPeople) {
    EXPECT_EQ(readableSize(0), "0 B");
    EXPECT_EQ(readableSize(999), "999 B");
    EXPECT_EQ(readableSize(1000), "1.0 kB");
    EXPECT_EQ(readableSize(3'441'000), "3.4 MB");
    EXPECT_EQ(readableSize(999'949), "999.9 kB");
    EXPECT_EQ(readableSize(999'950), "1.0 MB");
    EXPECT_EQ(readableSize(UINT64_MAX), "18446.7 PB");
}

TEST(Text, TakesTheNameBehindTheLastSlash) {
    EXPECT_EQ(fileName("/card/DCIM/a.jpg"), "a.jpg");
    EXPECT_EQ(fileName("a.jpg"), "a.jpg");
    EXPECT_EQ(fileName("folder/"), "");
}

}  // namespace
}  // namespace fi::test

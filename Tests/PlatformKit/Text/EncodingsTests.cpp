// SPDX-License-Identifier: Apache-2.0
// Other encodings to UTF-8 and back: whole or not at all.
#include "PlatformKit/Text/Encodings.h"

#include <gtest/gtest.h>
#include <locale.h>
#include <stdlib.h>

#include <array>
#include <map>
#include <optional>
#include <string>

namespace fi::test {

namespace {

std::string utf16(std::u16string_view units) {
    return std::string(reinterpret_cast<const char*>(units.data()), units.size() * 2);
}

TEST(Encodings, ASCIIIsStrict) {
    EXPECT_EQ(toUTF8("IMG_0001", TextEncoding::ASCII), "IMG_0001");
    EXPECT_EQ(toUTF8("a\x80", TextEncoding::ASCII), std::nullopt);
    EXPECT_EQ(toUTF8("\xC3\xA9", TextEncoding::ASCII), std::nullopt);
    EXPECT_EQ(fromUTF8("plain", TextEncoding::ASCII), "plain");
    EXPECT_EQ(fromUTF8("\xC3\xA9", TextEncoding::ASCII), std::nullopt);
}

TEST(Encodings, UTF8IsCheckedBothWays) {
    EXPECT_EQ(toUTF8("\xC3\xA9", TextEncoding::UTF8), "\xC3\xA9");
    for (const std::string_view broken : {"\xFF", "\xC3", "\xED\xA0\x80", "\xC0\xAF"}) {
        EXPECT_EQ(toUTF8(broken, TextEncoding::UTF8), std::nullopt);
        EXPECT_EQ(fromUTF8(broken, TextEncoding::UTF8), std::nullopt);
        EXPECT_EQ(fromUTF8(broken, TextEncoding::UTF16), std::nullopt);
    }
}

TEST(Encodings, UTF16IsInNativeOrderTwoBytesAUnit) {
    EXPECT_EQ(toUTF8(utf16(u"A\u00E9\u65E5"), TextEncoding::UTF16), "A\xC3\xA9\xE6\x97\xA5");
    EXPECT_EQ(toUTF8(utf16(u"\U0001F4F7"), TextEncoding::UTF16), "\xF0\x9F\x93\xB7");
    EXPECT_EQ(fromUTF8("A\xF0\x9F\x93\xB7", TextEncoding::UTF16), utf16(u"A\U0001F4F7"));
}

TEST(Encodings, BrokenUTF16IsNotConverted) {
    EXPECT_EQ(toUTF8(utf16(u"AB").substr(0, 3), TextEncoding::UTF16), std::nullopt) << "an odd byte";
    const char16_t high[] = {0xD83D, u'A'};
    EXPECT_EQ(toUTF8(utf16({high, 2}), TextEncoding::UTF16), std::nullopt);
    EXPECT_EQ(toUTF8(utf16({high, 1}), TextEncoding::UTF16), std::nullopt);
    const char16_t low[] = {0xDCF7};
    EXPECT_EQ(toUTF8(utf16({low, 1}), TextEncoding::UTF16), std::nullopt);
}

TEST(Encodings, ShiftJISIsThatOfWindows) {
    EXPECT_EQ(toUTF8("\x93\xFA\x96\x7B", TextEncoding::ShiftJIS), "\xE6\x97\xA5\xE6\x9C\xAC");  // 日本
    EXPECT_EQ(toUTF8("\xB1", TextEncoding::ShiftJIS), "\xEF\xBD\xB1");      // half-width ｱ
    EXPECT_EQ(toUTF8("\x87\x40", TextEncoding::ShiftJIS), "\xE2\x91\xA0");  // ①, beyond plain Shift-JIS
    EXPECT_EQ(toUTF8("\x5C\x7E", TextEncoding::ShiftJIS), "\\~") << "no yen sign, no overline";
    EXPECT_EQ(fromUTF8("\xE6\x97\xA5\xE6\x9C\xAC", TextEncoding::ShiftJIS), "\x93\xFA\x96\x7B");
}

TEST(Encodings, BrokenShiftJISIsNotConverted) {
    EXPECT_EQ(toUTF8("\x93", TextEncoding::ShiftJIS), std::nullopt) << "half of a character";
    EXPECT_EQ(toUTF8("a\xFF", TextEncoding::ShiftJIS), std::nullopt);
    EXPECT_EQ(fromUTF8("\xF0\x9F\x93\xB7", TextEncoding::ShiftJIS), std::nullopt);
}

TEST(Encodings, EmptyTextIsEmptyInAll) {
    for (const TextEncoding encoding : {TextEncoding::UTF8, TextEncoding::ASCII, TextEncoding::UTF16,
                                        TextEncoding::ShiftJIS, TextEncoding::SystemDefault}) {
        EXPECT_EQ(toUTF8("", encoding), "");
        EXPECT_EQ(fromUTF8("", encoding), "");
    }
}

TEST(Encodings, LongTextIsConvertedWhole) {
    std::string text;
    for (int i = 0; i < 5000; ++i)
        text += i % 3 == 0 ? "\xE6\x97\xA5" : "ab";
    for (const TextEncoding encoding : {TextEncoding::UTF16, TextEncoding::ShiftJIS}) {
        const auto there = fromUTF8(text, encoding);
        ASSERT_TRUE(there);
        EXPECT_EQ(toUTF8(*there, encoding), text);
    }
}

TEST(Encodings, EveryDoubleByteOfShiftJISThatConvertsKeepsItsCharacter) {
    size_t converted = 0;
    for (unsigned lead = 0x81; lead <= 0xFC; ++lead) {
        for (unsigned trail = 0x40; trail <= 0xFC; ++trail) {
            const std::array<char, 2> bytes = {static_cast<char>(lead), static_cast<char>(trail)};
            const auto text = toUTF8({bytes.data(), 2}, TextEncoding::ShiftJIS);
            if (!text) continue;
            ++converted;
            // Some characters stand twice in the table, so the bytes may differ, but not the character.
            const auto back = fromUTF8(*text, TextEncoding::ShiftJIS);
            ASSERT_TRUE(back);
            EXPECT_EQ(toUTF8(*back, TextEncoding::ShiftJIS), text);
        }
    }
    EXPECT_GT(converted, 7000U);
}

/// Locale variables of the environment for the length of a scope.
class Environment {
public:
    explicit Environment(const char* all) {
        for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
            if (const char* value = getenv(name)) m_before[name] = value;
            unsetenv(name);
        }
        if (all != nullptr) setenv("LC_ALL", all, 1);
    }
    ~Environment() {
        for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
            unsetenv(name);
            if (m_before.contains(name)) setenv(name, m_before[name].c_str(), 1);
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    std::map<std::string, std::string> m_before;
};

TEST(Encodings, SystemDefaultIsUTF8WithoutAnotherWish) {
    for (const char* locale :
         {static_cast<const char*>(nullptr), "C", "POSIX", "C.UTF-8", "xx_NOT.INSTALLED"}) {
        const Environment environment(locale);
        EXPECT_EQ(systemCharacterSet(), "UTF-8") << (locale != nullptr ? locale : "none");
        EXPECT_EQ(toUTF8("\xC3\xA9", TextEncoding::SystemDefault), "\xC3\xA9");
        EXPECT_EQ(toUTF8("\xE9", TextEncoding::SystemDefault), std::nullopt);
    }
}

TEST(Encodings, AskingForTheSystemDefaultLeavesTheProcessLocaleAlone) {
    const std::string before = setlocale(LC_ALL, nullptr);
    (void)systemCharacterSet();
    EXPECT_EQ(setlocale(LC_ALL, nullptr), before);
}

}  // namespace

}  // namespace fi::test

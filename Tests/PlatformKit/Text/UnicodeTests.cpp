// SPDX-License-Identifier: Apache-2.0
// Case, length and decomposition of text, valid or not, in no locale.
#include "PlatformKit/Text/Unicode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace fi::test {

namespace {

constexpr std::string_view kDotlessI = "\xC4\xB1";
constexpr std::string_view kCapitalIWithDot = "\xC4\xB0";
constexpr std::string_view kLowerE = "\xC3\xA9";          // é
constexpr std::string_view kUpperE = "\xC3\x89";          // É
constexpr std::string_view kCamera = "\xF0\x9F\x93\xB7";  // beyond the basic plane

std::string randomBytes(std::mt19937& random) {
    // Pieces that make valid, cut and wrong sequences alike.
    static constexpr std::string_view kPieces[] = {
        "a",        "Z",    "\xC3",         "\xA9",     "\xC3\xA9",    "\xF0\x9F",
        "\x93\xB7", "\xFF", "\xE2\x82\xAC", "\xC3\x9F", "\xED\xA0\x80"};
    std::string text;
    for (size_t i = random() % 8; i > 0; --i)
        text += kPieces[random() % std::size(kPieces)];
    return text;
}

TEST(Unicode, TellsASCIIAndValidUTF8) {
    EXPECT_TRUE(isASCII(""));
    EXPECT_TRUE(isASCII("\x01~\x7F"));
    EXPECT_FALSE(isASCII("a\x80"));
    EXPECT_TRUE(isValidUTF8(""));
    EXPECT_TRUE(isValidUTF8(std::string("a\0b", 3)));
    EXPECT_TRUE(isValidUTF8(kCamera));
    for (const std::string_view broken : {"\x80",              // a continuation alone
                                          "\xC3",              // cut
                                          "\xC3(",             // not continued
                                          "\xC0\xAF",          // overlong
                                          "\xE0\x80\xAF",      // overlong
                                          "\xED\xA0\x80",      // half of a surrogate pair
                                          "\xF4\x90\x80\x80",  // beyond the last character
                                          "\xF0\x9F\x93",      // cut
                                          "\xFE", "\xFF"}) {
        EXPECT_FALSE(isValidUTF8(broken)) << testing::PrintToString(broken);
        EXPECT_FALSE(isValidUTF8("abc" + std::string(broken) + "d")) << testing::PrintToString(broken);
    }
}

TEST(Unicode, CountsUTF16UnitsAndSingleBrokenBytes) {
    EXPECT_EQ(utf16Length(""), 0U);
    EXPECT_EQ(utf16Length("abc"), 3U);
    EXPECT_EQ(utf16Length(kLowerE), 1U);
    EXPECT_EQ(utf16Length(kCamera), 2U);
    EXPECT_EQ(utf16Length("a\xFF"
                          "b"),
              3U);
    EXPECT_EQ(utf16Length("\xC3"), 1U);
    EXPECT_EQ(utf16Length("\xF0\x9F\x93"), 3U) << "each byte of a cut character is one";
}

TEST(Unicode, UnitsGiveOneByteForEach) {
    EXPECT_EQ(asciiUnits("abc"), "abc");
    EXPECT_EQ(asciiUnits("a" + std::string(kLowerE) + "b"),
              "a\xFF"
              "b");
    EXPECT_EQ(asciiUnits(kCamera), "\xFF\xFF");
}

TEST(Unicode, LetterIIsAPairEverywhere) {
    EXPECT_EQ(lowercased("I"), "i");
    EXPECT_EQ(uppercased("i"), "I");
    EXPECT_TRUE(equalIgnoringCase("IMG.TIF", "img.tif"));
    EXPECT_FALSE(equalIgnoringCase("i", kDotlessI));
    EXPECT_FALSE(equalIgnoringCase("I", kDotlessI));
    EXPECT_FALSE(equalIgnoringCase("i", kCapitalIWithDot));
}

TEST(Unicode, MapsCaseBeyondASCII) {
    EXPECT_EQ(lowercased(kUpperE), kLowerE);
    EXPECT_EQ(uppercased(kLowerE), kUpperE);
    EXPECT_EQ(lowercased("\xCE\xA3"), "\xCF\x83");           // Σ to σ
    EXPECT_TRUE(equalIgnoringCase("\xCE\xA3", "\xCF\x82"));  // Σ and final ς
    EXPECT_TRUE(
        equalIgnoringCase("stra\xC3\x9F"
                          "e",
                          "STRASSE"));                                              // ß
    EXPECT_TRUE(equalIgnoringCase("\xD0\x96", "\xD0\xB6"));                         // Ж and ж
    EXPECT_EQ(uppercased("\xE6\x97\xA5\xE6\x9C\xAC"), "\xE6\x97\xA5\xE6\x9C\xAC");  // 日本 has no case
}

TEST(Unicode, CaseIsNotNormalisation) {
    EXPECT_FALSE(equalIgnoringCase(kLowerE, "e\xCC\x81"));
    EXPECT_FALSE(equalIgnoringCase("a", "ab"));
    EXPECT_TRUE(equalIgnoringCase("", ""));
}

TEST(Unicode, BrokenBytesAreKeptAndEqualOnlyThemselves) {
    EXPECT_EQ(lowercased("A\xFF"
                         "B"),
              "a\xFF"
              "b");
    EXPECT_EQ(uppercased("a\xC3"), "A\xC3");
    EXPECT_EQ(caseFolded("A\xFF"
                         "B"),
              "a\xFF"
              "b");
    EXPECT_TRUE(equalIgnoringCase("A\xFF", "a\xFF"));
    EXPECT_FALSE(equalIgnoringCase("a\xFF", "a\xFE"));
    EXPECT_FALSE(equalIgnoringCase("a\xFF", "a\xEF\xBF\xBD")) << "no replacement character is made up";
}

TEST(Unicode, NULsAreCharactersLikeOthers) {
    const std::string text("A\0\xC3\x89", 4);
    EXPECT_EQ(lowercased(text), std::string("a\0\xC3\xA9", 4));
    EXPECT_EQ(caseFolded(text), std::string("a\0\xC3\xA9", 4));
    EXPECT_EQ(utf16Length(text), 3U);
}

TEST(Unicode, FoldingTwiceChangesNothingAndAgreesWithComparing) {
    std::mt19937 random(11);
    for (int i = 0; i < 5000; ++i) {
        const std::string a = randomBytes(random);
        const std::string b = i % 2 == 0 ? uppercased(a) : randomBytes(random);
        EXPECT_EQ(caseFolded(caseFolded(a)), caseFolded(a)) << testing::PrintToString(a);
        EXPECT_EQ(equalIgnoringCase(a, b), caseFolded(a) == caseFolded(b));
        EXPECT_TRUE(equalIgnoringCase(a, a));
        EXPECT_EQ(isValidUTF8(lowercased(a)), isValidUTF8(a));
        EXPECT_EQ(utf16Length(a), asciiUnits(a).size());
    }
}

TEST(Unicode, EveryCharacterIsAPairWithItsSimpleMapping) {
    for (char c = 'a'; c <= 'z'; ++c) {
        const std::string lower(1, c);
        const std::string upper(1, static_cast<char>(c - 32));
        EXPECT_EQ(uppercased(lower), upper);
        EXPECT_EQ(lowercased(upper), lower);
        EXPECT_TRUE(equalIgnoringCase(lower, upper));
    }
    EXPECT_EQ(lowercased("[\\]^_`{|}~@09"), "[\\]^_`{|}~@09");
    EXPECT_EQ(uppercased("[\\]^_`{|}~@09"), "[\\]^_`{|}~@09");
}

TEST(Unicode, DecomposesCanonically) {
    EXPECT_EQ(canonicallyDecomposed("plain"), "plain");
    EXPECT_EQ(canonicallyDecomposed(kLowerE), "e\xCC\x81");
    EXPECT_EQ(canonicallyDecomposed("\xE3\x81\x8C"), "\xE3\x81\x8B\xE3\x82\x99");              // が
    EXPECT_EQ(canonicallyDecomposed("\xEA\xB0\x81"), "\xE1\x84\x80\xE1\x85\xA1\xE1\x86\xA8");  // 각
    EXPECT_EQ(canonicallyDecomposed("\xEF\xAC\x81"), "\xEF\xAC\x81") << "ﬁ is not canonical";
    EXPECT_EQ(canonicallyDecomposed("q\xCC\x87\xCC\xA3"), "q\xCC\xA3\xCC\x87") << "marks are put in order";
}

TEST(Unicode, DecompositionIsStableAndLeavesBrokenTextAlone) {
    EXPECT_EQ(canonicallyDecomposed("\xC3\xA9\xFF"), "\xC3\xA9\xFF");
    std::mt19937 random(12);
    for (int i = 0; i < 2000; ++i) {
        const std::string text = randomBytes(random);
        const std::string once = canonicallyDecomposed(text);
        EXPECT_EQ(canonicallyDecomposed(once), once);
        EXPECT_TRUE(isValidUTF8(text) || once == text);
    }
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/DcfNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace fi::test {

namespace {

using Buffer = unsigned char[256];

/// A length-prefixed name for as long as an expression lives.
class Pascal {
public:
    explicit Pascal(std::string_view text) {
        m_bytes[0] = static_cast<unsigned char>(text.size());
        std::copy(text.begin(), text.end(), m_bytes + 1);
    }
    operator const unsigned char*() const { return m_bytes; }  // NOLINT(google-explicit-constructor)
    Buffer& buffer() { return m_bytes; }

private:
    Buffer m_bytes{};
};

std::string textOf(const Buffer& name) {
    return std::string(reinterpret_cast<const char*>(name) + 1, name[0]);
}

int compared(std::string_view a, std::string_view b) {
    return CheckDCFFilesCompare(Pascal(a), Pascal(b));
}

std::string comparePath(const std::string& path) {
    std::string out(path.size() + 64, '?');
    MakeComparePath(path.c_str(), out.data());
    return out.c_str();
}

// The rules once more, step by step as they are written down, on plain strings.
namespace slow {

bool isDigit(char c) {
    return c == '0' || (c >= '1' && c <= '9');
}

int firstDigits(const std::string& s, std::string& run) {
    int position = -1;
    for (size_t i = 0; i < s.size(); ++i) {
        if (isDigit(s[i])) {
            if (position == -1) position = static_cast<int>(i);
            run += s[i];
        } else if (position != -1) {
            break;
        }
    }
    return position;
}

void remove(size_t start, size_t count, std::string& s) {
    const size_t length = s.size();
    if (length < start) return;
    if (start == 0) start = 1;
    if (count > length - start + 1) count = length - start + 1;
    if (start + count <= length) {
        for (size_t i = start; i + count <= length; ++i)
            s[i - 1] = s[i + count - 1];
    }
    s.resize(length - count);
}

bool isDCF(const std::string& s) {
    return s.size() == 12 && isDigit(s[4]) && isDigit(s[5]) && isDigit(s[6]) && isDigit(s[7]);
}

int32_t number(const std::string& run) {
    uint32_t value = 0;
    for (const char c : run)
        value = value * 10 + static_cast<uint32_t>(c - '0');
    return static_cast<int32_t>(value);
}

int bytes(const std::string& a, const std::string& b) {
    const int order = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
    if (order != 0) return order < 0 ? -1 : 1;
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

int compare(const std::string& a, const std::string& b) {
    if (isDCF(b)) return isDCF(a) ? 0 : 1;
    if (isDCF(a)) return -1;
    std::string restA = a;
    std::string restB = b;
    bool firstPass = true;
    while (true) {
        std::string runA;
        std::string runB;
        const int pa = firstDigits(restA, runA);
        const int pb = firstDigits(restB, runB);
        if (pa == -1 && pb == -1) break;
        if (pa < pb) return firstPass && pa == -1 ? 1 : -1;
        if (pb < pa) return firstPass && pb == -1 ? -1 : 1;
        if (number(runA) != number(runB)) return number(runA) < number(runB) ? -1 : 1;
        if (runA.size() != runB.size()) return runA.size() < runB.size() ? -1 : 1;
        firstPass = false;
        remove(1, static_cast<size_t>(pa) + runA.size(), restA);
        remove(1, static_cast<size_t>(pb) + runB.size(), restB);
    }
    return bytes(a, b);
}

}  // namespace slow

class RandomNames {
public:
    /// Short names of few different characters, so that equal beginnings and equal runs are common; now
    /// and then a DCF name, a very long one or a long number.
    std::string next() {
        switch (pick(12)) {
            case 0:
                return "IMG_" + std::to_string(1000 + pick(9000)) + (pick(2) == 0 ? ".JPG" : ".JP");
            case 1:
                return of("ab01", 200 + pick(56));
            case 2:
                return of("a", pick(3)) + of("0123456789", 8 + pick(8)) + of("a1", pick(4));
            default:
                return of("aab_0019.\xC3\xFF", pick(9));
        }
    }
    size_t pick(size_t choices) { return m_engine() % choices; }

private:
    std::string of(std::string_view alphabet, size_t length) {
        std::string text;
        while (text.size() < length)
            text += alphabet[pick(alphabet.size())];
        return text;
    }

    std::mt19937 m_engine{20240517};
};

TEST(DcfNamesTest, PathOfAFileInADcfFolderIsRecognised) {
    struct Case {
        const char* path;
        bool expected;
        const char* why;
    };
    const Case cases[] = {
        {"DCIM:100ABCDE:IMG_0001.JPG", true, "an ordinary path"},
        {"DCIM:999ABCDE:IMG_0001.JPG", true, "the last folder number"},
        {"DCIM:100     :IMG_0001.JPG", true, "the free characters are not looked at"},
        {"DCIM:100ABCDE:anything at all", true, "nor is the file's name"},
        {"DCIM:099ABCDE:IMG_0001.JPG", false, "folder numbers begin at 100"},
        {"DCIM:A00ABCDE:IMG_0001.JPG", false, "first character of the number"},
        {"DCIM:1A0ABCDE:IMG_0001.JPG", false, "second character of the number"},
        {"DCIM:10AABCDE:IMG_0001.JPG", false, "third character of the number"},
        {"DCIM:1/0ABCDE:IMG_0001.JPG", false, "the character before 0"},
        {"DCIM:10:ABCDE:IMG_0001.JPG", false, "the character behind 9 is the separator"},
        {"DCIM::00ABCDE:IMG_0001.JPG", false, "empty folder name"},
        {"DCIM:100ABCD:IMG_0001.JPG", false, "folder name of 7"},
        {"DCIM:100ABCDEF:IMG_0001.JPG", false, "folder name of 9"},
        {"DCIM:100ABCDEIMG_0001.JPG", false, "no file in the folder"},
        {"DCIM:100ABCDE:A:IMG_0001.JPG", false, "a folder further down"},
        {"DCIM:100ABCDE:IMG_0001.JPG:", false, "a colon at the very end"},
        {"DCIM:100ABCDE::MG_0001.JPG", false, "a colon at character 14"},
        {"", false, "nothing"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(IsDCIMFile(c.path), c.expected) << c.path << ": " << c.why;
}

TEST(DcfNamesTest, OneCharacterOfTheRootInItsPlaceIsEnough) {
    const std::string folderAndName = "100ABCDE:IMG_0001.JPG";
    for (const char* root : {"DXXXX", "XCXXX", "XXIXX", "XXXMX", "XXXX:", "DCIM:"})
        EXPECT_TRUE(IsDCIMFile((root + folderAndName).c_str())) << root;
    for (const char* root : {"XXXXX", "CDMI.", "dcim;", ":DCIM", "     "})
        EXPECT_FALSE(IsDCIMFile((root + folderAndName).c_str())) << root;
    EXPECT_TRUE(IsDCIMFile("DXXX:100ABCDE:IMG_0001.JPG"));
}

TEST(DcfNamesTest, PathNeedsNineteenCharacters) {
    EXPECT_TRUE(IsDCIMFile("DCIM:100ABCDE:A.JPG"));
    EXPECT_FALSE(IsDCIMFile("DCIM:100ABCDE:.JPG"));
}

TEST(DcfNamesTest, SortKeyOfADcfPathPutsTheFolderNumberBehindItsText) {
    EXPECT_EQ(comparePath("DCIM:100ABCDE:IMG_0001.JPG"), "DCIM:ABCDE100:IMG_0001.JPG");
    EXPECT_EQ(comparePath("DCIM:987_____:A.JPG"), "DCIM:_____987:A.JPG");
}

TEST(DcfNamesTest, SortKeyKeepsARootThatIsNearlyRight) {
    EXPECT_EQ(comparePath("DXXX:100ABCDE:A.JPGXX"), "DXXX:ABCDE100:A.JPGXX");
}

TEST(DcfNamesTest, SortKeyOfOtherPathsIsTheNameInOnePseudoFolder) {
    EXPECT_EQ(comparePath("Photos:x.jpg"), "XXXX:XXXXXXXX:x.jpg");
    EXPECT_EQ(comparePath("a:b:c:d.jpg"), "XXXX:XXXXXXXX:d.jpg");
    EXPECT_EQ(comparePath("alone.jpg"), "XXXX:XXXXXXXX:alone.jpg");
    EXPECT_EQ(comparePath("folder:"), "XXXX:XXXXXXXX:");
    EXPECT_EQ(comparePath(""), "XXXX:XXXXXXXX:");
    EXPECT_EQ(comparePath("DCIM:100ABCDE:.JPG"), "XXXX:XXXXXXXX:.JPG");
}

TEST(DcfNamesTest, SortKeyFitsIntoFifteenBytesMoreThanThePath) {
    for (const std::string path :
         {"", "alone.jpg", "Photos:x.jpg", "DCIM:100ABCDE:IMG_0001.JPG", "DXXX:100ABCDE:A.JPGXX"}) {
        std::vector<char> out(path.size() + 16, '#');
        MakeComparePath(path.c_str(), out.data());
        EXPECT_EQ(out.back(), '#') << path;
        EXPECT_NE(std::find(out.begin(), out.end(), '\0'), out.end()) << path;
    }
}

TEST(DcfNamesTest, DcfNameHasTwelveCharactersWithANumberInTheMiddle) {
    for (const char* name : {"ABCD1234.JPG", "IMG_0001.JPG", "____9999____"})
        EXPECT_TRUE(CheckDCFFile(Pascal(name))) << name;
    for (const char* name :
         {"ABCD1234.JP", "ABCD1234.JPEG", "ABCDE234.JPG", "ABCD1234JPG", "", "ABCDA234.JPG", "ABCD1A34.JPG",
          "ABCD12A4.JPG", "ABCD123A.JPG", "ABC12345JPEG1"}) {
        EXPECT_FALSE(CheckDCFFile(Pascal(name))) << name;
    }
    EXPECT_TRUE(CheckDCFFile(Pascal("ABC01234.JPG"))) << "more digits than four do not hurt";
}

TEST(DcfNamesTest, NamesAreOrdered) {
    struct Case {
        const char* a;
        const char* b;
        int expected;
        const char* why;
    };
    const Case cases[] = {
        {"IMG_0001.JPG", "IMG_0002.JPG", 0, "two DCF names count as equal"},
        {"IMG_0001.JPG", "photo.jpg", -1, "DCF names come first"},
        {"photo.jpg", "IMG_0001.JPG", 1, "DCF names come first"},
        {"a10", "a9", 1, "by number, not by text"},
        {"a01", "a1", 1, "the shorter of equal numbers first"},
        {"abc", "x1", 1, "a name without digits behind one with"},
        {"x1", "abc", -1, "a name without digits behind one with"},
        {"a1b", "a1", 1, "the rests have no digits: by bytes"},
        {"a1b2", "a1c", 1, "in a later pass the rest without digits goes first"},
        {"a1", "a1b2", -1, "in a later pass the rest without digits goes first"},
        {"b10", "a9", 1, "text before the digits is not compared"},
        {"z9", "a10", -1, "text before the digits is not compared"},
        {"a1", "ab1", -1, "but its length is"},
        {"ab1", "a1", 1, "but its length is"},
        {"a1bb2", "a1b2", 1, "its length in a later pass too"},
        {"b1", "a1", 1, "settled by bytes"},
        {"a1", "b1", -1, "settled by bytes"},
        {"a1", "a1", 0, "the same name"},
        {"", "", 0, "no name"},
        {"", "a", -1, "no name before one without digits"},
        {"", "1", 1, "a name without digits behind one with"},
        {"ab", "abc", -1, "the beginning before the whole"},
        {"a\xFF", "az", 1, "bytes are unsigned"},
        {"a\xC3\xA9", "a~", 1, "bytes are unsigned"},
        {"a4294967297", "a2", -1, "numbers wrap: 2^32 + 1 counts as 1"},
        {"a2147483648", "a1", -1, "numbers are signed: 2^31 counts as negative"},
        {"a4294967297", "a1", 1, "a wrapped number of the same value: the shorter first"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(compared(c.a, c.b), c.expected) << c.a << " and " << c.b << ": " << c.why;
}

TEST(DcfNamesTest, OrderIsTheOneOfTheWrittenRules) {
    RandomNames names;
    for (int round = 0; round < 60'000; ++round) {
        const std::string a = names.next();
        const std::string b = names.pick(8) == 0 ? a : names.next();
        ASSERT_EQ(compared(a, b), slow::compare(a, b)) << a << " and " << b;
    }
}

TEST(DcfNamesTest, OrderTurnedRoundIsTheOpposite) {
    RandomNames names;
    for (int round = 0; round < 20'000; ++round) {
        const std::string a = names.next();
        const std::string b = names.next();
        ASSERT_EQ(compared(a, b), -compared(b, a)) << a << " and " << b;
    }
}

TEST(DcfNamesTest, ComparingLeavesTheNamesAsTheyWere) {
    for (const auto& [a, b] :
         {std::pair("a1b2", "a1c"), std::pair("IMG_0001.JPG", "x"), std::pair("1", "1")}) {
        Pascal nameA(a);
        Pascal nameB(b);
        const Pascal beforeA = nameA;
        const Pascal beforeB = nameB;
        CheckDCFFilesCompare(nameA, nameB);
        EXPECT_EQ(std::memcmp(nameA.buffer(), beforeA, 256), 0) << a;
        EXPECT_EQ(std::memcmp(nameB.buffer(), beforeB, 256), 0) << b;
    }
}

TEST(DcfNamesTest, FirstDigitRunIsFoundWithItsPosition) {
    struct Case {
        const char* name;
        int position;
        const char* run;
    };
    const Case cases[] = {
        {"a12b34", 1, "12"}, {"7", 0, "7"},    {"0a1", 0, "0"},   {"abc", -1, ""},
        {"", -1, ""},        {"abc9", 3, "9"}, {"a/0:9", 2, "0"}, {"a0123456789", 1, "0123456789"}};
    for (const Case& c : cases) {
        Buffer run{};
        EXPECT_EQ(GetFirstDigitPos(Pascal(c.name), run), c.position) << c.name;
        EXPECT_EQ(textOf(run), c.run) << c.name;
    }
}

TEST(DcfNamesTest, DigitRunIsAppendedToWhatTheCallerHas) {
    Pascal run("77");
    EXPECT_EQ(GetFirstDigitPos(Pascal("ab12"), run.buffer()), 2);
    EXPECT_EQ(textOf(run.buffer()), "7712");
}

TEST(DcfNamesTest, DigitRunNeverOverflowsItsBuffer) {
    Pascal run(std::string(250, '1'));
    EXPECT_EQ(GetFirstDigitPos(Pascal(std::string(255, '2')), run.buffer()), 0);
    EXPECT_EQ(textOf(run.buffer()), std::string(250, '1') + "22222");
}

TEST(DcfNamesTest, DigitRunOfALongNameReachesItsLastCharacter) {
    Buffer run{};
    EXPECT_EQ(GetFirstDigitPos(Pascal(std::string(254, 'x') + "5"), run), 254);
    EXPECT_EQ(textOf(run), "5");
}

TEST(DcfNamesTest, FirstDigitRunIsTheOneOfTheWrittenRules) {
    RandomNames names;
    for (int round = 0; round < 20'000; ++round) {
        const std::string name = names.next();
        Buffer run{};
        std::string expected;
        ASSERT_EQ(GetFirstDigitPos(Pascal(name), run), slow::firstDigits(name, expected)) << name;
        ASSERT_EQ(textOf(run), expected) << name;
    }
}

TEST(DcfNamesTest, CharactersAreRemovedFromAOneBasedPlace) {
    struct Case {
        const char* name;
        unsigned char start;
        unsigned char count;
        const char* expected;
        const char* why;
    };
    const Case cases[] = {
        {"abcdef", 2, 3, "aef", "from the middle"},
        {"abcdef", 1, 2, "cdef", "from the beginning"},
        {"abcdef", 0, 2, "cdef", "0 counts as 1"},
        {"abcdef", 6, 1, "abcde", "the last"},
        {"abcdef", 5, 200, "abcd", "the count is cut"},
        {"abcdef", 1, 6, "", "all"},
        {"abcdef", 0, 255, "", "all"},
        {"abcdef", 7, 1, "abcdef", "start beyond the end"},
        {"abcdef", 255, 255, "abcdef", "start beyond the end"},
        {"abcdef", 3, 0, "abcdef", "none"},
        {"", 0, 1, "", "nothing to remove"},
        {"", 1, 1, "", "nothing to remove"},
    };
    for (const Case& c : cases) {
        Pascal name(c.name);
        Remove(c.start, c.count, name.buffer());
        EXPECT_EQ(textOf(name.buffer()), c.expected) << c.why;
    }
}

TEST(DcfNamesTest, RemovalIsTheOneOfTheWrittenRules) {
    RandomNames names;
    for (int round = 0; round < 20'000; ++round) {
        const std::string name = names.next();
        const auto start = static_cast<unsigned char>(names.pick(name.size() + 3));
        const auto count = static_cast<unsigned char>(names.pick(2) == 0 ? names.pick(256) : names.pick(5));
        std::string expected = name;
        slow::remove(start, count, expected);
        Pascal actual(name);
        Remove(start, count, actual.buffer());
        ASSERT_EQ(textOf(actual.buffer()), expected) << name << " " << int{start} << " " << int{count};
    }
}

TEST(DcfNamesTest, DigitStringIsAllDigits) {
    EXPECT_TRUE(CheckDigitString("0189", 4));
    EXPECT_TRUE(CheckDigitString("01x", 2)) << "only the first n are looked at";
    EXPECT_FALSE(CheckDigitString("01x", 3));
    EXPECT_FALSE(CheckDigitString("x", 1));
    EXPECT_FALSE(CheckDigitString("/", 1));
    EXPECT_FALSE(CheckDigitString(":", 1));
    EXPECT_FALSE(CheckDigitString("12", 3)) << "the end is no digit";
    EXPECT_TRUE(CheckDigitString("x", 0));
    EXPECT_TRUE(CheckDigitString("x", -1));
    EXPECT_TRUE(CheckDigitString(nullptr, INT16_MIN));
}

TEST(DcfNamesTest, FoldersAreComparedAsObjectsSoTwoAreNeverTheSame) {
    const auto a = CFURL::createFromPath("/card/DCIM/a.jpg");
    const auto b = CFURL::createFromPath("/card/DCIM/b.jpg");
    const auto other = CFURL::createFromPath("/elsewhere/b.jpg");
    EXPECT_FALSE(FileExistSameFolder(a.get(), b.get()));
    EXPECT_FALSE(FileExistSameFolder(a.get(), a.get()));
    EXPECT_FALSE(FileExistSameFolder(a.get(), other.get()));
    EXPECT_FALSE(FileExistSameFolder(a.get(), nullptr));
    EXPECT_FALSE(FileExistSameFolder(nullptr, nullptr));
}

TEST(DcfNamesTest, LocationsWithoutAFolderAreNotInTheSameFolder) {
    const auto page = CFURL::createFromString("http://example.org/a.jpg");
    ASSERT_TRUE(page);
    EXPECT_FALSE(FileExistSameFolder(page.get(), page.get()));
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// What names promise: the importer's types by extension tables, and the families by suffix.
#include "Foundation/FileTypes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "Foundation/TestText.h"

namespace fi::test {

namespace {

CFStringRef typeOf(std::string_view name) {
    return fileTypeOfName(text(name).get());
}

using Family = bool (*)(CFStringRef path);

struct NamedFamily {
    const char* name;
    Family holds;
    std::vector<std::string> suffixes;
};

const NamedFamily kSuffixFamilies[] = {
    {"jpeg", &isJpegFile, {".jpg", ".jpeg"}},
    {"tiff", &isTiffFile, {".tif", ".tiff"}},
    {"pict", &isPictFile, {".pct", ".pict"}},
    {"bmp", &isBMPFile, {".bmp"}},
    {"supported", &isSupportedFile, {".jpg", ".jpeg", ".tif", ".tiff", ".bmp", ".pct", ".pict", ".qal"}},
};

std::string lower(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return name;
}

std::string mixedCase(const std::string& name, unsigned pattern) {
    std::string result = name;
    for (size_t i = 0; i < name.size(); ++i) {
        if ((pattern >> i & 1U) != 0 && name[i] >= 'a' && name[i] <= 'z')
            result[i] = static_cast<char>(name[i] - 32);
    }
    return result;
}

/// The last component by hand: trailing slashes go, then everything up to the last slash.
std::string componentByHand(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path.find('/') == std::string::npos || path == "/" ? path : path.substr(path.rfind('/') + 1);
}

/// The path extension by hand: none for a name whose only dots lead it, and none behind a final dot.
std::string extensionByHand(const std::string& path) {
    const std::string name = componentByHand(path);
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos) return "";
    if (name.substr(0, dot).find_first_not_of('.') == std::string::npos) return "";
    return name.substr(dot + 1);
}

bool endsWith(const std::string& name, const std::string& suffix) {
    return name.size() >= suffix.size() &&
           name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0;
}

class RandomPaths {
public:
    std::string next() {
        static const std::vector<std::string> kPieces = {
            "/",    ".",    "a",    "jpg",  ".jpg", ".JPEG", ".tif",   ".TiFf", ".pct",   ".pict", ".pic",
            ".bmp", ".qal", ".QAL", ".pdf", ".PdF", ".qal/", "x.jpg/", "..",    "\u00e9", "q",     ".jp"};
        std::string path;
        for (size_t pieces = m_random() % 5; pieces > 0; --pieces)
            path += kPieces[m_random() % kPieces.size()];
        return path;
    }

private:
    std::mt19937 m_random{1303};
};

}  // namespace

TEST(FileTypesTest, NamesGiveTheirTypes) {
    struct Case {
        const char* name;
        CFStringRef type;
    };
    const Case cases[] = {
        {"photo.jpeg", kUTTypeJPEG}, {"PHOTO.JPG", kUTTypeJPEG},  {"a.b.Tif", kUTTypeTIFF},
        {"scan.tiff", kUTTypeTIFF},  {"scan.pic", kUTTypePICT},   {"scan.pict", kUTTypePICT},
        {"scan.PCT", kUTTypePICT},   {"doc.PDF", kUTTypePDF},     {"image.png", kUTTypeImage},
        {"image.bmp", kUTTypeImage}, {"album.qal", kUTTypeImage},
    };
    for (const Case& c : cases)
        EXPECT_EQ(typeOf(c.name), c.type) << c.name;
}

TEST(FileTypesTest, OnlyTheLastExtensionCounts) {
    EXPECT_EQ(typeOf("x.jpg.tmp"), kUTTypeImage);
    EXPECT_EQ(typeOf("x.tmp.jpg"), kUTTypeJPEG);
    EXPECT_EQ(typeOf("x.jpg."), kUTTypeImage);
}

TEST(FileTypesTest, NamesWithoutAnExtensionAreGenericImages) {
    EXPECT_EQ(fileTypeOfName(nullptr), kUTTypeImage);
    EXPECT_EQ(typeOf("jpg"), kUTTypeImage);
    EXPECT_EQ(typeOf(""), kUTTypeImage);
}

TEST(FileTypesTest, ANameThatIsOnlyAnExtensionHasItsType) {
    EXPECT_EQ(typeOf(".jpg"), kUTTypeJPEG);
    EXPECT_EQ(typeOf(".PDF"), kUTTypePDF);
}

TEST(FileTypesTest, ExtensionsMustBeWhole) {
    for (const char* name : {"a.jp", "a.jpgx", "a.xjpg", "a.jpe", "a.ti", "a.pi", "a.pdfx", "a. jpg"})
        EXPECT_EQ(typeOf(name), kUTTypeImage) << name;
}

TEST(FileTypesTest, TypesAreTheConstantsThemselves) {
    for (const CFStringRef type :
         {typeOf("a.jpg"), typeOf("a.tif"), typeOf("a.pct"), typeOf("a.pdf"), typeOf("a.gif")})
        EXPECT_GE(type->retainCount(), 0x8000'0000U) << type->view();
}

TEST(FileTypesTest, LettersPairUpInNoLocale) {
    // With Turkish rules, i and I belong to other letters.
    const std::string before = std::setlocale(LC_ALL, nullptr);
    (void)std::setlocale(LC_ALL, "tr_TR.UTF-8");
    EXPECT_EQ(typeOf("a.tif"), kUTTypeTIFF);
    EXPECT_EQ(typeOf("a.TIF"), kUTTypeTIFF);
    EXPECT_TRUE(isTiffFile(text("A.TIFF").get()));
    EXPECT_EQ(typeOf("a.t\u0131f"), kUTTypeImage) << "dotless i";
    EXPECT_EQ(typeOf("a.T\u0130F"), kUTTypeImage) << "dotted I";
    EXPECT_FALSE(isTiffFile(text("a.t\u0131f").get()));
    EXPECT_FALSE(isTiffFile(text("a.T\u0130F").get()));
    EXPECT_FALSE(isPictFile(text("a.P\u0130CT").get()));
    EXPECT_FALSE(isTiffFile(text("a.TI\uFB00").get())) << "a ligature is another letter";
    (void)std::setlocale(LC_ALL, before.c_str());
}

TEST(FileTypesTest, TablesHoldTheirExtensionsAndAnEmptyEnd) {
    const auto entries = [](const ExtensionEntry* table, size_t size) {
        std::vector<std::string> result;
        for (size_t i = 0; i < size; ++i)
            result.emplace_back(pascalView(table[i]));
        return result;
    };
    using Texts = std::vector<std::string>;
    static_assert(sizeof(ExtensionEntry) == 256);
    EXPECT_EQ(entries(kJPEGExtensions, std::size(kJPEGExtensions)), (Texts{".JPG", ".JPEG", ""}));
    EXPECT_EQ(entries(kTIFFExtensions, std::size(kTIFFExtensions)), (Texts{".TIF", ".TIFF", ""}));
    EXPECT_EQ(entries(kPICTExtensions, std::size(kPICTExtensions)), (Texts{".PICT", ".PIC", ".PCT", ""}));
    EXPECT_EQ(entries(kPDFExtensions, std::size(kPDFExtensions)), (Texts{".PDF", ""}));
}

TEST(FileTypesTest, EntriesOfTheTablesAreZeroBehindTheirText) {
    const auto expectZeroTail = [](const ExtensionEntry& entry) {
        EXPECT_TRUE(std::all_of(entry + 1 + entry[0], entry + sizeof entry, [](int c) { return c == 0; }));
    };
    for (const ExtensionEntry& entry : kJPEGExtensions)
        expectZeroTail(entry);
    for (const ExtensionEntry& entry : kPICTExtensions)
        expectZeroTail(entry);
}

TEST(FileTypesTest, ExtensionsMatchTheirTableInAnyCase) {
    for (const char* extension : {".jpg", ".Jpg", ".JPG", ".jPeG"})
        EXPECT_TRUE(isExtensionIn(extension, kJPEGExtensions)) << extension;
    for (const char* extension : {"jpg", ".tif", "", ".jpegs", "a.jpg"})
        EXPECT_FALSE(isExtensionIn(extension, kJPEGExtensions)) << extension;
}

TEST(FileTypesTest, PascalExtensionsMatchLikeTexts) {
    for (const char* extension : {".jpg", ".Jpg", ".JPEG"})
        EXPECT_TRUE(isPascalExtensionIn(pascal(extension).data(), kJPEGExtensions)) << extension;
    for (const char* extension : {"jpg", ".tif", ""})
        EXPECT_FALSE(isPascalExtensionIn(pascal(extension).data(), kJPEGExtensions)) << extension;
}

TEST(FileTypesTest, APascalExtensionThatIsNoTextMatchesNothing) {
    const ExtensionEntry table[] = {"\x02.\xff", "\x04.JPG", ""};
    EXPECT_FALSE(isPascalExtensionIn(pascal(".\xff").data(), table));
}

TEST(FileTypesTest, ATableThatBeginsWithItsEndHoldsNothing) {
    const ExtensionEntry table[] = {"", "\x04.JPG", ""};
    EXPECT_FALSE(isExtensionIn(".jpg", table));
    EXPECT_FALSE(isPascalExtensionIn(pascal(".jpg").data(), table));
    EXPECT_FALSE(isExtensionIn("", table));
}

TEST(FileTypesTest, EntriesThatAreNoTextArePassedOver) {
    const ExtensionEntry table[] = {"\x03.\xff\xfe", "\x04.JPG", ""};
    EXPECT_TRUE(isExtensionIn(".jpg", table));
    EXPECT_FALSE(isExtensionIn(".\xff\xfe", table));
}

TEST(FileTypesTest, NothingBehindTheEndOfATableIsRead) {
    const ExtensionEntry table[] = {"\x04.TIF", "", "\x04.JPG", ""};
    EXPECT_FALSE(isExtensionIn(".jpg", table));
}

TEST(FileTypesTest, PascalNamesGiveTheirTypes) {
    EXPECT_EQ(fileTypeOfPascalName(pascal("photo.jpeg").data()), kUTTypeJPEG);
    EXPECT_EQ(fileTypeOfPascalName(pascal("a.b.Tif").data()), kUTTypeTIFF);
    EXPECT_EQ(fileTypeOfPascalName(pascal("scan.pic").data()), kUTTypePICT);
    EXPECT_EQ(fileTypeOfPascalName(pascal("doc.PDF").data()), kUTTypePDF);
    EXPECT_EQ(fileTypeOfPascalName(pascal("").data()), kUTTypeImage);
    EXPECT_EQ(fileTypeOfPascalName(pascal(std::string(251, '\x7e') + ".jpg").data()), kUTTypeJPEG)
        << "255 bytes, a length that is no signed 8-bit number";
    EXPECT_EQ(fileTypeOfPascalName(pascal("\xff.jpg").data()), kUTTypeImage) << "not UTF-8";
}

TEST(FileTypesTest, URLsGiveTheTypeOfTheirLastComponent) {
    EXPECT_EQ(fileTypeOfURL(urlAt("/card/a.tif/b.jpg").get()), kUTTypeJPEG);
    EXPECT_EQ(fileTypeOfURL(urlAt("/card/a.tif/b").get()), kUTTypeImage);
    EXPECT_EQ(fileTypeOfURL(CFURL::createFromString("file:///a%2Ejpg").get()), kUTTypeJPEG);
}

TEST(FileTypesTest, NoURLIsAGenericImageAndNoNameIsNoType) {
    EXPECT_EQ(fileTypeOfURL(nullptr), kUTTypeImage);
    EXPECT_EQ(fileTypeOfURL(urlWithoutPath().get()), nullptr);
}

TEST(FileTypesTest, FamiliesHoldTheirSuffixesInAnyCase) {
    for (const NamedFamily& family : kSuffixFamilies) {
        for (const std::string& suffix : family.suffixes) {
            for (unsigned pattern = 0; pattern < 1U << suffix.size(); ++pattern) {
                const std::string path = "/DCIM/a" + mixedCase(suffix, pattern);
                EXPECT_TRUE(family.holds(text(path).get())) << family.name << " " << path;
            }
        }
    }
}

TEST(FileTypesTest, FamiliesHoldNothingElse) {
    for (const NamedFamily& family : kSuffixFamilies) {
        for (const char* path : {"", "/", "a", "jpg", "a.png", "a.gif", "a.pdf", "a.pic", "a.jpg.tmp",
                                 "a.jpg ", "a.bmpx", "a.qalx", "a.jpe"})
            EXPECT_FALSE(family.holds(text(path).get())) << family.name << " " << path;
        EXPECT_FALSE(family.holds(nullptr)) << family.name;
    }
}

TEST(FileTypesTest, SupportedFilesAreJpegTiffBmpPictAndQalButNotPdf) {
    EXPECT_TRUE(isSupportedFile(text("a.JPEG").get()));
    EXPECT_TRUE(isSupportedFile(text("a.qal").get()));
    EXPECT_FALSE(isSupportedFile(text("a.pdf").get()));
}

TEST(FileTypesTest, PicIsKnownToTheTypesAndToNoFamily) {
    EXPECT_EQ(typeOf("a.pic"), kUTTypePICT);
    EXPECT_FALSE(isPictFile(text("a.pic").get()));
    EXPECT_FALSE(isSupportedFile(text("a.pic").get()));
}

TEST(FileTypesTest, ANameThatIsOnlyASuffixBelongsToItsFamily) {
    EXPECT_TRUE(isJpegFile(text(".jpg").get()));
    EXPECT_TRUE(isJpegFile(text("/card/.JPEG").get()));
    EXPECT_TRUE(isTiffFile(text(".tif").get()));
    EXPECT_TRUE(isSupportedFile(text(".qal").get()));
}

TEST(FileTypesTest, OnlyTheLastComponentOfAPathCounts) {
    EXPECT_FALSE(isJpegFile(text("/card/x.jpg/readme").get()));
    EXPECT_FALSE(isSupportedFile(text("x.tif/readme").get()));
    EXPECT_FALSE(isPDFFile(text("x.pdf/readme").get()));
    EXPECT_FALSE(isQALFile(text("x.qal/readme").get()));
    EXPECT_TRUE(isJpegFile(text("/card/x.jpg/").get())) << "a slash at the end says nothing";
}

TEST(FileTypesTest, PdfFilesAreToldByTheirExtensionInAnyCase) {
    for (const char* path : {"a.PdF", "a.pdf", "/x/a.b.PDF"})
        EXPECT_TRUE(isPDFFile(text(path).get())) << path;
    for (const char* path : {"a.pd", "a.pdfx", "pdf", "apdf", "a.pdf.tmp", "a.", ""})
        EXPECT_FALSE(isPDFFile(text(path).get())) << path;
    EXPECT_FALSE(isPDFFile(nullptr));
}

TEST(FileTypesTest, ANameThatIsOnlyAnExtensionIsNoPdfAndNoQalFile) {
    EXPECT_FALSE(isPDFFile(text(".pdf").get()));
    EXPECT_FALSE(isPDFFile(text("/card/.PDF").get()));
    EXPECT_FALSE(isQALFile(text(".qal").get()));
}

TEST(FileTypesTest, QalFilesAreToldByTheirExtensionInAnyCase) {
    for (const char* path : {"a.QAL", "a.qal", "/x/a.b.Qal"})
        EXPECT_TRUE(isQALFile(text(path).get())) << path;
    for (const char* path : {"a.qa", "a.qalx", "qal", "aqal", "a.qal.tmp"})
        EXPECT_FALSE(isQALFile(text(path).get())) << path;
    EXPECT_FALSE(isQALFile(nullptr));
}

TEST(FileTypesTest, FamiliesAgreeWithTheirRulesOnRandomPaths) {
    RandomPaths paths;
    for (int round = 0; round < 20000; ++round) {
        const std::string path = paths.next();
        const auto object = text(path);
        const std::string name = lower(componentByHand(path));
        for (const NamedFamily& family : kSuffixFamilies) {
            const bool wanted =
                std::any_of(family.suffixes.begin(), family.suffixes.end(),
                            [&](const std::string& suffix) { return endsWith(name, suffix); });
            ASSERT_EQ(family.holds(object.get()), wanted) << family.name << " \"" << path << '"';
        }
        ASSERT_EQ(isPDFFile(object.get()), lower(extensionByHand(path)) == "pdf") << '"' << path << '"';
        ASSERT_EQ(isQALFile(object.get()), lower(extensionByHand(path)) == "qal") << '"' << path << '"';
    }
}

TEST(FileTypesTest, FourCharacterCodesTakeThreeBytesAtMost) {
    const auto codeOf = [](std::string_view bytes) { return osTypeOfString(text(bytes).get()); };
    const auto word = [](const std::array<char, 4>& bytes) {
        OSType code = 0;
        std::memcpy(&code, bytes.data(), sizeof code);
        return code;
    };
    EXPECT_EQ(codeOf("abc"), word({'a', 'b', 'c', '\0'}));
    EXPECT_EQ(codeOf("ab"), word({'a', 'b', '\0', '\0'}));
    EXPECT_EQ(codeOf(""), 0U);
    EXPECT_EQ(codeOf("JPEG"), 0x3F3F3F3FU);
    EXPECT_EQ(codeOf("public.jpeg"), 0x3F3F3F3FU);
    EXPECT_EQ(osTypeOfString(nullptr), 0x3F3F3F3FU);
}

TEST(FileTypesTest, FourCharacterCodesCountBytesNotCharacters) {
    EXPECT_EQ(osTypeOfString(text("\u00e9\u00e9").get()), 0x3F3F3F3FU);
    const OSType code = osTypeOfString(text("a\u00e9").get());
    EXPECT_EQ(std::memcmp(&code, "a\xc3\xa9", 4), 0);
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/FileSearchDC.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "PhotoCollections/Walking.h"
#include "PlatformKit/Text/Unicode.h"

namespace fi::test {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

Ref<FileSearchDC> searchOf(const std::string& folder) {
    auto search = make<FileSearchDC>();
    search->open(fileURL(folder).get());
    return search;
}

Ref<NSMutableArray> arrayOf(const Paths& texts) {
    auto array = NSMutableArray::create();
    for (const std::string& item : texts)
        array->append(text(item));
    return array;
}

// The list

TEST(FileSearchDCTest, NewSearchHasNoList) {
    const auto search = make<FileSearchDC>();
    EXPECT_EQ(search->getFileNum(), 0U);
    EXPECT_EQ(search->getStringAt(0), nullptr);
    EXPECT_EQ(search->getStringAt(1), nullptr);
}

TEST(FileSearchDCTest, EntriesAreCountedFromOne) {
    const auto search = make<FileSearchDC>();
    search->close();
    EXPECT_EQ(search->getStringAt(1), nullptr) << "an empty list";
    search->addFileFromPath(text("/a.jpg").get());
    search->addFileFromPath(text("/b.jpg").get());
    EXPECT_EQ(search->getFileNum(), 2U);
    EXPECT_EQ(search->getStringAt(0), nullptr);
    EXPECT_EQ(search->getStringAt(1)->view(), "/a.jpg");
    EXPECT_EQ(search->getStringAt(2)->view(), "/b.jpg");
    EXPECT_EQ(search->getStringAt(3), nullptr);
    EXPECT_EQ(search->getStringAt(UINT32_MAX), nullptr);
}

TEST(FileSearchDCTest, CloseEmptiesTheListAndWorksWithoutOne) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    const auto search = searchOf(card.path());
    search->close();
    EXPECT_EQ(search->getFileNum(), 0U);
    search->searchStart(1);
    EXPECT_EQ(search->getFileNum(), 1U);
    search->close();
    EXPECT_EQ(search->getFileNum(), 0U);
    search->searchStart(1);
    EXPECT_THAT(paths(*search), ElementsAre(card.at("a.jpg"))) << "the start folder is kept";
}

TEST(FileSearchDCTest, SearchAppendsToWhatIsHeld) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    card.write("m/b.jpg", "");
    const auto search = searchOf(card.path());
    search->addFileFromPath(text("/elsewhere/x.jpg").get());
    search->searchStart(1);
    EXPECT_THAT(paths(*search), ElementsAre("/elsewhere/x.jpg", card.at("a.jpg")));
    search->searchStart(2);
    EXPECT_THAT(paths(*search), ElementsAre("/elsewhere/x.jpg", card.at("a.jpg"), card.at("m/b.jpg")))
        << "what is held is not listed twice";
}

TEST(FileSearchDCTest, SearchComparesPathsAsTheyAreWritten) {
    TemporaryFolder card;
    card.write("\xC3\xA9.jpg", "");
    card.write("A.jpg", "");
    const auto search = searchOf(card.path());
    const Paths held = {card.at("e\xCC\x81.jpg"), card.at("a.jpg")};
    for (const std::string& path : held)
        search->addFileFromPath(text(path).get());
    search->searchStart(1);
    EXPECT_THAT(paths(*search), ElementsAre(held[0], held[1], card.at("A.jpg"), card.at("\xC3\xA9.jpg")));
}

TEST(FileSearchDCTest, SearchWithoutAStartFolderFindsNothing) {
    const auto search = make<FileSearchDC>();
    search->searchStart(256);
    EXPECT_EQ(search->getFileNum(), 0U);
    search->open(nullptr);
    search->searchStart(256);
    EXPECT_EQ(search->getFileNum(), 0U);
}

TEST(FileSearchDCTest, OpenTakesTheFolderOfTheLastCall) {
    TemporaryFolder card;
    card.write("a/1.jpg", "");
    card.write("b/2.jpg", "");
    const auto search = searchOf(card.at("a"));
    search->open(fileURL(card.at("b")).get());
    search->searchStart(1);
    EXPECT_THAT(paths(*search), ElementsAre(card.at("b/2.jpg")));
}

TEST(FileSearchDCTest, StartFolderOutlivesItsURL) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    const auto search = make<FileSearchDC>();
    {
        const auto url = fileURL(card.path());
        search->open(url.get());
        EXPECT_EQ(url->retainCount(), 1U);
    }
    search->searchStart(1);
    EXPECT_THAT(paths(*search), ElementsAre(card.at("a.jpg")));
}

TEST(FileSearchDCTest, ListGivesUpItsPathsInTheEnd) {
    const auto path = text("/a.jpg");
    {
        const auto search = make<FileSearchDC>();
        search->addFileFromPath(path.get());
        EXPECT_EQ(path->retainCount(), 2U);
        EXPECT_EQ(search->getStringAt(1), path.get()) << "stored, not copied";
    }
    EXPECT_EQ(path->retainCount(), 1U);
}

// Walking by hand

TEST(FileSearchDCTest, WalkCountsItsDepthFromTheOneItIsGiven) {
    TemporaryFolder card;
    card.write("1.jpg", "");
    card.write("a/2.jpg", "");
    card.write("a/b/3.jpg", "");
    const auto search = searchOf(card.path());
    const auto from = [&](int32_t depth) {
        const auto array = NSMutableArray::create();
        search->searchFiles(text(card.path()).get(), depth, array.get());
        return array->count();
    };
    EXPECT_EQ(from(0), 0U) << "before a search the depth is 0";
    search->searchStart(2);
    EXPECT_EQ(from(0), 2U);
    EXPECT_EQ(from(1), 1U);
    EXPECT_EQ(from(2), 0U);
    EXPECT_EQ(from(INT32_MAX), 0U);
    EXPECT_EQ(from(-1), 3U);
    EXPECT_EQ(from(INT32_MIN), 3U);
    EXPECT_EQ(search->getFileNum(), 2U) << "the held list is another one";
}

TEST(FileSearchDCTest, WalkWithoutAFolderOrAListDoesNothing) {
    TemporaryFolder card;
    card.write("1.jpg", "");
    const auto search = searchOf(card.path());
    search->searchStart(2);
    const auto array = NSMutableArray::create();
    search->searchFiles(nullptr, 0, array.get());
    EXPECT_EQ(array->count(), 0U);
    search->searchFiles(text(card.path()).get(), 0, nullptr);
    EXPECT_EQ(search->getFileNum(), 1U);
}

TEST(FileSearchDCTest, FoldersOfTheClosedListAreExcluded) {
    const auto search = make<FileSearchDC>();
    for (const char* name : {"TRASH", "trash", "Resource.Frk", "___MOVE&RENAME", "TheVolumeSettingsFolder",
                             "___mov~", "thevol~", ".trashes", "/some/path/Trash", "Trash/"}) {
        EXPECT_FALSE(search->CheckExclusionFolders(text(name).get())) << name;
    }
    for (const char* name : {"TRASH2", "___MOV~1", "THEVOL~1", ".Trash-1000", "", "100ABCDE",
                             "Trash/photos", "RESOURCE", "\xFF"}) {
        EXPECT_TRUE(search->CheckExclusionFolders(text(name).get())) << name;
    }
}

TEST(FileSearchDCTest, ExtensionsOfPhotosAreKnownInAnyCase) {
    const auto search = make<FileSearchDC>();
    for (const char* path :
         {"/x/a.jpg", "a.JPG", "a.jPg", "b.tif", "b.TIF", "c.pct", "d.Pic", "e.jpeg.pic"})
        EXPECT_TRUE(search->CheckJpgOrTif(text(path).get())) << path;
    for (const char* path : {"a.jpeg", "b.tiff", "c.pict", "d.bmp", "e.qal", "f.png", "jpg", ".jpg", "a.",
                             "", "a.jpg.txt", "/x.jpg/a", "a. jpg", "a.j\xFFg"}) {
        EXPECT_FALSE(search->CheckJpgOrTif(text(path).get())) << path;
    }
    EXPECT_FALSE(search->CheckJpgOrTif(nullptr));
}

TEST(FileSearchDCTest, PdfIsAPhotoExactlyWhenTheQuerySaysSo) {
    const auto search = make<FileSearchDC>();
    const auto pdf = text("/card/a.pDf");
    {
        const InstalledPdfQuery query(
            [](const char* path) { return std::string_view(path) == "/card/a.pDf"; });
        EXPECT_TRUE(search->CheckJpgOrTif(pdf.get()));
        EXPECT_FALSE(search->CheckJpgOrTif(text("/card/b.pdf").get()));
        EXPECT_FALSE(search->CheckJpgOrTif(text("/card/.pdf").get()));
    }
    const InstalledPdfQuery query([](const char*) { return false; });
    EXPECT_FALSE(search->CheckJpgOrTif(pdf.get()));
}

// Refreshing

TEST(FileSearchDCTest, UpdateOfAnUnchangedFolderKeepsTheList) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    card.write("m/b.jpg", "");
    const auto search = searchOf(card.path());
    search->searchStart(256);
    const CFStringRef first = search->getStringAt(1);
    EXPECT_FALSE(search->fileUpdate(256));
    EXPECT_EQ(search->getStringAt(1), first) << "the very list is kept";
    EXPECT_EQ(search->getFileNum(), 2U);
}

TEST(FileSearchDCTest, UpdateReplacesTheListWhenAnythingDiffers) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    card.write("b.jpg", "");
    const auto search = searchOf(card.path());
    search->searchStart(256);
    card.write("c.jpg", "");
    EXPECT_TRUE(search->fileUpdate(256));
    EXPECT_THAT(paths(*search), ElementsAre(card.at("a.jpg"), card.at("b.jpg"), card.at("c.jpg")))
        << "added";
    fs::remove(card.at("a.jpg"));
    EXPECT_TRUE(search->fileUpdate(256));
    EXPECT_THAT(paths(*search), ElementsAre(card.at("b.jpg"), card.at("c.jpg"))) << "removed";
    fs::rename(card.at("c.jpg"), card.at("d.jpg"));
    EXPECT_TRUE(search->fileUpdate(256));
    EXPECT_THAT(paths(*search), ElementsAre(card.at("b.jpg"), card.at("d.jpg"))) << "the last renamed";
    fs::rename(card.at("b.jpg"), card.at("a.jpg"));
    EXPECT_TRUE(search->fileUpdate(256));
    EXPECT_THAT(paths(*search), ElementsAre(card.at("a.jpg"), card.at("d.jpg"))) << "the first renamed";
    EXPECT_FALSE(search->fileUpdate(256));
}

TEST(FileSearchDCTest, UpdateToAnEmptyFolderEmptiesTheList) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    const auto search = searchOf(card.path());
    search->searchStart(256);
    fs::remove(card.at("a.jpg"));
    EXPECT_TRUE(search->fileUpdate(256));
    EXPECT_EQ(search->getFileNum(), 0U);
    EXPECT_FALSE(search->fileUpdate(256));
}

TEST(FileSearchDCTest, UpdateTakesItsOwnDepth) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    card.write("m/b.jpg", "");
    const auto search = searchOf(card.path());
    search->searchStart(2);
    EXPECT_TRUE(search->fileUpdate(1));
    EXPECT_THAT(paths(*search), ElementsAre(card.at("a.jpg")));
    EXPECT_TRUE(search->fileUpdate(0));
    EXPECT_EQ(search->getFileNum(), 0U);
}

TEST(FileSearchDCTest, UpdateDropsWhatWasAddedByHand) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    const auto search = searchOf(card.path());
    search->searchStart(1);
    search->addFileFromPath(text("/elsewhere/x.jpg").get());
    search->addFileFromPath(text("/elsewhere/x.jpg").get());
    EXPECT_TRUE(search->fileUpdate(1));
    EXPECT_THAT(paths(*search), ElementsAre(card.at("a.jpg")));
    search->addFileFromPath(text("/elsewhere/x.jpg").get());
    EXPECT_EQ(search->getFileNum(), 2U) << "what was dropped may be added again";
}

TEST(FileSearchDCTest, UpdateComparesWithTheOrderOfTheHeldList) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    card.write("b.jpg", "");
    const auto search = searchOf(card.path());
    search->addFileFromPath(text(card.at("b.jpg")).get());
    search->addFileFromPath(text(card.at("a.jpg")).get());
    EXPECT_TRUE(search->fileUpdate(1));
    EXPECT_THAT(paths(*search), ElementsAre(card.at("a.jpg"), card.at("b.jpg")));
}

TEST(FileSearchDCTest, UpdateWithoutAStartFolderFindsNothing) {
    const auto search = make<FileSearchDC>();
    EXPECT_FALSE(search->fileUpdate(256));
    EXPECT_EQ(search->getFileNum(), 0U);
    search->addFileFromPath(text("/a.jpg").get());
    EXPECT_TRUE(search->fileUpdate(256));
    EXPECT_EQ(search->getFileNum(), 0U);
}

TEST(FileSearchDCTest, ComparisonSaysYesForADifference) {
    const auto search = make<FileSearchDC>();
    struct Case {
        Paths a;
        Paths b;
        bool expected;
    };
    const Case cases[] = {{{}, {}, false},
                          {{}, {"x"}, false},
                          {{"x"}, {"x"}, false},
                          {{"x"}, {"y"}, true},
                          {{"x"}, {"X"}, true},
                          {{"x", "y"}, {"x", "z"}, true},
                          {{"x", "y"}, {"y", "x"}, true},
                          {{"x"}, {"x", "y"}, false},
                          {{"x", "y"}, {"x"}, true},
                          {{"\xC3\xA9"}, {"e\xCC\x81"}, true},
                          {{"x", "y", "z"}, {"x", "y", "z"}, false}};
    for (const Case& c : cases) {
        EXPECT_EQ(search->fileCompare(arrayOf(c.a).get(), arrayOf(c.b).get()), c.expected)
            << testing::PrintToString(c.a) << " and " << testing::PrintToString(c.b);
    }
    EXPECT_FALSE(search->fileCompare(nullptr, arrayOf({"x"}).get()));
    EXPECT_TRUE(search->fileCompare(arrayOf({"x"}).get(), nullptr));
    EXPECT_FALSE(search->fileCompare(arrayOf({}).get(), nullptr));
}

TEST(FileSearchDCTest, SortingLeavesTheOrderAlone) {
    const auto search = make<FileSearchDC>();
    const auto array = arrayOf({"z", "a", "IMG_0001.JPG", "m"});
    search->fileSort(array.get());
    EXPECT_THAT(paths(*array), ElementsAre("z", "a", "IMG_0001.JPG", "m"));
    search->fileSort(nullptr);
}

// Adding by hand

TEST(FileSearchDCTest, PathThatIsHeldInAnotherSpellingIsNotAdded) {
    struct Case {
        const char* held;
        const char* added;
        bool same;
        const char* why;
    };
    const Case cases[] = {
        {"/a.jpg", "/a.jpg", true, "the same"},
        {"/\xC3\xA9.jpg", "/e\xCC\x81.jpg", true, "composed and decomposed"},
        {"/e\xCC\x81.jpg", "/\xC3\xA9.jpg", true, "decomposed and composed"},
        {"/\xE2\x84\xAB", "/\xC3\x85", true, "the unit and the letter"},
        {"/a\xCC\xA3\xCC\x81", "/a\xCC\x81\xCC\xA3", true, "marks in another order"},
        {"/\xEA\xB0\x80", "/\xE1\x84\x80\xE1\x85\xA1", true, "a Korean syllable and its letters"},
        {"/a.jpg", "/A.jpg", false, "case counts"},
        {"/\xEF\xAC\x81", "/fi", false, "a ligature only resembles its letters"},
        {"/e.jpg", "/\xC3\xA9.jpg", false, "the mark counts"},
        {"/a/../b.jpg", "/b.jpg", false, "paths are not tidied"},
        {"/\xFF.jpg", "/\xFF.jpg", true, "the same bytes, no text"},
        {"/\xFF.jpg", "/\xFE.jpg", false, "other bytes, no text"},
        {"/\xFF\xC3\xA9",
         "/\xFF"
         "e\xCC\x81",
         false, "what is no text is compared by its bytes"},
    };
    for (const Case& c : cases) {
        const auto search = make<FileSearchDC>();
        search->addFileFromPath(text(c.held).get());
        search->addFileFromPath(text(c.added).get());
        if (c.same) {
            EXPECT_THAT(paths(*search), ElementsAre(c.held)) << c.why;
        } else {
            EXPECT_THAT(paths(*search), ElementsAre(c.held, c.added)) << c.why;
        }
    }
}

TEST(FileSearchDCTest, PathFoundByASearchIsNotAdded) {
    TemporaryFolder card;
    card.write("\xC3\xA9.jpg", "");
    const auto search = searchOf(card.path());
    search->addFileFromPath(text("/x.jpg").get());
    search->searchStart(1);
    search->addFileFromPath(text(card.at("e\xCC\x81.jpg")).get());
    EXPECT_THAT(paths(*search), ElementsAre("/x.jpg", card.at("\xC3\xA9.jpg")));
}

TEST(FileSearchDCTest, PathMayBeAddedAgainAfterClose) {
    const auto search = make<FileSearchDC>();
    search->addFileFromPath(text("/a.jpg").get());
    search->addFileFromPath(text("/a.jpg").get());
    search->close();
    search->addFileFromPath(text("/a.jpg").get());
    EXPECT_THAT(paths(*search), ElementsAre("/a.jpg"));
}

TEST(FileSearchDCTest, AnyTextMayBeAddedAndNoTextIsNot) {
    const auto search = make<FileSearchDC>();
    search->addFileFromPath(text("relative, no photo").get());
    search->addFileFromPath(text("").get());
    search->addFileFromPath(nullptr);
    EXPECT_THAT(paths(*search), ElementsAre("relative, no photo", ""));
}

TEST(FileSearchDCTest, AddingAgreesWithReadingTheWholeListEachTime) {
    const Paths pieces = {
        "a", "e", "\xC3\xA9", "\xCC\x81", "\xCC\xA3", "\xC3\x85", "\xE2\x84\xAB", "A\xCC\x8A", "\xFF"};
    std::mt19937 engine(7);
    const auto search = make<FileSearchDC>();
    Paths slow;
    for (int round = 0; round < 3000; ++round) {
        if (engine() % 1000 == 0) {
            search->close();
            slow.clear();
        }
        std::string path = "/";
        for (size_t length = 1 + engine() % 4; length > 0; --length)
            path += pieces[engine() % pieces.size()];
        search->addFileFromPath(text(path).get());
        const bool held = std::any_of(slow.begin(), slow.end(), [&path](const std::string& other) {
            return canonicallyDecomposed(other) == canonicallyDecomposed(path);
        });
        if (!held) slow.push_back(path);
    }
    EXPECT_GT(slow.size(), 100U);
    EXPECT_EQ(paths(*search), slow);
}

}  // namespace

}  // namespace fi::test

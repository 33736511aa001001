// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/CFileSearchDC.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <utility>

#include "PhotoCollections/Walking.h"
#include "PlatformKit/Dictionary.h"
#include "PlatformKit/Number.h"

namespace fi::test {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view kType = "historyDataSourceTypeKey";
constexpr std::string_view kSource = "historyDataSourceSourceKey";
constexpr std::string_view kChildren = "historyDataSourceChildrenKey";

using Value = Ref<const NSObject>;

Value arrayOf(std::initializer_list<Value> elements) {
    return CFArray::create(CFArray::Elements(elements));
}

Value dictionaryOf(std::initializer_list<std::pair<std::string_view, Value>> entries) {
    auto dictionary = NSMutableDictionary::create();
    for (const auto& [key, value] : entries)
        dictionary->set(key, value);
    return dictionary;
}

/// A dictionary that holds paths, as `FileAddFromCFArray` takes them.
Value folderOf(std::initializer_list<std::string_view> paths) {
    CFArray::Elements elements;
    for (const std::string_view path : paths)
        elements.push_back(text(path));
    return dictionaryOf({{kChildren, CFArray::create(std::move(elements))}});
}

CFArrayRef asArray(const Value& value) {
    return dynamic_cast<CFArrayRef>(value.get());
}

/// What a search makes of a history list.
Paths pathsOf(const Value& history) {
    CFileSearchDC search;
    search.FileSearchByPList(asArray(history));
    return paths(search);
}

/// A search that holds so many paths, "/1.jpg" to "/<count>.jpg".
class Holding : public CFileSearchDC {
public:
    explicit Holding(unsigned count) {
        for (unsigned i = 1; i <= count; ++i)
            FileAddFromPath(text(numbered("/", i, ".jpg")).get());
    }
    /// Calls a cursor operation; the path that it gives, "-" when it answers no.
    std::string call(bool (CFileSearchDC::*operation)(CFURLRef*)) {
        CFURLRef url = nullptr;
        const bool answer = (this->*operation)(&url);
        if (!answer) return url == nullptr ? "-" : "no, but a location";
        return std::string(adopt(url)->path()->view());
    }
};

// Searching

TEST(CFileSearchDCTest, OpenSaysWhetherTheFolderExists) {
    TemporaryFolder card;
    CFileSearchDC search;
    EXPECT_TRUE(search.Open(fileURL(card.path()).get()));
    EXPECT_FALSE(search.Open(fileURL(card.at("nowhere")).get()));
    EXPECT_FALSE(search.Open(fileURL(card.link("dangling", "nowhere")).get()));
    EXPECT_FALSE(search.Open(nullptr));
    EXPECT_FALSE(search.Open(CFURL::createFromString("http://example.org/").get()));
}

TEST(CFileSearchDCTest, FailedOpenKeepsTheFolderBefore) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    CFileSearchDC search;
    ASSERT_TRUE(search.Open(fileURL(card.path()).get()));
    ASSERT_FALSE(search.Open(fileURL(card.at("nowhere")).get()));
    search.FileSearch(1);
    EXPECT_THAT(paths(search), ElementsAre(card.at("a.jpg")));
}

TEST(CFileSearchDCTest, SearchAlwaysAnswersZero) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    CFileSearchDC search;
    EXPECT_EQ(search.FileSearch(256), 0) << "without a folder";
    ASSERT_TRUE(search.Open(fileURL(card.path()).get()));
    EXPECT_EQ(search.FileSearch(-1), 0);
    EXPECT_EQ(search.FileSearch(256), 0);
    EXPECT_EQ(search.GetListNum(), 1U);
    fs::remove_all(card.path());
    EXPECT_EQ(search.FileSearch(256), 0);
}

TEST(CFileSearchDCTest, SearchPassesItsDepthOn) {
    TemporaryFolder card;
    card.write("a/b/1.jpg", "");
    CFileSearchDC search;
    ASSERT_TRUE(search.Open(fileURL(card.path()).get()));
    search.FileSearch(2);
    EXPECT_EQ(search.GetListNum(), 0U);
    search.FileSearch(3);
    EXPECT_EQ(search.GetListNum(), 1U);
}

TEST(CFileSearchDCTest, CloseEmptiesTheList) {
    Holding search(3);
    search.Close();
    EXPECT_EQ(search.GetListNum(), 0U);
    EXPECT_FALSE(search.SetNowListPos(1));
}

TEST(CFileSearchDCTest, UpdateAnswersZeroAndStoresWhetherTheListWasReplaced) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    CFileSearchDC search;
    ASSERT_TRUE(search.Open(fileURL(card.path()).get()));
    unsigned char changed = 7;
    EXPECT_EQ(search.FileUpdate(1, &changed), 0);
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(search.FileUpdate(1, &changed), 0);
    EXPECT_EQ(changed, 0);
    card.write("b.jpg", "");
    EXPECT_EQ(search.FileUpdate(1, &changed), 0);
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(search.FileUpdate(0, &changed), 0);
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(search.GetListNum(), 0U);
}

TEST(CFileSearchDCTest, UpdateWithoutAnOpenFolderGivesAnEmptyList) {
    Holding search(2);
    unsigned char changed = 7;
    EXPECT_EQ(search.FileUpdate(256, &changed), 0);
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(search.GetListNum(), 0U);
}

TEST(CFileSearchDCTest, SortLeavesTheListAlone) {
    CFileSearchDC search;
    for (const char* path : {"/z.jpg", "/a.jpg", "/m.jpg"})
        search.FileAddFromPath(text(path).get());
    search.Sort(nullptr);
    search.Sort(reinterpret_cast<_FILEARRAY*>(&search));
    EXPECT_THAT(paths(search), ElementsAre("/z.jpg", "/a.jpg", "/m.jpg"));
}

TEST(CFileSearchDCTest, AddingAPathAlwaysAnswersOne) {
    CFileSearchDC search;
    EXPECT_EQ(search.FileAddFromPath(text("/\xC3\xA9.jpg").get()), 1);
    EXPECT_EQ(search.FileAddFromPath(text("/e\xCC\x81.jpg").get()), 1) << "held in another spelling";
    EXPECT_EQ(search.FileAddFromPath(nullptr), 1);
    EXPECT_THAT(paths(search), ElementsAre("/\xC3\xA9.jpg")) << "the first spelling stays as it was given";
}

TEST(CFileSearchDCTest, LinksAddedByHandStayAsGiven) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    const std::string way = card.link("b.jpg", "a.jpg");
    CFileSearchDC search;
    search.FileAddFromPath(text(way).get());
    EXPECT_THAT(paths(search), ElementsAre(way));
}

// Entries and the cursor

TEST(CFileSearchDCTest, NewSearchIsEmptyWithItsCursorAtOne) {
    CFileSearchDC search;
    EXPECT_EQ(search.GetListNum(), 0U);
    EXPECT_EQ(search.GetNowListPos(), 1U);
    EXPECT_FALSE(search.SetNowListPos(1));
}

TEST(CFileSearchDCTest, EntriesAreCountedFromOne) {
    Holding search(2);
    CFURLRef url = nullptr;
    EXPECT_FALSE(search.GetURLAt(&url, 0));
    EXPECT_FALSE(search.GetURLAt(&url, 3));
    EXPECT_FALSE(search.GetURLAt(&url, UINT32_MAX));
    EXPECT_EQ(url, nullptr) << "nothing is stored";
    EXPECT_THAT(paths(search), ElementsAre("/1.jpg", "/2.jpg"));
    EXPECT_EQ(search.GetNowListPos(), 1U) << "the cursor stays";
}

TEST(CFileSearchDCTest, EveryLocationIsNewAndOwnedByTheCaller) {
    Holding search(1);
    CFURLRef first = nullptr;
    CFURLRef second = nullptr;
    ASSERT_TRUE(search.GetURLAt(&first, 1));
    ASSERT_TRUE(search.GetURLAt(&second, 1));
    const auto ownedFirst = adopt(first);
    const auto ownedSecond = adopt(second);
    EXPECT_NE(first, second);
    EXPECT_TRUE(CFEqual(first, second));
    EXPECT_EQ(first->retainCount(), 1U);
    EXPECT_EQ(first->string()->view(), "file:///1.jpg");
}

TEST(CFileSearchDCTest, LocationKeepsBytesThatAreNoText) {
    CFileSearchDC search;
    search.FileAddFromPath(text("/\xFF\xFE.jpg").get());
    EXPECT_THAT(paths(search), ElementsAre("/\xFF\xFE.jpg"));
}

TEST(CFileSearchDCTest, CursorGoesOnlyToEntries) {
    Holding search(3);
    EXPECT_TRUE(search.SetNowListPos(3));
    EXPECT_EQ(search.GetNowListPos(), 3U);
    EXPECT_FALSE(search.SetNowListPos(0));
    EXPECT_FALSE(search.SetNowListPos(4));
    EXPECT_EQ(search.GetNowListPos(), 3U);
    EXPECT_TRUE(search.SetNowListPos(1));
    EXPECT_EQ(search.GetNowListPos(), 1U);
}

TEST(CFileSearchDCTest, FirstAndLastSetTheCursor) {
    Holding search(3);
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLLast), "/3.jpg");
    EXPECT_EQ(search.GetNowListPos(), 3U);
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLFirst), "/1.jpg");
    EXPECT_EQ(search.GetNowListPos(), 1U);
}

TEST(CFileSearchDCTest, NextAndPreviousStepThroughTheListAndStopAtItsEnds) {
    Holding search(3);
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLPrev), "-");
    EXPECT_EQ(search.GetNowListPos(), 1U);
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLNext), "/2.jpg");
    EXPECT_EQ(search.GetNowListPos(), 2U);
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLNext), "/3.jpg");
    EXPECT_EQ(search.GetNowListPos(), 3U);
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLNext), "-");
    EXPECT_EQ(search.GetNowListPos(), 3U);
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLPrev), "/2.jpg");
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLPrev), "/1.jpg");
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLPrev), "-");
    EXPECT_EQ(search.GetNowListPos(), 1U);
}

TEST(CFileSearchDCTest, CursorOfAnEmptyListDoesNotRunAway) {
    Holding search(0);
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLNext), "-");
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLPrev), "-");
    EXPECT_EQ(search.GetNowListPos(), 1U);
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLLast), "-");
    EXPECT_EQ(search.GetNowListPos(), 0U) << "the length of the list";
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLPrev), "-");
    EXPECT_EQ(search.GetNowListPos(), 0U) << "before 0 comes nothing";
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLNext), "-");
    EXPECT_EQ(search.GetNowListPos(), 0U);
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLFirst), "-");
    EXPECT_EQ(search.GetNowListPos(), 1U);
}

TEST(CFileSearchDCTest, CursorBehindAListThatShrankCanOnlyGoBack) {
    Holding search(3);
    ASSERT_TRUE(search.SetNowListPos(3));
    search.Close();
    search.FileAddFromPath(text("/new.jpg").get());
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLNext), "-");
    EXPECT_EQ(search.GetNowListPos(), 3U);
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLPrev), "-");
    EXPECT_EQ(search.GetNowListPos(), 2U) << "no entry there yet";
    EXPECT_EQ(search.call(&CFileSearchDC::GetURLPrev), "/new.jpg");
}

TEST(CFileSearchDCTest, CursorFollowsTheLengthAfterEveryChangeOfTheList) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    card.write("b.jpg", "");
    CFileSearchDC search;
    const auto reaches = [&search](uint32_t count) {
        return search.GetListNum() == count && !search.SetNowListPos(count + 1) &&
               (count == 0 || search.SetNowListPos(count));
    };
    ASSERT_TRUE(search.Open(fileURL(card.path()).get()));
    search.FileSearch(1);
    EXPECT_TRUE(reaches(2));
    search.FileAddFromPath(text("/c.jpg").get());
    EXPECT_TRUE(reaches(3));
    search.FileAddFromCFArray(asArray(arrayOf({folderOf({"/d.jpg"})})));
    EXPECT_TRUE(reaches(4));
    search.FileSearchByPList(asArray(arrayOf(
        {dictionaryOf({{kType, text("mailHistory")}, {kChildren, arrayOf({folderOf({"/e.jpg"})})}})})));
    EXPECT_TRUE(reaches(5));
    unsigned char changed = 0;
    search.FileUpdate(1, &changed);
    EXPECT_TRUE(reaches(2));
    search.Close();
    EXPECT_TRUE(reaches(0));
}

// History lists

TEST(CFileSearchDCTest, NoHistoryGivesZero) {
    Holding search(2);
    EXPECT_EQ(search.FileSearchByPList(nullptr), 0);
    EXPECT_EQ(search.GetListNum(), 2U);
}

TEST(CFileSearchDCTest, ReadHistoryGivesTheFoldersOfItsScansAndCards) {
    const auto child = [](std::string_view source, std::string_view path) {
        return dictionaryOf({{kSource, text(source)}, {kChildren, arrayOf({folderOf({path})})}});
    };
    const Value history = arrayOf({dictionaryOf(
        {{kType, text("readHistory")},
         {kChildren, arrayOf({child("scanHistory", "/1.jpg"), child("otherHistory", "/2.jpg"),
                              child("memcardHistory", "/3.jpg"), child("ScanHistory", "/4.jpg"),
                              child("", "/5.jpg"), folderOf({"/6.jpg"})})}})});
    EXPECT_THAT(pathsOf(history), ElementsAre("/1.jpg", "/3.jpg"));
}

TEST(CFileSearchDCTest, MailAndApplicationHistoriesGiveTheirOwnFolders) {
    const auto group = [](std::string_view type, std::string_view path) {
        return dictionaryOf({{kType, text(type)}, {kChildren, arrayOf({folderOf({path})})}});
    };
    const Value history = arrayOf({group("sendAppHistory", "/1.jpg"), group("mailHistory", "/2.jpg"),
                                   group("readHistory", "/3.jpg"), group("printHistory", "/4.jpg"),
                                   group("MailHistory", "/5.jpg"), group("", "/6.jpg")});
    EXPECT_THAT(pathsOf(history), ElementsAre("/1.jpg", "/2.jpg"));
}

TEST(CFileSearchDCTest, MailHistoryAsksForNoSource) {
    const Value folder =
        dictionaryOf({{kSource, text("anything")}, {kChildren, CFArray::create({text("/1.jpg")})}});
    const Value history =
        arrayOf({dictionaryOf({{kType, text("mailHistory")}, {kChildren, arrayOf({folder})}})});
    EXPECT_THAT(pathsOf(history), ElementsAre("/1.jpg"));
}

TEST(CFileSearchDCTest, GroupsWithoutAKnownTypeAreIgnored) {
    const Value folders = arrayOf({folderOf({"/1.jpg"})});
    const Value history =
        arrayOf({dictionaryOf({{kChildren, folders}}),
                 dictionaryOf({{kType, CFNumber::create(int64_t{1})}, {kChildren, folders}}),
                 dictionaryOf({{kType, folders}, {kChildren, folders}}), nullptr, text("mailHistory"),
                 folders, CFNumber::create(int64_t{3})});
    EXPECT_THAT(pathsOf(history), IsEmpty());
}

TEST(CFileSearchDCTest, ElementsOfOtherTypesAreIgnoredOnEveryLevel) {
    const Value number = CFNumber::create(int64_t{3});
    const Value good = folderOf({"/good.jpg"});
    const Value paths = dictionaryOf(
        {{kChildren, CFArray::create({text("/1.jpg"), number, nullptr, good, text("/2.jpg")})}});
    const auto read = [](const Value& children) {
        return dictionaryOf({{kType, text("readHistory")}, {kChildren, children}});
    };
    const auto scan = [](const Value& children) {
        return dictionaryOf({{kSource, text("scanHistory")}, {kChildren, children}});
    };
    const Value history = arrayOf(
        {read(number), read(nullptr), read(text("/x.jpg")), read(good),
         read(arrayOf({number, nullptr, text("/x.jpg"), arrayOf({good}), scan(number), scan(nullptr),
                       dictionaryOf({{kSource, number}, {kChildren, arrayOf({good})}}),
                       scan(arrayOf({number, nullptr, text("/x.jpg"), dictionaryOf({{kChildren, number}}),
                                     dictionaryOf({}), paths}))})),
         dictionaryOf({{kType, text("mailHistory")}, {kChildren, number}}),
         dictionaryOf({{kType, text("mailHistory")}}),
         dictionaryOf({{kType, text("mailHistory")}, {kChildren, arrayOf({good})}})});
    EXPECT_THAT(pathsOf(history), ElementsAre("/1.jpg", "/2.jpg", "/good.jpg"));
}

TEST(CFileSearchDCTest, HistoryAppendsInItsOrderAndAnswersTheWholeLength) {
    Holding search(2);
    const Value history = arrayOf({dictionaryOf(
        {{kType, text("mailHistory")},
         {kChildren, arrayOf({folderOf({"/x.jpg", "/1.jpg"}), folderOf({"/y.jpg", "/x.jpg"})})}})});
    EXPECT_EQ(search.FileSearchByPList(asArray(history)), 4);
    EXPECT_THAT(paths(search), ElementsAre("/1.jpg", "/2.jpg", "/x.jpg", "/y.jpg"));
}

TEST(CFileSearchDCTest, LengthThatHistoryAnswersIsSixteenBitsWide) {
    Holding search(32'768);
    const Value empty = arrayOf({});
    EXPECT_EQ(search.FileSearchByPList(asArray(empty)), INT16_MIN);
    EXPECT_EQ(search.GetListNum(), 32'768U);
}

TEST(CFileSearchDCTest, FoldersGiveTheirPaths) {
    CFileSearchDC search;
    search.FileAddFromCFArray(
        asArray(arrayOf({folderOf({"/1.jpg", "/2.jpg"}), nullptr, folderOf({}), folderOf({"/3.jpg"})})));
    EXPECT_THAT(paths(search), ElementsAre("/1.jpg", "/2.jpg", "/3.jpg"));
    search.FileAddFromCFArray(nullptr);
    EXPECT_EQ(search.GetListNum(), 3U);
}

TEST(CFileSearchDCTest, PathsThatMakeNoLocationAreNotTakenFromFolders) {
    CFileSearchDC search;
    search.FileAddFromCFArray(
        asArray(arrayOf({folderOf({"", "/1.jpg", std::string_view("/a\0b.jpg", 8)})})));
    EXPECT_EQ(search.GetListNum(), 1U);
    EXPECT_THAT(paths(search), ElementsAre("/1.jpg"));
}

TEST(CFileSearchDCTest, PathsInFoldersNeedNotExistAndAreHeldOnce) {
    CFileSearchDC search;
    search.FileAddFromCFArray(
        asArray(arrayOf({folderOf({"/nowhere/\xC3\xA9.txt", "/nowhere/e\xCC\x81.txt"})})));
    EXPECT_THAT(paths(search), ElementsAre("/nowhere/\xC3\xA9.txt"));
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Property lists as kit objects, and files that are none.
#include "PlatformKit/PropertyList.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "PlatformKit/Array.h"
#include "PlatformKit/Data.h"
#include "PlatformKit/Dictionary.h"
#include "PlatformKit/Number.h"
#include "Support/FailingAllocations.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

class PropertyList : public testing::Test {
protected:
    TemporaryFolder m_folder;

    Ref<const NSObject> readRaw(std::string_view text) const {
        testing::internal::CaptureStderr();
        auto result = readPropertyList(CFURL::createFromPath(m_folder.write("list.plist", text)).get());
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "the library speaks to nobody";
        return result;
    }
    Ref<const NSObject> read(const std::string& body) const {
        return readRaw(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n" +
            body + "\n</plist>\n");
    }
};

template <typename T>
const T* as(const Ref<const NSObject>& object) {
    return dynamic_cast<const T*>(object.get());
}

TEST_F(PropertyList, HistoryOfFoldersIsAnArrayOfDictionaries) {
    const auto root = read(
        "<array><dict><key>path</key><string>/media/card</string><key>count</key><integer>12</integer></"
        "dict>"
        "<dict><key>path</key><string>/cards/caf\xC3\xA9 &amp; more</string></dict></array>");
    const auto* history = as<CFArray>(root);
    ASSERT_NE(history, nullptr);
    ASSERT_EQ(history->count(), 2U);
    const auto* first = history->at<CFDictionary>(0);
    EXPECT_EQ(first->value<CFString>("path")->view(), "/media/card");
    EXPECT_EQ(first->value<CFNumber>("count")->int64Value(), 12);
    EXPECT_EQ(history->at<CFDictionary>(1)->value<CFString>("path")->view(), "/cards/caf\xC3\xA9 & more");
}

TEST_F(PropertyList, EveryKindThatTheKitKnowsIsRead) {
    const auto root = read(
        "<array><string>text</string><integer>-5</integer><integer>9223372036854775807</integer>"
        "<real>0.25</real><true/><false/><data>AQID</data><string/><array/><dict/></array>");
    const auto* array = as<CFArray>(root);
    ASSERT_NE(array, nullptr);
    ASSERT_EQ(array->count(), 10U);
    EXPECT_EQ(array->at<CFString>(0)->view(), "text");
    EXPECT_EQ(array->at<CFNumber>(1)->int64Value(), -5);
    EXPECT_EQ(array->at<CFNumber>(2)->int64Value(), INT64_MAX);
    EXPECT_EQ(array->at<CFNumber>(3)->doubleValue(), 0.25);
    EXPECT_EQ(array->at<CFNumber>(4)->kind(), CFNumber::Kind::Boolean);
    EXPECT_TRUE(array->at<CFNumber>(4)->boolValue());
    EXPECT_FALSE(array->at<CFNumber>(5)->boolValue());
    EXPECT_TRUE(array->at(6)->isEqual(CFData::adopting({1, 2, 3}).get()));
    EXPECT_EQ(array->at<CFString>(7)->view(), "");
    EXPECT_EQ(array->at<CFArray>(8)->count(), 0U);
    EXPECT_EQ(array->at<CFDictionary>(9)->count(), 0U);
}

TEST_F(PropertyList, ElementsOfOtherKindsAreLeftOut) {
    const auto list =
        read("<array><string>a</string><date>2021-03-28T02:30:00Z</date><string>b</string></array>");
    ASSERT_NE(as<CFArray>(list), nullptr);
    EXPECT_EQ(as<CFArray>(list)->count(), 2U);
    const auto entries = read("<dict><key>when</key><date>2021-03-28T02:30:00Z</date></dict>");
    ASSERT_NE(as<CFDictionary>(entries), nullptr);
    EXPECT_EQ(as<CFDictionary>(entries)->count(), 0U);
    EXPECT_FALSE(read("<date>2021-03-28T02:30:00Z</date>"));
}

TEST_F(PropertyList, RootMayBeASingleValue) {
    EXPECT_EQ(as<CFString>(read("<string>alone</string>"))->view(), "alone");
}

TEST_F(PropertyList, NestsUpTo64LevelsAndNoDeeper) {
    const auto nested = [](int levels) {
        std::string text;
        for (int i = 0; i < levels; ++i)
            text += "<array>";
        for (int i = 0; i < levels; ++i)
            text += "</array>";
        return text;
    };
    EXPECT_TRUE(read(nested(64)));
    EXPECT_FALSE(read(nested(65)));
    EXPECT_FALSE(read(nested(1000000)));
}

TEST_F(PropertyList, DepthCannotBeHiddenBehindComments) {
    std::string text;
    for (int i = 0; i < 300000; ++i)
        text += "<array><!--</array>-->";
    EXPECT_FALSE(read(text));
}

TEST_F(PropertyList, FilesThatAreNoneGiveNull) {
    for (const std::string_view text :
         {std::string_view(""), std::string_view("plain text"), std::string_view("\xFF\xD8\xFF\xE0"),
          std::string_view("bplist00\xA0\x08"), std::string_view("<html><body>x</body></html>"),
          std::string_view("<plist><array><string>cut"), std::string_view("<plist></plist>"),
          std::string_view("<plist><array></dict></array></plist>"), std::string_view("\0<plist/>", 9)}) {
        EXPECT_FALSE(readRaw(text)) << testing::PrintToString(text);
    }
}

TEST_F(PropertyList, CutAtAnyByteNeitherCrashesNorLies) {
    const std::string whole =
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><array><dict><key>a</key><integer>1</integer>"
        "<key>b</key><data>AQID</data></dict><!-- c --><true/></array></plist>";
    for (size_t size = 0; size < whole.size(); ++size) {
        const auto root = readRaw(whole.substr(0, size));
        EXPECT_TRUE(!root || as<CFArray>(root) != nullptr) << size;
    }
    EXPECT_EQ(as<CFArray>(readRaw(whole))->count(), 2U);
}

TEST_F(PropertyList, FilesThatCannotBeReadGiveNull) {
    EXPECT_FALSE(readPropertyList(nullptr));
    EXPECT_FALSE(readPropertyList(CFURL::createFromPath(m_folder.at("missing")).get()));
    EXPECT_FALSE(readPropertyList(CFURL::createFromPath(m_folder.path()).get()));
    EXPECT_FALSE(readPropertyList(CFURL::createFromString("http://host/list.plist").get()));
}

TEST_F(PropertyList, MemoryThatRunsOutAnywhereGivesNullAndLeavesNothingBehind) {
    const std::string path = m_folder.write(
        "list.plist",
        "<plist><array><dict><key>a name that needs memory</key><string>a text that needs memory</string>"
        "<key>b</key><array><data>AQID</data><integer>1</integer></array></dict></array></plist>");
    const auto url = CFURL::createFromPath(path);
    int successes = 0;
    for (bool happened = true; happened; ++successes) {
        ASSERT_LT(successes, 1000);
        const FailingAllocations allocations(successes);
        const auto list = readPropertyList(url.get());
        happened = allocations.happened();
        ASSERT_NE(static_cast<bool>(list), happened) << successes;
    }
    EXPECT_GT(successes, 5);
}

TEST_F(PropertyList, FilesBeyondTheLimitAreNotRead) {
    const std::string path = m_folder.write("large.plist", "<plist><array></array></plist>");
    ASSERT_EQ(truncate(path.c_str(), (int64_t{64} << 20) + 1), 0);
    EXPECT_FALSE(readPropertyList(CFURL::createFromPath(path).get()));
}

}  // namespace

}  // namespace fi::test

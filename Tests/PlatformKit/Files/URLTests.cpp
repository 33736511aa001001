// SPDX-License-Identifier: Apache-2.0
// File URLs from paths and texts, and back.
#include "PlatformKit/URL.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <random>
#include <vector>

#include "PlatformKit/Files/URLText.h"
#include "PlatformKit/Text/PathText.h"

namespace fi::test {

namespace {

std::string pathOf(std::string_view text) {
    const auto url = CFURL::createFromString(text);
    if (!url) return "(no URL)";
    return url->path() == nullptr ? "(no path)" : std::string(url->path()->view());
}

TEST(URL, OfAPathEncodesWhatAURLMayNotHold) {
    const auto url = CFURL::createFromPath("/a b/\xC3\xA9%#?.jpg");
    EXPECT_EQ(url->string()->view(), "file:///a%20b/%C3%A9%25%23%3F.jpg");
    EXPECT_EQ(url->path()->view(), "/a b/\xC3\xA9%#?.jpg");
}

TEST(URL, LeavesCommonCharactersReadable) {
    const std::string path = "/DCIM/100ABCDE/IMG_0001-(1)~x.JPG";
    EXPECT_EQ(CFURL::createFromPath(path)->string()->view(), "file://" + path);
}

TEST(URL, PathsOfAnyBytesSurviveTheRoundTrip) {
    std::string all = "/";
    for (int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    const auto url = CFURL::createFromPath(all);
    for (const char c : url->string()->view())
        EXPECT_TRUE(c > ' ' && c < 127);
    EXPECT_EQ(pathOf(url->string()->view()), all);

    std::mt19937 random(4);
    for (int i = 0; i < 2000; ++i) {
        std::string path = "/";
        for (size_t length = random() % 12; length > 0; --length)
            path += static_cast<char>(1 + random() % 255);
        EXPECT_EQ(pathOf("file://" + percentEncodedPath(path)), withoutTrailingSlashes(path));
    }
}

TEST(URL, PathNamesTheItemWithoutSlashesAtItsEnd) {
    EXPECT_EQ(CFURL::createFromPath("/DCIM//")->path()->view(), "/DCIM");
    EXPECT_EQ(CFURL::createFromPath("/DCIM//")->string()->view(), "file:///DCIM");
    EXPECT_EQ(pathOf("file:///DCIM/"), "/DCIM");
    EXPECT_EQ(CFURL::createFromPath("//")->path()->view(), "/");
}

TEST(URL, RelativePathIsTakenFromTheCurrentFolder) {
    const auto url = CFURL::createFromPath("some/file");
    EXPECT_EQ(url->path()->view(), joinedPath(std::filesystem::current_path().string(), "some/file"));
}

TEST(URL, NoURLForAnEmptyPathOrOneWithNUL) {
    EXPECT_FALSE(CFURL::createFromPath(""));
    EXPECT_FALSE(CFURL::createFromPath(std::string_view("/a\0b", 4)));
}

TEST(URL, TextOfFileURLsGivesTheDecodedPath) {
    EXPECT_EQ(pathOf("file:///a%20b"), "/a b");
    EXPECT_EQ(pathOf("file:/a"), "/a");
    EXPECT_EQ(pathOf("FILE:///a"), "/a");
    EXPECT_EQ(pathOf("file://localhost/a"), "/a");
    EXPECT_EQ(pathOf("file://LocalHost/a"), "/a");
    EXPECT_EQ(pathOf("file:///%e9%C3%A9"), "/\xE9\xC3\xA9");
    EXPECT_EQ(pathOf("file:///"), "/");
    EXPECT_EQ(pathOf("file:///\xC3\xA9"), "/\xC3\xA9") << "also when it was never encoded";
}

TEST(URL, PercentWithoutTwoDigitsStandsForItself) {
    EXPECT_EQ(pathOf("file:///100%"), "/100%");
    EXPECT_EQ(pathOf("file:///100%4"), "/100%4");
    EXPECT_EQ(pathOf("file:///100%zz"), "/100%zz");
    EXPECT_EQ(pathOf("file:///%%20"), "/% ");
}

TEST(URL, OtherTextsHaveNoPath) {
    EXPECT_EQ(pathOf("http://host/a"), "(no path)");
    EXPECT_EQ(pathOf("file://host/a"), "(no path)");
    EXPECT_EQ(pathOf("file:"), "(no path)");
    EXPECT_EQ(pathOf("file://"), "(no path)");
    EXPECT_EQ(pathOf("file:a"), "(no path)");
    EXPECT_EQ(pathOf("file:///a%00b"), "(no path)");
    EXPECT_EQ(pathOf("/a/b"), "(no URL)");
    EXPECT_EQ(pathOf(""), "(no URL)");
    EXPECT_EQ(pathOf(":a"), "(no URL)");
    EXPECT_EQ(pathOf("a b:c"), "(no URL)");
}

TEST(URL, WithoutAPathEverythingAnswersNull) {
    const auto url = CFURL::createFromString("http://host/a.jpg");
    EXPECT_FALSE(url->copyLastPathComponent());
    EXPECT_FALSE(url->copyPathExtension());
    EXPECT_FALSE(url->createAppending("a"));
    EXPECT_FALSE(url->createWithoutLastPathComponent());
    char buffer[8];
    EXPECT_FALSE(url->fileSystemRepresentation(buffer, sizeof buffer));
    EXPECT_EQ(url->string()->view(), "http://host/a.jpg");
}

TEST(URL, AnswersThePartsOfItsPath) {
    const auto url = CFURL::createFromPath("/DCIM/100ABCDE/IMG_0001.JPG");
    EXPECT_EQ(url->copyLastPathComponent()->view(), "IMG_0001.JPG");
    EXPECT_EQ(url->copyPathExtension()->view(), "JPG");
    EXPECT_EQ(url->createWithoutLastPathComponent()->path()->view(), "/DCIM/100ABCDE");
    EXPECT_FALSE(CFURL::createFromPath("/DCIM/plain")->copyPathExtension());
    EXPECT_EQ(CFURL::createFromPath("/")->createWithoutLastPathComponent()->path()->view(), "/");
}

TEST(URL, AppendingMakesANewObjectJoinedByOneSlash) {
    const auto folder = CFURL::createFromPath("/DCIM/");
    const auto file = folder->createAppending("a b.jpg");
    EXPECT_EQ(file->path()->view(), "/DCIM/a b.jpg");
    EXPECT_EQ(file->string()->view(), "file:///DCIM/a%20b.jpg");
    EXPECT_EQ(file->retainCount(), 1U);
    EXPECT_EQ(folder->path()->view(), "/DCIM");
}

TEST(URL, FileSystemRepresentationFitsWithItsNULOrNotAtAll) {
    const auto url = CFURL::createFromPath("/abc");
    std::vector<char> buffer(5, 'x');
    EXPECT_TRUE(url->fileSystemRepresentation(buffer.data(), 5));
    EXPECT_STREQ(buffer.data(), "/abc");
    buffer.assign(5, 'x');
    for (size_t size = 0; size < 5; ++size)
        EXPECT_FALSE(url->fileSystemRepresentation(buffer.data(), size));
    EXPECT_EQ(buffer, std::vector<char>(5, 'x')) << "nothing may be written";
}

TEST(URL, EqualityIsThatOfTheTexts) {
    const auto url = CFURL::createFromPath("/a b");
    EXPECT_TRUE(url->isEqual(CFURL::createFromString("file:///a%20b").get()));
    EXPECT_EQ(url->hash(), CFURL::createFromString("file:///a%20b")->hash());
    EXPECT_FALSE(url->isEqual(CFURL::createFromString("file:/a%20b").get()));
    EXPECT_FALSE(url->isEqual(CFURL::createFromPath("/a").get()));
    EXPECT_FALSE(url->isEqual(url->string()));
    EXPECT_FALSE(url->isEqual(nullptr));
}

}  // namespace

}  // namespace fi::test

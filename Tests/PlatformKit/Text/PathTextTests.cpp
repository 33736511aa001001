// SPDX-License-Identifier: Apache-2.0
// Parts of paths, from the text alone.
#include "PlatformKit/Text/PathText.h"

#include <gtest/gtest.h>

#include <random>

namespace fi::test {

namespace {

struct PathCase {
    std::string_view path;
    std::string_view last;
    std::string_view rest;
    std::string_view extension;
};

constexpr PathCase kCases[] = {
    {"/tmp/scratch.tiff", "scratch.tiff", "/tmp", "tiff"},
    {"/tmp/scratch", "scratch", "/tmp", ""},
    {"/tmp/", "tmp", "/", ""},
    {"scratch///", "scratch", "", ""},
    {"/", "/", "/", ""},
    {"//", "/", "/", ""},
    {"", "", "", ""},
    {"a", "a", "", ""},
    {"a.jpg", "a.jpg", "", "jpg"},
    {"/a.jpg", "a.jpg", "/", "jpg"},
    {"a/b/", "b", "a", ""},
    {"a//b", "b", "a", ""},
    {"/a//b.x//", "b.x", "/a", "x"},
    {".scratch.tiff", ".scratch.tiff", "", "tiff"},
    {"/x/.hidden", ".hidden", "/x", ""},
    {"/x/..hidden", "..hidden", "/x", ""},
    {"/x/..a.b", "..a.b", "/x", "b"},
    {"/x/name.", "name.", "/x", ""},
    {"/x/name..jpg", "name..jpg", "/x", "jpg"},
    {"/x/a.b.c", "a.b.c", "/x", "c"},
    {"/x.y/plain", "plain", "/x.y", ""},
    {"..", "..", "", ""},
    {"...", "...", "", ""},
    {"/tmp/photo.JPG/", "photo.JPG", "/tmp", "JPG"},
    {"/\xFF.j\xFE", "\xFF.j\xFE", "/", "j\xFE"},
};

TEST(PathText, SplitsAsTheTableSays) {
    for (const PathCase& each : kCases) {
        EXPECT_EQ(lastPathComponent(each.path), each.last) << each.path;
        EXPECT_EQ(withoutLastPathComponent(each.path), each.rest) << each.path;
        EXPECT_EQ(pathExtension(each.path), each.extension) << each.path;
    }
}

TEST(PathText, JoinsByOneSlash) {
    EXPECT_EQ(joinedPath("/a", "b"), "/a/b");
    EXPECT_EQ(joinedPath("/a/", "b"), "/a/b");
    EXPECT_EQ(joinedPath("/a//", "//b"), "/a/b");
    EXPECT_EQ(joinedPath("/", "b"), "/b");
    EXPECT_EQ(joinedPath("a", "b/c"), "a/b/c");
}

TEST(PathText, PartsJoinToTheSamePath) {
    std::mt19937 random(5);
    const std::string_view letters = "ab./";
    for (int i = 0; i < 20000; ++i) {
        std::string path;
        for (size_t length = random() % 8; length > 0; --length)
            path += letters[random() % letters.size()];
        const std::string_view last = lastPathComponent(path);
        const std::string_view rest = withoutLastPathComponent(path);
        EXPECT_TRUE(last == "/" || last.find('/') == std::string_view::npos) << path;
        EXPECT_LE(rest.size(), path.size());
        EXPECT_TRUE(path.starts_with(rest)) << path;
        if (rest.empty() || last == "/") continue;
        EXPECT_EQ(lastPathComponent(joinedPath(rest, last)), last) << path;
        EXPECT_EQ(withoutLastPathComponent(joinedPath(rest, last)), rest) << path;
    }
}

}  // namespace

}  // namespace fi::test

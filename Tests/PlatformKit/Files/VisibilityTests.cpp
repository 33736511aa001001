// SPDX-License-Identifier: Apache-2.0
// What stays out of sight and what is one item though it is a folder.
#include "PlatformKit/Files/Visibility.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <array>
#include <string>

#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

constexpr std::string_view kAppleDouble("\0\5\x16\7rest", 8);

/// Finder information with these flags; false when the file system keeps no attributes of users.
bool setFinderFlags(const std::string& path, uint8_t high, uint8_t low, const char* attribute) {
    std::array<uint8_t, 32> info{};
    info[8] = high;
    info[9] = low;
    return setxattr(path.c_str(), attribute, info.data(), info.size(), 0) == 0;
}

bool isInvisible(const std::string& path, bool onFAT) {
    return visibilityOfFile(path, onFAT) == fi::Visibility::Invisible;
}

TEST(Visibility, OrdinaryFilesAreVisible) {
    const TemporaryFolder folder;
    for (const char* name : {"IMG_0001.JPG", ".dot", "._", "name._x", "caf\xE9"})
        EXPECT_EQ(visibilityOfFile(folder.write(name, "content"), false), fi::Visibility::Visible) << name;
    EXPECT_EQ(visibilityOfFile(folder.path(), false), fi::Visibility::Visible);
}

TEST(Visibility, WhatCannotBeReachedIsMissing) {
    const TemporaryFolder folder;
    folder.write("file", "x");
    for (const std::string& path : {folder.at("missing"), folder.at("file/below"),
                                    folder.link("dangling", "nowhere"), std::string()}) {
        EXPECT_EQ(visibilityOfFile(path, false), fi::Visibility::Missing) << path;
        EXPECT_EQ(visibilityOfFile(path, true), fi::Visibility::Missing) << path;
    }
}

TEST(Visibility, FinderFlagHides) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.jpg", "x");
    if (!setFinderFlags(path, 0x40, 0, "user.com.apple.FinderInfo"))
        GTEST_SKIP() << "the temporary file system keeps no extended attributes of users: " << errno;
    EXPECT_TRUE(isInvisible(path, false));
    EXPECT_TRUE(isInvisible(folder.link("link", "a.jpg"), false));
    ASSERT_TRUE(setFinderFlags(path, 0xBF, 0xFF, "user.com.apple.FinderInfo"));
    EXPECT_FALSE(isInvisible(path, false)) << "every other flag";
}

TEST(Visibility, ShortOrForeignAttributesDoNotHide) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.jpg", "x");
    if (setxattr(path.c_str(), "user.com.apple.FinderInfo", "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 9, 0) !=
        0)
        GTEST_SKIP() << "the temporary file system keeps no extended attributes of users: " << errno;
    EXPECT_FALSE(isInvisible(path, false)) << "half of the flags";
    const std::string other = folder.write("b.jpg", "x");
    ASSERT_TRUE(setFinderFlags(other, 0x40, 0, "user.something.else"));
    EXPECT_FALSE(isInvisible(other, false));
}

TEST(Visibility, FlagIsFoundAmongManyAttributes) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.jpg", "x");
    for (int i = 0; i < 40; ++i) {
        const std::string name = "user.a-rather-long-name-of-an-attribute-" + std::to_string(i);
        if (setxattr(path.c_str(), name.c_str(), "x", 1, 0) != 0)
            GTEST_SKIP() << "the temporary file system keeps too few attributes of users: " << errno;
    }
    EXPECT_FALSE(isInvisible(path, false));
    if (!setFinderFlags(path, 0x40, 0, "user.com.apple.FinderInfo"))
        GTEST_SKIP() << "no room for one more attribute: " << errno;
    EXPECT_TRUE(isInvisible(path, false));
}

TEST(Visibility, AppleDoubleCompanionNeedsNameAndContent) {
    const TemporaryFolder folder;
    EXPECT_TRUE(isInvisible(folder.write("._IMG_0001.JPG", kAppleDouble), false));
    EXPECT_FALSE(isInvisible(folder.write("IMG_0001.JPG", kAppleDouble), false));
    EXPECT_FALSE(isInvisible(folder.write("._photo.JPG", "\xFF\xD8\xFF"), false));
    EXPECT_FALSE(isInvisible(folder.write("._cut", kAppleDouble.substr(0, 3)), false));
    EXPECT_FALSE(isInvisible(folder.write("._empty", ""), false));
    EXPECT_FALSE(isInvisible(folder.write(".IMG_0001.JPG", kAppleDouble), false));
    ASSERT_EQ(mkfifo(folder.at("._pipe").c_str(), 0600), 0);
    EXPECT_FALSE(isInvisible(folder.at("._pipe"), false)) << "and waits for no writer";
}

TEST(Visibility, AskingForTheFATAttributeElsewhereHidesNothing) {
    const TemporaryFolder folder;
    EXPECT_FALSE(isInvisible(folder.write("a.jpg", "x"), true));
    EXPECT_FALSE(isInvisible(folder.at("missing"), true));
}

TEST(Visibility, FolderIsAPackageByItsExtensionInAnyCase) {
    const TemporaryFolder folder;
    for (const char* name :
         {"Printer.app", "My.PhotosLibrary", "x.photolibrary", "a.b.BUNDLE", "text.rtfd"})
        EXPECT_TRUE(isPackageFolder(folder.makeFolder(name))) << name;
    for (const char* name : {"DCIM", "100ABCDE", "app", ".app", "x.apps", "caf\xE9.ap"})
        EXPECT_FALSE(isPackageFolder(folder.makeFolder(name))) << name;
}

TEST(Visibility, FolderIsAPackageByItsContents) {
    const TemporaryFolder folder;
    folder.write("one/Contents/PkgInfo", "");
    folder.write("two/Contents/Info.plist", "");
    folder.makeFolder("three/Contents");
    folder.write("four/Info.plist", "");
    folder.write("five/Contents", "a file");
    EXPECT_TRUE(isPackageFolder(folder.at("one")));
    EXPECT_TRUE(isPackageFolder(folder.at("two")));
    EXPECT_FALSE(isPackageFolder(folder.at("three")));
    EXPECT_FALSE(isPackageFolder(folder.at("four")));
    EXPECT_FALSE(isPackageFolder(folder.at("five")));
}

TEST(Visibility, TrashFolderIsAPackageWithBothOfItsFolders) {
    const TemporaryFolder folder;
    folder.makeFolder(".Trash-1000/files");
    EXPECT_FALSE(isPackageFolder(folder.at(".Trash-1000"))) << "no info yet";
    folder.makeFolder(".Trash-1000/info");
    EXPECT_TRUE(isPackageFolder(folder.at(".Trash-1000")));
    for (const char* name : {".Trash-", ".Trash-user", ".Trash-10x", "Trash-1000", ".Trash"}) {
        folder.makeFolder(std::string(name) + "/files");
        folder.makeFolder(std::string(name) + "/info");
        EXPECT_FALSE(isPackageFolder(folder.at(name))) << name;
    }
}

TEST(Visibility, NoPathIsNoPackage) {
    EXPECT_FALSE(isPackageFolder(""));
    EXPECT_FALSE(isPackageFolder("/"));
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Listings: complete, in a fixed order, with any names.
#include "PlatformKit/Files/DirectoryListing.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <random>
#include <set>

#include "PlatformKit/Text/Unicode.h"
#include "Support/Privileges.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

using Names = std::vector<std::string>;

Names namesOf(const std::string& folder) {
    const auto listing = DirectoryListing::read(folder.c_str());
    if (!listing) return {"(unreadable)"};
    Names names;
    names.reserve(listing->entries().size());
    for (const DirectoryEntry& entry : listing->entries())
        names.emplace_back(entry.view());
    return names;
}

/// The order as it is written down, made slowly.
Names inOrder(Names names) {
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        const std::string x = caseFolded(a);
        const std::string y = caseFolded(b);
        return x != y ? x < y : a < b;
    });
    return names;
}

TEST(DirectoryListing, OrdersByFoldedNamesAndTiesByBytes) {
    const TemporaryFolder folder;
    const Names expected = {"_x",           ".hidden",      "10.jpg",      "9.jpg",  "a.JPG",
                            "A.jpg",        "a.jpg",        "B.jpg",       "b.jpg2", "c",
                            "IMG_0001.JPG", "img_0001.jpg", "img_0002.JPG"};
    for (const std::string& name : expected)
        folder.write(name, "");
    EXPECT_EQ(namesOf(folder.path()), inOrder(expected));
    const Names names = namesOf(folder.path());
    const auto place = [&](std::string_view name) { return std::find(names.begin(), names.end(), name); };
    EXPECT_LT(place("10.jpg"), place("9.jpg")) << "numbers are not read";
    EXPECT_LT(place("A.jpg"), place("a.jpg"));
    EXPECT_LT(place("a.jpg"), place("B.jpg"));
    EXPECT_LT(place("IMG_0001.JPG"), place("img_0001.jpg"));
    EXPECT_LT(place("img_0001.jpg"), place("img_0002.JPG"));
}

TEST(DirectoryListing, KeepsNamesThatAreNotUTF8) {
    const TemporaryFolder folder;
    const Names names = {"caf\xE9.jpg", "\xFF", "caf\xC3\xA9.jpg", "CAF\xC3\x89.jpg", "cafe.jpg"};
    for (const std::string& name : names)
        folder.write(name, "");
    EXPECT_EQ(namesOf(folder.path()), inOrder(names));
}

TEST(DirectoryListing, AgreesWithASlowModelAndWithItself) {
    std::mt19937 random(9);
    const std::string_view pieces[] = {"a", "A",        "b",        "Z",    "_",        "1",
                                       " ", "\xC3\xA9", "\xC3\x89", "\xFF", "\xCE\xA3", "longer-piece"};
    for (int round = 0; round < 20; ++round) {
        const TemporaryFolder folder;
        std::set<std::string> names;
        for (size_t i = random() % 60; i > 0; --i) {
            std::string name;
            for (size_t length = 1 + random() % 6; length > 0; --length)
                name += pieces[random() % std::size(pieces)];
            names.insert(name);
        }
        for (const std::string& name : names)
            folder.write(name, "");
        const Names listed = namesOf(folder.path());
        EXPECT_EQ(listed, inOrder(Names(names.begin(), names.end())));
        EXPECT_EQ(namesOf(folder.path()), listed);
    }
}

TEST(DirectoryListing, TellsKindsWithoutDotAndDotDot) {
    const TemporaryFolder folder;
    folder.write("file", "x");
    folder.makeFolder("folder");
    folder.link("link", "file");
    ASSERT_EQ(mkfifo(folder.at("pipe").c_str(), 0600), 0);
    const auto listing = DirectoryListing::read(folder.path().c_str());
    ASSERT_TRUE(listing);
    ASSERT_EQ(listing->entries().size(), 4U);
    const EntryKind expected[] = {EntryKind::File, EntryKind::Folder, EntryKind::Link, EntryKind::Other};
    for (size_t i = 0; i < 4; ++i) {
        const DirectoryEntry& entry = listing->entries()[i];
        EXPECT_TRUE(entry.kind == expected[i] || entry.kind == EntryKind::Unknown) << entry.name;
        EXPECT_EQ(std::string(entry.name).size(), entry.length);
    }
}

TEST(DirectoryListing, NamesStayValidWhenItIsMoved) {
    const TemporaryFolder folder;
    folder.write("a", "");
    auto first = DirectoryListing::read(folder.path().c_str());
    ASSERT_TRUE(first);
    const DirectoryListing moved = std::move(*first);
    EXPECT_STREQ(moved.entries().front().name, "a");
}

TEST(DirectoryListing, LongNamesAndManyEntriesAreListed) {
    const TemporaryFolder folder;
    Names names;
    names.reserve(301);
    for (int i = 0; i < 300; ++i)
        names.push_back(std::string(100, 'n') + std::to_string(i));
    names.push_back(std::string(255, 'x'));
    for (const std::string& name : names)
        folder.write(name, "");
    EXPECT_EQ(namesOf(folder.path()), inOrder(names));
}

TEST(DirectoryListing, EmptyFolderHasNoEntries) {
    const TemporaryFolder folder;
    EXPECT_EQ(namesOf(folder.path()), Names());
}

TEST(DirectoryListing, WhatCannotBeReadGivesNothing) {
    const TemporaryFolder folder;
    EXPECT_FALSE(DirectoryListing::read(folder.at("missing").c_str()));
    EXPECT_FALSE(DirectoryListing::read(folder.write("file", "").c_str()));
    EXPECT_FALSE(DirectoryListing::read(""));
    const std::string locked = folder.makeFolder("locked");
    ASSERT_EQ(chmod(locked.c_str(), 0), 0);
    const OrdinaryUser user;
    EXPECT_FALSE(DirectoryListing::read(locked.c_str()));
}

TEST(DirectoryListing, OrdinaryFileSystemsCarryNoHiddenAttribute) {
    const auto listing = DirectoryListing::read("/proc");
    ASSERT_TRUE(listing);
    EXPECT_FALSE(listing->onFAT());
}

}  // namespace

}  // namespace fi::test

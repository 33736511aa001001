// SPDX-License-Identifier: Apache-2.0
// The walk where the card is in trouble or tangled: folders that cannot be read, a file system with hidden
// files, and meshes of links.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/msdos_fs.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>

#include "PhotoCollections/FolderWalk.h"
#include "PhotoCollections/Walking.h"
#include "PlatformKit/Files/DirectoryListing.h"
#include "PlatformKit/Files/Visibility.h"
#include "Support/Privileges.h"

namespace fi::test {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// Every listing breaks off before an entry of this name.
constexpr std::string_view kBreak = "break";

class BrokenListings {
public:
    BrokenListings() {
        g_faultInjector = [](Fault fault, std::string_view name) {
            return fault == Fault::Listing && name == kBreak;
        };
    }
    ~BrokenListings() { g_faultInjector = nullptr; }
    BrokenListings(const BrokenListings&) = delete;
    BrokenListings& operator=(const BrokenListings&) = delete;
};

Paths unreadable(const CFileSearchDC& search) {
    Paths result;
    for (uint32_t i = 1; i <= search.unreadableFolderCount(); ++i) {
        CFStringRef path = nullptr;
        EXPECT_TRUE(search.copyUnreadableFolder(&path, i));
        const auto owned = adopt(path);
        result.emplace_back(owned->view());
    }
    CFStringRef beyond = nullptr;
    EXPECT_FALSE(search.copyUnreadableFolder(&beyond, 0));
    EXPECT_FALSE(search.copyUnreadableFolder(&beyond, search.unreadableFolderCount() + 1));
    EXPECT_EQ(beyond, nullptr);
    return result;
}

TEST(FolderWalkTroubleTest, ListingThatBreaksOffIsNoListing) {
    TemporaryFolder card;
    for (int i = 0; i < 50; ++i)
        card.write(numbered("IMG_", 1000 + static_cast<size_t>(i), ".JPG"), "");
    card.write(kBreak, "");
    ASSERT_TRUE(DirectoryListing::read(card.path().c_str()));
    const BrokenListings faults;
    EXPECT_FALSE(DirectoryListing::read(card.path().c_str()));
}

TEST(FolderWalkTroubleTest, FolderWhoseListingBreaksOffGivesNothingAndIsTold) {
    TemporaryFolder card;
    card.write("a/1.jpg", "");
    card.write(std::string("b/") + std::string(kBreak), "");
    card.write("b/2.jpg", "");
    card.write("c/3.jpg", "");
    const BrokenListings faults;
    CFileSearchDC search;
    ASSERT_TRUE(search.Open(fileURL(card.path()).get()));
    search.FileSearch(256);
    EXPECT_THAT(paths(search), ElementsAre(card.at("a/1.jpg"), card.at("c/3.jpg")));
    EXPECT_THAT(unreadable(search), ElementsAre(card.at("b")));
}

TEST(FolderWalkTroubleTest, FoldersThatMayNotBeReadAreToldOnceUntilTheNextSearch) {
    TemporaryFolder card;
    fs::permissions(card.path(), fs::perms::all);
    card.write("open/1.jpg", "");
    const std::string closed = card.makeFolder("closed");
    card.link("again", "closed");
    ASSERT_EQ(chmod(closed.c_str(), 0), 0);
    CFileSearchDC search;
    ASSERT_TRUE(search.Open(fileURL(card.path()).get()));
    {
        const OrdinaryUser user;
        search.FileSearch(256);
    }
    EXPECT_THAT(paths(search), ElementsAre(card.at("open/1.jpg")));
    EXPECT_THAT(unreadable(search), ElementsAre(closed));
    ASSERT_EQ(chmod(closed.c_str(), 0755), 0);
    unsigned char changed = 1;
    search.FileUpdate(256, &changed);
    EXPECT_EQ(changed, 0);
    EXPECT_THAT(unreadable(search), IsEmpty());
}

/// Everything below a folder named "fat" lies on FAT, where files named "hidden…" carry the attribute.
const FATAccess kPretendedFAT = {
    [](const char* folder) { return std::string_view(folder).find("/fat") != std::string_view::npos; },
    [](const char* file) {
        const bool hidden = std::string_view(file).find("/hidden") != std::string_view::npos;
        return hidden ? uint32_t{ATTR_HIDDEN} | ATTR_ARCH : uint32_t{ATTR_ARCH};
    },
};

class PretendedFAT {
public:
    PretendedFAT() { setFATAccess(&kPretendedFAT); }
    ~PretendedFAT() { setFATAccess(nullptr); }
    PretendedFAT(const PretendedFAT&) = delete;
    PretendedFAT& operator=(const PretendedFAT&) = delete;
};

TEST(FolderWalkTroubleTest, HiddenAttributeOfFATHidesAFileOnFATOnly) {
    TemporaryFolder card;
    card.write("fat/hidden.jpg", "");
    card.write("fat/shown.jpg", "");
    card.write("other/hidden.jpg", "");
    const PretendedFAT fat;
    EXPECT_THAT(walkedBelow(card), ElementsAre("fat/shown.jpg", "other/hidden.jpg"));
}

TEST(FolderWalkTroubleTest, HiddenFileOnFATStaysHiddenBehindALinkFromElsewhere) {
    TemporaryFolder card;
    card.write("target/fat/hidden.jpg", "");
    card.write("target/fat/shown.jpg", "");
    card.link("links/1.jpg", "../target/fat/hidden.jpg");
    card.link("links/2.jpg", "../target/fat/shown.jpg");
    const PretendedFAT fat;
    EXPECT_THAT(walkedBelow(card), ElementsAre("target/fat/shown.jpg"));
}

TEST(FolderWalkTroubleTest, RealFATKeepsItsHiddenFiles) {
    TemporaryFolder card;
    const std::string image = card.at("image");
    const std::string mounted = card.makeFolder("card");
    const std::string command = "truncate -s 8M '" + image + "' && mkfs.vfat '" + image +
                                "' && mount -o loop '" + image + "' '" + mounted + "'";
    if (std::system(("(" + command + ") >/dev/null 2>&1").c_str()) != 0) {
        GTEST_SKIP() << "this machine makes or mounts no FAT file system";
    }
    card.write("card/hidden.jpg", "x");
    card.write("card/shown.jpg", "x");
    const int flagged = std::system(("fatattr +h '" + mounted + "/hidden.jpg' >/dev/null 2>&1").c_str());
    const Paths found = walked(mounted);
    umount(mounted.c_str());
    if (flagged != 0) GTEST_SKIP() << "this machine has no program that sets the attribute";
    EXPECT_THAT(found, ElementsAre(mounted + "/shown.jpg"));
}

TEST(FolderWalkTroubleTest, MeshOfLinksEndsSoon) {
    constexpr size_t kFolders = 60;
    TemporaryFolder card;
    for (size_t i = 0; i < kFolders; ++i) {
        const std::string folder = numbered("f", i);
        card.write(folder + "/photo.jpg", "");
        for (size_t k = 0; k < kFolders; ++k)
            card.link(folder + numbered("/to", k), numbered("../f", k));
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(walkedBelow(card, 256).size(), kFolders);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

}  // namespace

}  // namespace fi::test

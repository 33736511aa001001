// SPDX-License-Identifier: Apache-2.0
#include "PhotoCollections/FolderWalk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "PhotoCollections/Walking.h"
#include "PlatformKit/Text/Unicode.h"
#include "Support/Privileges.h"

namespace fi::test {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view kAppleDouble("\x00\x05\x16\x07\x00\x02\x00\x00", 8);

// Depth and order

TEST(FolderWalkTest, DepthCountsTheLevelsThatAreListed) {
    TemporaryFolder card;
    card.write("1.jpg", "");
    card.write("a/2.jpg", "");
    card.write("a/b/3.jpg", "");
    card.write("a/b/c/4.jpg", "");
    EXPECT_THAT(walkedBelow(card, INT32_MIN), IsEmpty());
    EXPECT_THAT(walkedBelow(card, -1), IsEmpty());
    EXPECT_THAT(walkedBelow(card, 0), IsEmpty());
    EXPECT_THAT(walkedBelow(card, 1), ElementsAre("1.jpg"));
    EXPECT_THAT(walkedBelow(card, 2), ElementsAre("1.jpg", "a/2.jpg"));
    EXPECT_THAT(walkedBelow(card, 3), ElementsAre("1.jpg", "a/2.jpg", "a/b/3.jpg"));
    EXPECT_THAT(walkedBelow(card, 4), ElementsAre("1.jpg", "a/2.jpg", "a/b/3.jpg", "a/b/c/4.jpg"));
    EXPECT_THAT(walkedBelow(card, INT32_MAX), ElementsAre("1.jpg", "a/2.jpg", "a/b/3.jpg", "a/b/c/4.jpg"));
}

TEST(FolderWalkTest, FilesOfASubfolderStandAtItsPlace) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    card.write("m/x.jpg", "");
    card.write("m/k/y.jpg", "");
    card.write("z.jpg", "");
    EXPECT_THAT(walkedBelow(card), ElementsAre("a.jpg", "m/k/y.jpg", "m/x.jpg", "z.jpg"));
}

TEST(FolderWalkTest, EntriesComeByNameWithoutCaseAndTiesByBytes) {
    TemporaryFolder card;
    for (const char* name :
         {"b.jpg", "A.jpg", "a.jpg", "B.JPG", "_.jpg", "10.jpg", "9.jpg", "a0123456789.jpg",
          "A0123456788.jpg", "\xC3\x84.jpg", "\xC3\xA4.jpg", "z.jpg"}) {
        card.write(name, "");
    }
    EXPECT_THAT(walkedBelow(card),
                ElementsAre("10.jpg", "9.jpg", "_.jpg", "A.jpg", "a.jpg", "A0123456788.jpg",
                            "a0123456789.jpg", "B.JPG", "b.jpg", "z.jpg", "\xC3\x84.jpg", "\xC3\xA4.jpg"));
}

TEST(FolderWalkTest, EntriesOfALargeFolderComeInFoldedOrder) {
    TemporaryFolder card;
    std::vector<std::pair<std::string, std::string>> expected;
    for (unsigned i = 0; i < 300; ++i) {
        std::string name = std::to_string(i * 2654435761U % 1000) + (i % 3 == 0 ? "Ab" : "aB");
        if (i % 5 == 0) name += "\xC3\x89t\xC3\xA9";
        if (i % 7 == 0) name += "\xFF";
        if (i % 2 == 0) name.insert(0, "IMG_0000");
        name += numbered({}, i, ".jpg");
        card.write(name, "");
        expected.emplace_back(caseFolded(name), name);
    }
    std::sort(expected.begin(), expected.end());
    Paths names;
    for (const auto& [folded, name] : expected)
        names.push_back(name);
    EXPECT_EQ(walkedBelow(card), names);
}

TEST(FolderWalkTest, TwoWalksOfAnUnchangedTreeAgree) {
    TemporaryFolder card;
    for (size_t i = 0; i < 300; ++i)
        card.write(numbered("f", i % 7, numbered("/", i * 7919, ".jpg")), "");
    const Paths first = walkedBelow(card);
    EXPECT_EQ(first.size(), 300U);
    EXPECT_EQ(walkedBelow(card), first);
}

TEST(FolderWalkTest, OrderDoesNotDependOnTheOrderOfCreation) {
    TemporaryFolder one;
    TemporaryFolder two;
    for (size_t i = 0; i < 200; ++i) {
        one.write(numbered({}, i, ".jpg"), "");
        two.write(numbered({}, 199 - i, ".jpg"), "");
    }
    EXPECT_EQ(walkedBelow(one), walkedBelow(two));
}

// What cannot be looked at

TEST(FolderWalkTest, MissingFolderGivesNothing) {
    TemporaryFolder card;
    EXPECT_THAT(walked(card.at("nowhere")), IsEmpty());
}

TEST(FolderWalkTest, StartThatIsAFileGivesNothing) {
    TemporaryFolder card;
    EXPECT_THAT(walked(card.write("a.jpg", "")), IsEmpty());
}

TEST(FolderWalkTest, UnreadableFolderIsPassedOver) {
    TemporaryFolder card;
    fs::permissions(card.path(), fs::perms(0755));
    card.write("a.jpg", "");
    card.write("m/b.jpg", "");
    card.write("z.jpg", "");
    fs::permissions(card.at("m"), fs::perms::none);
    {
        const OrdinaryUser user;
        EXPECT_THAT(walkedBelow(card), ElementsAre("a.jpg", "z.jpg"));
        EXPECT_THAT(walked(card.at("m")), IsEmpty());
    }
    fs::permissions(card.at("m"), fs::perms(0755));
}

TEST(FolderWalkTest, FilesThatCannotBeReachedDoNotExist) {
    TemporaryFolder card;
    fs::permissions(card.path(), fs::perms(0755));
    card.write("m/b.jpg", "");
    card.write("m/k/c.jpg", "");
    card.write("z.jpg", "");
    fs::permissions(card.at("m"), fs::perms(0444));  // its names can be read, its items not
    {
        const OrdinaryUser user;
        EXPECT_THAT(walkedBelow(card), ElementsAre("z.jpg"));
    }
    fs::permissions(card.at("m"), fs::perms(0755));
}

TEST(FolderWalkTest, UnreadablePhotoIsListed) {
    TemporaryFolder card;
    fs::permissions(card.path(), fs::perms(0755));
    fs::permissions(card.write("a.jpg", ""), fs::perms::none);
    const OrdinaryUser user;
    EXPECT_THAT(walkedBelow(card), ElementsAre("a.jpg"));
}

TEST(FolderWalkTest, WalkChangesNothingOnTheCard) {
    TemporaryFolder card;
    card.write("DCIM/100ABCDE/IMG_0001.JPG", "photo");
    card.write("DCIM/100ABCDE/._IMG_0001.JPG", kAppleDouble);
    card.link("again.jpg", "DCIM/100ABCDE/IMG_0001.JPG");
    const auto seen = [&card] {
        std::vector<std::string> facts;
        for (const auto& entry : fs::recursive_directory_iterator(card.path())) {
            struct stat status {};
            lstat(entry.path().c_str(), &status);
            facts.push_back(entry.path().string() + " " + std::to_string(status.st_mode) + " " +
                            std::to_string(status.st_size) + " " + std::to_string(status.st_ctim.tv_sec) +
                            "." + std::to_string(status.st_ctim.tv_nsec));
        }
        std::sort(facts.begin(), facts.end());
        return facts;
    };
    const auto before = seen();
    EXPECT_THAT(walkedBelow(card), ElementsAre("DCIM/100ABCDE/IMG_0001.JPG"));
    EXPECT_EQ(seen(), before);
}

TEST(FolderWalkTest, WalkWritesNoMessages) {
    TemporaryFolder card;
    card.link("dangling.jpg", "nowhere");
    card.link("self", "self");
    card.write("\xFF.jpg", "");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const Paths found = walked(card.path());
    const Paths none = walked(card.at("nowhere"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(found.size(), 1U);
    EXPECT_THAT(none, IsEmpty());
}

// Links

TEST(FolderWalkTest, FileBehindALinkIsStoredAtItsOwnPath) {
    TemporaryFolder card;
    TemporaryFolder elsewhere;
    const std::string photo = elsewhere.write("photo.jpg", "");
    card.link("x", photo);
    EXPECT_THAT(walked(card.path()), ElementsAre(photo));
}

TEST(FolderWalkTest, FolderBehindALinkIsEnteredAtItsOwnPath) {
    TemporaryFolder card;
    TemporaryFolder elsewhere;
    const std::string photo = elsewhere.write("sub/photo.jpg", "");
    card.link("x", elsewhere.path());
    EXPECT_THAT(walked(card.path(), 3), ElementsAre(photo));
    EXPECT_THAT(walked(card.path(), 2), IsEmpty()) << "a link costs a level like a folder";
}

TEST(FolderWalkTest, StartFolderBehindALinkGivesResolvedPaths) {
    TemporaryFolder card;
    const std::string photo = card.write("photos/a.jpg", "");
    EXPECT_THAT(walked(card.link("link", "photos")), ElementsAre(photo));
}

TEST(FolderWalkTest, ExtensionOfTheFileCountsNotTheOneOfItsLink) {
    TemporaryFolder card;
    card.write("data/notes.txt", "");
    card.write("data/photo.jpg", "");
    card.link("a.jpg", "data/notes.txt");
    card.link("b.txt", "data/photo.jpg");
    EXPECT_THAT(walkedBelow(card, 1), ElementsAre("data/photo.jpg"));
}

TEST(FolderWalkTest, DanglingLinksArePassedOver) {
    TemporaryFolder card;
    card.link("a.jpg", "nowhere.jpg");
    card.link("b.jpg", "b.jpg");
    card.link("c.jpg", "d.jpg");
    card.link("d.jpg", "c.jpg");
    card.write("e.jpg", "");
    EXPECT_THAT(walkedBelow(card), ElementsAre("e.jpg"));
}

TEST(FolderWalkTest, FileReachedByManyWaysIsListedOnceAtTheFirst) {
    TemporaryFolder card;
    card.write("m/photo.jpg", "");
    card.link("a.jpg", "m/photo.jpg");
    card.write("b.jpg", "");
    card.link("n", "m");
    card.link("z.jpg", "a.jpg");
    EXPECT_THAT(walkedBelow(card), ElementsAre("m/photo.jpg", "b.jpg"));
}

TEST(FolderWalkTest, FileListedBeforeTheFirstLinkIsNotListedAgain) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    card.link("z.jpg", "a.jpg");
    EXPECT_THAT(walkedBelow(card), ElementsAre("a.jpg"));
}

TEST(FolderWalkTest, HardLinksAreFilesOfTheirOwn) {
    TemporaryFolder card;
    ASSERT_EQ(link(card.write("a.jpg", "").c_str(), card.at("b.jpg").c_str()), 0);
    EXPECT_THAT(walkedBelow(card), ElementsAre("a.jpg", "b.jpg"));
}

TEST(FolderWalkTest, FolderFirstSeenTooDeepIsWalkedAgainFromAHigherPlace) {
    TemporaryFolder card;
    card.write("target/sub/photo.jpg", "");
    card.link("a/link", "../target");
    EXPECT_THAT(walkedBelow(card, 3), ElementsAre("target/sub/photo.jpg"));
}

TEST(FolderWalkTest, DeepestRoundOfALoopComesFirst) {
    TemporaryFolder card;
    card.link("again", ".");
    card.write("m/1.jpg", "");
    card.write("z.jpg", "");
    EXPECT_THAT(walkedBelow(card, 3), ElementsAre("z.jpg", "m/1.jpg"));
    EXPECT_THAT(walkedBelow(card, 256), ElementsAre("z.jpg", "m/1.jpg"));
}

TEST(FolderWalkTest, TwoLinksToAnAncestorEndAtOnce) {
    TemporaryFolder card;
    card.write("a/b/1.jpg", "");
    card.link("a/b/up", "../..");
    card.link("a/b/up2", "../..");
    card.write("a/b/z.jpg", "");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(walkedBelow(card, 256), ElementsAre("a/b/1.jpg", "a/b/z.jpg"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST(FolderWalkTest, ManyLinksAmongManyFoldersEndAtOnce) {
    TemporaryFolder card;
    for (size_t i = 0; i < 12; ++i) {
        const std::string folder = numbered("f", i);
        card.write(folder + "/photo.jpg", "");
        for (size_t k = 0; k < 12; ++k)
            card.link(folder + numbered("/to", k), numbered("../f", k));
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(walkedBelow(card, 256).size(), 12U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(FolderWalkTest, LargeFolderWithALinkToItselfEndsSoon) {
    TemporaryFolder card;
    for (size_t i = 0; i < 1000; ++i)
        card.write(numbered("IMG_", 1000 + i, ".JPG"), "");
    card.link("self", ".");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(walkedBelow(card, 256).size(), 1000U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(FolderWalkTest, LoopOfLinksAtTheGreatestDepthDoesNotExhaustTheStack) {
    TemporaryFolder card;
    card.write("a/1.jpg", "");
    card.link("a/up", "..");
    EXPECT_THAT(walkedBelow(card, INT32_MAX), ElementsAre("a/1.jpg"));
}

// Folders that are not entered

TEST(FolderWalkTest, ExcludedFoldersAreNotEntered) {
    TemporaryFolder card;
    for (const char* name : {"trash", "Trash", "TRASH", ".Trashes", ".trashes", "RESOURCE.FRK",
                             "resource.frk", "___MOVE&RENAME", "___move&Rename", "THEVOLUMESETTINGSFOLDER",
                             "TheVolumeSettingsFolder", "___MOV~", "___mov~", "THEVOL~", "TheVol~"}) {
        card.write(std::string(name) + "/a.jpg", "");
    }
    EXPECT_THAT(walkedBelow(card), IsEmpty());
}

TEST(FolderWalkTest, NamesThatOnlyResembleExcludedOnesAreEntered) {
    TemporaryFolder card;
    const Paths names = {".Trash", "RESOURCE.FRK2", "THEVOL~1", "TRASHES",
                         "Trash2", "___MOVE&RENAM", "___MOV~1", "lost+found"};
    Paths expected;
    for (const std::string& name : names) {
        card.write(name + "/a.jpg", "");
        expected.push_back(name + "/a.jpg");
    }
    EXPECT_THAT(walkedBelow(card), testing::UnorderedElementsAreArray(expected));
}

TEST(FolderWalkTest, ExclusionLooksAtTheNameOfTheEntry) {
    TemporaryFolder card;
    TemporaryFolder elsewhere;
    const std::string photo = elsewhere.write("Trash/a.jpg", "");
    elsewhere.write("Photos/b.jpg", "");
    card.link("x", elsewhere.at("Trash"));
    card.link("trash", elsewhere.at("Photos"));
    EXPECT_THAT(walked(card.path()), ElementsAre(photo));
}

TEST(FolderWalkTest, StartFolderMayHaveAnExcludedName) {
    TemporaryFolder card;
    const std::string photo = card.write("Trash/a.jpg", "");
    EXPECT_THAT(walked(card.at("Trash")), ElementsAre(photo));
}

TEST(FolderWalkTest, PackagesAreNotEntered) {
    TemporaryFolder card;
    card.write("Viewer.app/a.jpg", "");
    card.write("Mine.PhotosLibrary/a.jpg", "");
    card.write("Catalog.lrdata/a.jpg", "");
    card.write("Unnamed/Contents/PkgInfo", "");
    card.write("Unnamed/a.jpg", "");
    card.write("Other/Contents/Info.plist", "");
    card.write("Other/a.jpg", "");
    EXPECT_THAT(walkedBelow(card), IsEmpty());
}

TEST(FolderWalkTest, PlainFoldersThatResemblePackagesAreEntered) {
    TemporaryFolder card;
    card.write("100.jpg/a.jpg", "");
    card.write("app/a.jpg", "");
    card.write("Contents/a.jpg", "");
    card.write("with/Contents/a.jpg", "");
    EXPECT_THAT(walkedBelow(card),
                ElementsAre("100.jpg/a.jpg", "app/a.jpg", "Contents/a.jpg", "with/Contents/a.jpg"));
}

TEST(FolderWalkTest, WhetherItIsAPackageIsAskedOfTheFolderBehindALink) {
    TemporaryFolder card;
    TemporaryFolder elsewhere;
    elsewhere.write("Viewer.app/a.jpg", "");
    const std::string photo = elsewhere.write("plain/b.jpg", "");
    card.link("viewer", elsewhere.at("Viewer.app"));
    card.link("plain.app", elsewhere.at("plain"));
    EXPECT_THAT(walked(card.path()), ElementsAre(photo));
}

TEST(FolderWalkTest, TrashOfADesktopIsNotEnteredButAFolderOfThatNameIs) {
    TemporaryFolder card;
    card.write(".Trash-1000/files/deleted.jpg", "");
    card.makeFolder(".Trash-1000/info");
    card.write(".Trash-1001/photo.jpg", "");
    card.write(".Trash-x/files/photo.jpg", "");
    card.makeFolder(".Trash-x/info");
    EXPECT_THAT(walkedBelow(card), ElementsAre(".Trash-1001/photo.jpg", ".Trash-x/files/photo.jpg"));
    EXPECT_TRUE(mayEnterFolder(".Trash-1000"));
}

// Files that are listed

TEST(FolderWalkTest, OnlyThreeLetterPhotoExtensionsAreListed) {
    TemporaryFolder card;
    for (const char* name :
         {"a.jpeg", "b.tiff", "c.JPG", "d.pct", "e.Pic", "f.tif", "g.bmp", "h.qal", "i.png", "j", ".jpg",
          "k.", "l.jpg.txt", "m.pict", "n.gif", "o.jp", "p.jpg~", "q.jpgx", "r.tIF"}) {
        card.write(name, "");
    }
    EXPECT_THAT(walkedBelow(card), ElementsAre("c.JPG", "d.pct", "e.Pic", "f.tif", "r.tIF"));
}

TEST(FolderWalkTest, ExtensionsCountCharactersAndAreRaisedInNoLocale) {
    TemporaryFolder card;
    card.write(
        "dotless.t\xC4\xB1"
        "f",
        "");  // the letter whose upper case is I
    card.write(
        "dotted.t\xC4\xB0"
        "f",
        "");  // the capital letter with a dot stays what it is
    card.write("wide.\xEF\xBD\x8Apg", "");
    EXPECT_THAT(walkedBelow(card), ElementsAre("dotless.t\xC4\xB1"
                                               "f"));
}

TEST(FolderWalkTest, PdfIsListedWhenTheQuerySaysYes) {
    TemporaryFolder card;
    card.write("no.pdf", "");
    card.write("yes.PdF", "");
    card.write("yes.pdfx", "");
    const InstalledPdfQuery query(
        [](const char* path) { return std::string_view(path).find("/yes.") != std::string_view::npos; });
    EXPECT_THAT(walkedBelow(card), ElementsAre("yes.PdF"));
}

TEST(FolderWalkTest, PdfQueryIsNotAskedOfOtherFiles) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    card.write("b.txt", "");
    card.write("pdf", "");
    card.write(".pdf", "");
    const InstalledPdfQuery query([](const char* path) {
        ADD_FAILURE() << path;
        return true;
    });
    EXPECT_THAT(walkedBelow(card), ElementsAre("a.jpg"));
}

TEST(FolderWalkTest, PipesAndSocketsNeitherHaltTheWalkNorHideFiles) {
    TemporaryFolder card;
    ASSERT_EQ(mkfifo(card.at("._a.jpg").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(card.at("b.txt").c_str(), 0600), 0);
    card.write("c.jpg", "");
    EXPECT_THAT(walkedBelow(card), ElementsAre("._a.jpg", "c.jpg"));
}

TEST(FolderWalkTest, NamesThatAreNotUTF8AreListedWithTheirBytes) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    card.write("b\xFF\xFE.jpg", "");
    card.write("c\xE9/photo.jpg", "");
    card.write("z.jpg", "");
    EXPECT_THAT(walkedBelow(card), ElementsAre("a.jpg", "b\xFF\xFE.jpg", "c\xE9/photo.jpg", "z.jpg"));
}

TEST(FolderWalkTest, NamesWithSpacesAndControlCharactersAreListed) {
    TemporaryFolder card;
    card.write(" .jpg", "");
    card.write("a b\n.jpg", "");
    card.write("%41:.jpg", "");
    EXPECT_THAT(walkedBelow(card), ElementsAre(" .jpg", "%41:.jpg", "a b\n.jpg"));
}

TEST(FolderWalkTest, LongestNamesAndDeepFoldersAreListed) {
    TemporaryFolder card;
    const std::string name = std::string(251, 'n') + ".jpg";
    card.write(name, "");
    std::string deep;
    for (int i = 0; i < 60; ++i)
        deep += "d/";
    card.write(deep + "a.jpg", "");
    EXPECT_THAT(walkedBelow(card), ElementsAre(deep + "a.jpg", name));
}

// Invisible files

TEST(FolderWalkTest, FileWithTheInvisibleFlagIsPassedOver) {
    TemporaryFolder card;
    if (!setFinderFlags(card.write("hidden.jpg", ""), 0x4000))
        GTEST_SKIP() << "the file system of temporary files keeps no extended attributes";
    ASSERT_TRUE(setFinderFlags(card.write("hidden2.jpg", ""), 0xFFFF));
    ASSERT_TRUE(setFinderFlags(card.write("seen.jpg", ""), 0x4000 ^ 0xFFFF));
    EXPECT_THAT(walkedBelow(card), ElementsAre("seen.jpg"));
}

TEST(FolderWalkTest, InvisibleFlagIsAskedOfFilesOnly) {
    TemporaryFolder card;
    card.write("folder/a.jpg", "");
    if (!setFinderFlags(card.at("folder"), 0x4000))
        GTEST_SKIP() << "the file system of temporary files keeps no extended attributes";
    EXPECT_THAT(walkedBelow(card), ElementsAre("folder/a.jpg"));
}

TEST(FolderWalkTest, InvisibleFlagIsAskedOfTheFileBehindALink) {
    TemporaryFolder card;
    TemporaryFolder elsewhere;
    if (!setFinderFlags(elsewhere.write("hidden.jpg", ""), 0x4000))
        GTEST_SKIP() << "the file system of temporary files keeps no extended attributes";
    card.link("a.jpg", elsewhere.at("hidden.jpg"));
    EXPECT_THAT(walked(card.path()), IsEmpty());
}

TEST(FolderWalkTest, LeadingDotAloneHidesNothing) {
    TemporaryFolder card;
    card.write(".a.jpg", "");
    card.write(".thumbnails/b.jpg", "");
    EXPECT_THAT(walkedBelow(card), ElementsAre(".a.jpg", ".thumbnails/b.jpg"));
}

TEST(FolderWalkTest, CompanionsOfForeignSystemsAreInvisibleByNameAndContent) {
    TemporaryFolder card;
    card.write("._a.jpg", kAppleDouble);
    card.write("._b.jpg", "\xFF\xD8\xFF\xE0");
    card.write("._c.jpg", kAppleDouble.substr(0, 3));
    card.write("d.jpg", kAppleDouble);
    EXPECT_THAT(walkedBelow(card), ElementsAre("._b.jpg", "._c.jpg", "d.jpg"));
}

// References that cannot be made

TEST(FolderWalkTest, MissingReferenceEndsItsFolderAndTheParentGoesOn) {
    TemporaryFolder card;
    card.write("a/1.jpg", "");
    card.write("a/2.jpg", "");
    card.write("a/3.jpg", "");
    card.write("a/4/5.jpg", "");
    card.write("b.jpg", "");
    const BrokenReferences broken({card.at("a/2.jpg")});
    EXPECT_THAT(walkedBelow(card), ElementsAre("a/1.jpg", "b.jpg"));
}

TEST(FolderWalkTest, MissingReferenceInTheStartFolderKeepsWhatWasFound) {
    TemporaryFolder card;
    card.write("a/1.jpg", "");
    card.write("b.jpg", "");
    card.write("c.jpg", "");
    const BrokenReferences broken({card.at("b.jpg")});
    EXPECT_THAT(walkedBelow(card), ElementsAre("a/1.jpg"));
}

TEST(FolderWalkTest, ReferenceIsWantedForFilesOfEveryKindBeforeTheyAreJudged) {
    TemporaryFolder card;
    card.write("a.txt", "");
    card.write("b.jpg", "");
    card.write("c/._d.jpg", kAppleDouble);
    card.write("c/e.jpg", "");
    card.write("f/g.jpg", "");
    card.link("f/h.jpg", "g.jpg");
    card.write("f/i.jpg", "");
    EXPECT_THAT(walkedBelow(card), ElementsAre("b.jpg", "c/e.jpg", "f/g.jpg", "f/i.jpg"));
    {
        const BrokenReferences broken({card.at("a.txt")});
        EXPECT_THAT(walkedBelow(card), IsEmpty()) << "before the extension";
    }
    {
        const BrokenReferences broken({card.at("c/._d.jpg")});
        EXPECT_THAT(walkedBelow(card), ElementsAre("b.jpg", "f/g.jpg", "f/i.jpg")) << "before the flags";
    }
    const BrokenReferences none({});
    EXPECT_THAT(walkedBelow(card), ElementsAre("b.jpg", "c/e.jpg", "f/g.jpg", "f/i.jpg"));
    EXPECT_THAT(none.asked(),
                ElementsAre(card.at("a.txt"), card.at("b.jpg"), card.at("c/._d.jpg"), card.at("c/e.jpg"),
                            card.at("f/g.jpg"), card.at("f/g.jpg"), card.at("f/i.jpg")))
        << "before the duplicate test, and by the resolved path";
}

TEST(FolderWalkTest, ReferencesAreNotWantedForFoldersAndForWhatDoesNotExist) {
    TemporaryFolder card;
    card.write("a/1.jpg", "");
    card.write("b.app/2.jpg", "");
    card.link("c.jpg", "nowhere");
    card.write("trash/3.jpg", "");
    const BrokenReferences broken({card.at("a"), card.at("b.app"), card.at("c.jpg"), card.at("nowhere")});
    EXPECT_THAT(walkedBelow(card), ElementsAre("a/1.jpg"));
    EXPECT_THAT(broken.asked(), ElementsAre(card.at("a/1.jpg")));
}

TEST(FolderWalkTest, FolderLeftEarlyIsTriedAgainByAnotherWay) {
    TemporaryFolder card;
    card.write("a/1.jpg", "");
    card.write("a/2.jpg", "");
    card.link("b", "a");
    const BrokenReferences broken({card.at("a/1.jpg")});
    EXPECT_THAT(walkedBelow(card), IsEmpty());
    EXPECT_THAT(broken.asked(), ElementsAre(card.at("a/1.jpg"), card.at("a/1.jpg")));
}

}  // namespace

}  // namespace fi::test

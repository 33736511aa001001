// SPDX-License-Identifier: Apache-2.0
// Files by URL: whether they exist, how large they are, what they are called, and their removal and copy.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>

#include "FileImporter/CFileImporterCocoa.h"
#include "FileImporter/FileTypeCodes.h"
#include "Foundation/TestText.h"
#include "PlatformKit/Base/ImplicitPool.h"
#include "Support/Privileges.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

namespace fs = std::filesystem;

bool existsByHand(const std::string& path) {
    return fs::symlink_status(path).type() != fs::file_type::not_found;
}

std::string nameOf(std::string_view path, uint8_t withParent) {
    const auto name = adopt(GetNameAtURLCocoa(urlAt(path).get(), withParent));
    return name ? std::string(name->view()) : "(null)";
}

OSErr copyTo(const std::string& destination, const std::string& source) {
    return CopyFileCocoa(urlAt(destination).get(), urlAt(source).get());
}

OSErr deleteAt(const std::string& path) {
    return DeleteFileAtURLCocoa(urlAt(path).get());
}

/// A folder that everybody may look into, with one in it that only the superuser may change.
class ProtectedFolder {
public:
    ProtectedFolder() {
        m_folder.write("kept/inside.jpg", "inside");
        chmod(m_folder.path().c_str(), 0755);
        chmod(m_folder.at("kept").c_str(), 0555);
    }
    ~ProtectedFolder() { chmod(m_folder.at("kept").c_str(), 0755); }
    ProtectedFolder(const ProtectedFolder&) = delete;
    ProtectedFolder& operator=(const ProtectedFolder&) = delete;

    [[nodiscard]] std::string inside() const { return m_folder.at("kept/inside.jpg"); }
    [[nodiscard]] const TemporaryFolder& folder() const { return m_folder; }

private:
    TemporaryFolder m_folder;
};

}  // namespace

TEST(FileServicesTest, FilesAndFoldersExist) {
    const TemporaryFolder folder;
    EXPECT_TRUE(IsExistAtURLCocoa(urlAt(folder.write("photo.jpg", "")).get()));
    EXPECT_TRUE(IsExistAtURLCocoa(urlAt(folder.path()).get()));
    EXPECT_TRUE(IsExistAtURLCocoa(urlAt(folder.path() + "/").get()));
}

TEST(FileServicesTest, WhatIsMissingOrHasNoPathDoesNotExist) {
    const TemporaryFolder folder;
    EXPECT_FALSE(IsExistAtURLCocoa(urlAt(folder.at("missing.jpg")).get()));
    EXPECT_FALSE(IsExistAtURLCocoa(nullptr));
    EXPECT_FALSE(IsExistAtURLCocoa(urlWithoutPath().get()));
}

TEST(FileServicesTest, LinksExistWhenTheirTargetsDo) {
    const TemporaryFolder folder;
    folder.write("photo.jpg", "bytes");
    EXPECT_TRUE(IsExistAtURLCocoa(urlAt(folder.link("good.jpg", "photo.jpg")).get()));
    EXPECT_FALSE(IsExistAtURLCocoa(urlAt(folder.link("dangling.jpg", "missing.jpg")).get()));
    EXPECT_FALSE(IsExistAtURLCocoa(urlAt(folder.link("loop.jpg", "loop.jpg")).get()));
}

TEST(FileServicesTest, SizesOfFilesAreExact) {
    const TemporaryFolder folder;
    for (const size_t size : {size_t{1}, size_t{4095}, size_t{65568}}) {
        const std::string path = folder.write("photo.jpg", std::string(size, 'x'));
        EXPECT_EQ(GetFileSizeAtURLCocoa(urlAt(path).get()), size);
    }
}

TEST(FileServicesTest, WhatIsMissingEmptyOrHasNoPathHasSizeZero) {
    const TemporaryFolder folder;
    EXPECT_EQ(GetFileSizeAtURLCocoa(nullptr), 0U);
    EXPECT_EQ(GetFileSizeAtURLCocoa(urlWithoutPath().get()), 0U);
    EXPECT_EQ(GetFileSizeAtURLCocoa(urlAt(folder.at("missing.jpg")).get()), 0U);
    EXPECT_EQ(GetFileSizeAtURLCocoa(urlAt(folder.write("empty.jpg", "")).get()), 0U);
}

TEST(FileServicesTest, SizeOfALinkIsItsOwn) {
    const TemporaryFolder folder;
    folder.write("photo.jpg", std::string(1000, 'x'));
    EXPECT_EQ(GetFileSizeAtURLCocoa(urlAt(folder.link("link.jpg", "photo.jpg")).get()),
              std::strlen("photo.jpg"));
    EXPECT_EQ(GetFileSizeAtURLCocoa(urlAt(folder.link("dangling.jpg", "missing")).get()),
              std::strlen("missing"));
}

TEST(FileServicesTest, SizesCountModulo4GiB) {
    const TemporaryFolder folder;
    const std::string path = folder.write("huge.jpg", "");
    ASSERT_EQ(truncate(path.c_str(), off_t{5} << 30U), 0);
    EXPECT_EQ(GetFileSizeAtURLCocoa(urlAt(path).get()), 1073741824U);
    ASSERT_EQ(truncate(path.c_str(), off_t{5'000'000'000}), 0);
    EXPECT_EQ(GetFileSizeAtURLCocoa(urlAt(path).get()), 705032704U);
}

TEST(FileServicesTest, NameIsTheLastComponent) {
    EXPECT_EQ(nameOf("/Volumes/CARD/DCIM/100ABCDE/IMG_0001.JPG", 0), "IMG_0001.JPG");
    EXPECT_EQ(nameOf("/Volumes/CARD/DCIM/", 0), "DCIM");
    EXPECT_EQ(nameOf("/caf\xe9.jpg", 0), "caf\xe9.jpg");
}

TEST(FileServicesTest, NameWithParentHasTheFoldersNameBeforeIt) {
    EXPECT_EQ(nameOf("/Volumes/CARD/DCIM/100ABCDE/IMG_0001.JPG", 1), "100ABCDE/IMG_0001.JPG");
    EXPECT_EQ(nameOf("/Volumes/CARD/DCIM/100ABCDE/IMG_0001.JPG", 255), "100ABCDE/IMG_0001.JPG");
    EXPECT_EQ(nameOf("/x.jpg", 1), "/x.jpg") << "the root's own name is a slash, which is not doubled";
}

TEST(FileServicesTest, WhatHasNoPathHasNoName) {
    for (const uint8_t withParent : {uint8_t{0}, uint8_t{1}}) {
        EXPECT_EQ(GetNameAtURLCocoa(nullptr, withParent), nullptr);
        EXPECT_EQ(GetNameAtURLCocoa(urlWithoutPath().get(), withParent), nullptr);
    }
}

TEST(FileServicesTest, NamesBelongToTheCaller) {
    const auto url = urlAt("/DCIM/100ABCDE/IMG_0001.JPG");
    for (const uint8_t withParent : {uint8_t{0}, uint8_t{1}}) {
        const size_t waiting = autoreleasedObjects();
        const auto name = adopt(GetNameAtURLCocoa(url.get(), withParent));
        const auto other = adopt(GetNameAtURLCocoa(url.get(), withParent));
        EXPECT_EQ(name->retainCount(), 1U);
        EXPECT_NE(name.get(), other.get());
        EXPECT_EQ(autoreleasedObjects(), waiting);
        EXPECT_EQ(url->retainCount(), 1U);
    }
}

TEST(FileServicesTest, RemovingNothingSucceeds) {
    EXPECT_EQ(DeleteFileAtURLCocoa(nullptr), 0);
}

TEST(FileServicesTest, RemovingWhatIsMissingOrHasNoPathFindsNothing) {
    const TemporaryFolder folder;
    EXPECT_EQ(deleteAt(folder.at("missing.jpg")), -43);
    EXPECT_EQ(DeleteFileAtURLCocoa(urlWithoutPath().get()), -43);
    const std::string dangling = folder.link("dangling.jpg", "missing.jpg");
    EXPECT_EQ(deleteAt(dangling), -43);
    EXPECT_TRUE(existsByHand(dangling));
}

TEST(FileServicesTest, RemovedFilesAreGone) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", "bytes");
    EXPECT_EQ(deleteAt(path), 0);
    EXPECT_FALSE(existsByHand(path));
}

TEST(FileServicesTest, FoldersAreRemovedWithAllTheyHold) {
    const TemporaryFolder folder;
    folder.write("card/DCIM/100ABCDE/IMG_0001.JPG", "bytes");
    folder.makeFolder("card/empty");
    EXPECT_EQ(deleteAt(folder.at("card")), 0);
    EXPECT_FALSE(existsByHand(folder.at("card")));
}

TEST(FileServicesTest, RemovingALinkSparesItsTarget) {
    const TemporaryFolder folder;
    const std::string target = folder.write("target/photo.jpg", "bytes");
    EXPECT_EQ(deleteAt(folder.link("link", "target")), 0);
    EXPECT_FALSE(existsByHand(folder.at("link")));
    folder.makeFolder("card");
    folder.link("card/link", "../target");
    EXPECT_EQ(deleteAt(folder.at("card")), 0);
    EXPECT_EQ(readFile(target), "bytes");
}

TEST(FileServicesTest, ASlashBehindALinkDoesNotMakeItItsTarget) {
    const TemporaryFolder folder;
    const std::string target = folder.write("target/photo.jpg", "bytes");
    folder.link("link", "target");
    EXPECT_EQ(deleteAt(folder.at("link/")), 0);
    EXPECT_FALSE(existsByHand(folder.at("link")));
    EXPECT_EQ(readFile(target), "bytes");
    folder.link("copy", "target");
    EXPECT_EQ(copyTo(folder.at("copy/"), target), -47);
    EXPECT_FALSE(existsByHand(folder.at("copy")));
    EXPECT_EQ(readFile(target), "bytes");
}

TEST(FileServicesTest, ARefusedRemovalIsTold) {
    const ProtectedFolder fixture;
    const OrdinaryUser user;
    EXPECT_EQ(deleteAt(fixture.inside()), -47);
    EXPECT_TRUE(existsByHand(fixture.inside()));
}

TEST(FileServicesTest, CopiesGoFromTheSecondPlaceToTheFirst) {
    const TemporaryFolder folder;
    const std::string bytes("the photo's \0 bytes \xff", 21);
    const std::string source = folder.write("source.jpg", bytes);
    EXPECT_EQ(copyTo(folder.at("copy.jpg"), source), 0);
    EXPECT_EQ(readFile(folder.at("copy.jpg")), bytes);
    EXPECT_EQ(readFile(source), bytes);
}

TEST(FileServicesTest, FoldersAreCopiedWithAllTheyHold) {
    const TemporaryFolder folder;
    folder.write("card/DCIM/100ABCDE/IMG_0001.JPG", "bytes");
    EXPECT_EQ(copyTo(folder.at("copy"), folder.at("card")), 0);
    EXPECT_EQ(readFile(folder.at("copy/DCIM/100ABCDE/IMG_0001.JPG")), "bytes");
}

TEST(FileServicesTest, LinksAreCopiedAsLinks) {
    const TemporaryFolder folder;
    folder.write("card/photo.jpg", "bytes");
    folder.link("link", "card");
    for (const char* source : {"link", "link/"}) {
        EXPECT_EQ(copyTo(folder.at("copy"), folder.at(source)), 0) << source;
        EXPECT_EQ(fs::read_symlink(folder.at("copy")), "card") << source;
        fs::remove(folder.at("copy"));
    }
}

TEST(FileServicesTest, CopyingWithoutBothPlacesFindsNothing) {
    const TemporaryFolder folder;
    const auto source = urlAt(folder.write("source.jpg", "bytes"));
    const auto destination = urlAt(folder.at("copy.jpg"));
    EXPECT_EQ(CopyFileCocoa(nullptr, source.get()), -43);
    EXPECT_EQ(CopyFileCocoa(destination.get(), nullptr), -43);
    EXPECT_EQ(CopyFileCocoa(nullptr, nullptr), -43);
    EXPECT_FALSE(existsByHand(folder.at("copy.jpg")));
}

TEST(FileServicesTest, CopyingASourceThatIsMissingOrHasNoPathSparesTheDestination) {
    const TemporaryFolder folder;
    const std::string destination = folder.write("copy.jpg", "old");
    EXPECT_EQ(copyTo(destination, folder.at("missing.jpg")), -43);
    EXPECT_EQ(copyTo(destination, folder.link("dangling.jpg", "missing.jpg")), -43);
    EXPECT_EQ(CopyFileCocoa(urlAt(destination).get(), urlWithoutPath().get()), -43);
    EXPECT_EQ(readFile(destination), "old");
}

TEST(FileServicesTest, ADestinationWithoutAPathSucceedsWithoutACopy) {
    const TemporaryFolder folder;
    const auto source = urlAt(folder.write("source.jpg", "bytes"));
    EXPECT_EQ(CopyFileCocoa(urlWithoutPath().get(), source.get()), 0);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

TEST(FileServicesTest, ADestinationThatExistsIsRemovedAndNothingIsCopied) {
    const TemporaryFolder folder;
    const std::string source = folder.write("source.jpg", "new");
    const std::string destination = folder.write("copy.jpg", "old");
    EXPECT_EQ(copyTo(destination, source), -47);
    EXPECT_FALSE(existsByHand(destination));
    EXPECT_EQ(readFile(source), "new");
    EXPECT_EQ(copyTo(destination, source), 0) << "the second try finds the place free";
    EXPECT_EQ(readFile(destination), "new");
}

TEST(FileServicesTest, AFolderAtTheDestinationIsRemovedWithAllItHolds) {
    const TemporaryFolder folder;
    const std::string source = folder.write("source.jpg", "new");
    folder.write("copy/inside/old.jpg", "old");
    EXPECT_EQ(copyTo(folder.at("copy"), source), -47);
    EXPECT_FALSE(existsByHand(folder.at("copy")));
}

TEST(FileServicesTest, CopyingAFileOntoItselfLosesIt) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", "bytes");
    EXPECT_EQ(copyTo(path, path), -47);
    EXPECT_FALSE(existsByHand(path));
}

TEST(FileServicesTest, ADestinationThatCannotBeRemovedIsNotOverwritten) {
    const ProtectedFolder fixture;
    // The file itself may be written; only its removal is refused.
    chmod(fixture.inside().c_str(), 0666);
    const std::string source = fixture.folder().write("source.jpg", "new");
    chmod(source.c_str(), 0644);
    const OrdinaryUser user;
    EXPECT_EQ(copyTo(fixture.inside(), source), -47);
    EXPECT_EQ(readFile(fixture.inside()), "inside");
}

TEST(FileServicesTest, ADanglingLinkAtTheDestinationIsNotWrittenThrough) {
    const TemporaryFolder folder;
    const std::string source = folder.write("source.jpg", "new");
    EXPECT_EQ(copyTo(folder.link("copy.jpg", "elsewhere.jpg"), source), -47);
    EXPECT_FALSE(existsByHand(folder.at("elsewhere.jpg")));
}

TEST(FileServicesTest, ACopyIntoAMissingFolderIsRefused) {
    const TemporaryFolder folder;
    const std::string source = folder.write("source.jpg", "bytes");
    EXPECT_EQ(copyTo(folder.at("missing/copy.jpg"), source), -47);
    EXPECT_FALSE(existsByHand(folder.at("missing")));
}

TEST(FileServicesTest, ReferencesAreMadeToFilesAndFolders) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo \u00e9 caf\xe9.jpg", "bytes");
    for (const std::string& item : {path, folder.path()}) {
        FSRef reference{};
        EXPECT_TRUE(PathToFSRefCocoa(item.c_str(), &reference)) << item;
        const auto url = urlOfFileReference(reference);
        ASSERT_TRUE(url) << item;
        EXPECT_EQ(url->path()->view(), item);
    }
}

TEST(FileServicesTest, NoReferenceIsMadeToWhatIsMissing) {
    const TemporaryFolder folder;
    FSRef reference;
    std::memset(&reference, 0x5A, sizeof reference);
    const FSRef before = reference;
    EXPECT_FALSE(PathToFSRefCocoa(folder.at("missing.jpg").c_str(), &reference));
    EXPECT_FALSE(PathToFSRefCocoa("", &reference));
    EXPECT_FALSE(PathToFSRefCocoa(nullptr, &reference));
    EXPECT_EQ(std::memcmp(&reference, &before, sizeof reference), 0);
}

TEST(FileServicesTest, FileNamesAreStoredAsTextWithAnEnd) {
    char buffer[32];
    std::memset(buffer, 0x5A, sizeof buffer);
    EXPECT_TRUE(NSURLGetFileName(urlAt("/DCIM/\u00e9t\u00e9.jpg").get(), buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "\u00e9t\u00e9.jpg");
    EXPECT_EQ(buffer[std::strlen(buffer) + 1], 0x5A);
}

TEST(FileServicesTest, FileNamesThatDoNotFitAreNotStored) {
    const auto url = urlAt("/DCIM/12345.jpg");
    char buffer[16];
    std::memset(buffer, 0x5A, sizeof buffer);
    EXPECT_FALSE(NSURLGetFileName(url.get(), buffer, 0));
    EXPECT_FALSE(NSURLGetFileName(url.get(), buffer, 9)) << "no room for the end";
    EXPECT_EQ(buffer[0], 0x5A);
    EXPECT_TRUE(NSURLGetFileName(url.get(), buffer, 10));
    EXPECT_FALSE(NSURLGetFileName(nullptr, buffer, sizeof buffer));
    EXPECT_FALSE(NSURLGetFileName(urlWithoutPath().get(), buffer, sizeof buffer));
}

TEST(FileServicesTest, FileNamesAsStringsAreNotTheCallersToRelease) {
    const auto url = urlAt("/DCIM/IMG_0001.JPG");
    const AutoreleasePool pool;
    const size_t waiting = autoreleasedObjects();
    CFStringRef name = nullptr;
    EXPECT_TRUE(NSURLGetFileNameAsCFString(url.get(), &name));
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name->view(), "IMG_0001.JPG");
    EXPECT_EQ(name->retainCount(), 1U) << "the pool's";
    EXPECT_EQ(autoreleasedObjects(), waiting + 1);
}

TEST(FileServicesTest, NoFileNameGivesNoString) {
    CFStringRef name = kUTTypeJPEG;
    EXPECT_FALSE(NSURLGetFileNameAsCFString(nullptr, &name));
    EXPECT_EQ(name, nullptr);
    name = kUTTypeJPEG;
    EXPECT_FALSE(NSURLGetFileNameAsCFString(urlWithoutPath().get(), &name));
    EXPECT_EQ(name, nullptr);
}

TEST(FileServicesTest, ThereIsNoHeapObject) {
    EXPECT_EQ(GetProcessHeap(), nullptr);
}

TEST(FileServicesTest, HeapBlocksHaveTheirSizeWhateverHeapAndFlagsSay) {
    int notAHeap = 0;
    for (void* heap : {static_cast<void*>(nullptr), static_cast<void*>(&notAHeap)}) {
        for (const uint32_t flags : {0U, 8U, 0xFFFF'FFFFU}) {
            void* block = HeapAlloc(heap, flags, 100'000);
            ASSERT_NE(block, nullptr);
            std::memset(block, 0x5A, 100'000);
            EXPECT_TRUE(HeapFree(heap, flags, block));
        }
    }
    EXPECT_EQ(notAHeap, 0);
}

TEST(FileServicesTest, AHeapBlockOfNoBytesIsABlock) {
    void* block = HeapAlloc(nullptr, 0, 0);
    EXPECT_NE(block, nullptr);
    block = HeapReAlloc(nullptr, 0, block, 0);
    EXPECT_NE(block, nullptr);
    EXPECT_TRUE(HeapFree(nullptr, 0, block));
}

TEST(FileServicesTest, AHeapBlockKeepsItsContentsInAnotherSize) {
    auto* block = static_cast<char*>(HeapAlloc(nullptr, 0, 8));
    std::copy_n("12345678", 8, block);
    block = static_cast<char*>(HeapReAlloc(nullptr, 0, block, 1'000'000));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::string_view(block, 8), "12345678");
    std::memset(block + 8, 0, 1'000'000 - 8);
    block = static_cast<char*>(HeapReAlloc(nullptr, 0, block, 4));
    EXPECT_EQ(std::string_view(block, 4), "1234");
    EXPECT_TRUE(HeapFree(nullptr, 0, block));
    EXPECT_TRUE(HeapFree(nullptr, 0, nullptr));
}

}  // namespace fi::test

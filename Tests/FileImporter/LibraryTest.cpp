// SPDX-License-Identifier: Apache-2.0
// What holds for the library as a whole: it starts no thread, writes and says nothing, throws nothing, and
// everything that it makes has one owner.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "FileImporter/CFileImporterCocoa.h"
#include "FileImporter/CFileSearchDC.h"
#include "FileImporter/CapturedLog.h"
#include "FileImporter/ZebFileManager.h"
#include "Foundation/HeaderBytes.h"
#include "Foundation/SaveExtension.h"
#include "Foundation/TestText.h"
#include "PlatformKit/Base/ImplicitPool.h"
#include "PlatformKit/FileReference.h"
#include "PlatformKit/ImageSource.h"
#include "PlatformKit/PrivateFolders.h"
#include "PlatformKit/PropertyList.h"
#include "Support/FailingAllocations.h"
#include "Support/MakePictures.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

namespace fs = std::filesystem;

constexpr int kAllLevels = 256;

size_t entriesOf(const char* folder) {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

size_t threads() {
    return entriesOf("/proc/self/task");
}

size_t openFiles() {
    return entriesOf("/proc/self/fd");
}

/// What would change if somebody wrote into a folder: kind, size, permissions and date of every item.
std::map<std::string, std::string> snapshotOf(const std::string& folder) {
    std::map<std::string, std::string> items;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        struct stat status {};
        EXPECT_EQ(lstat(entry.path().c_str(), &status), 0);
        items[entry.path()] =
            std::to_string(status.st_mode) + " " + std::to_string(status.st_size) + " " +
            std::to_string(status.st_mtim.tv_sec) + " " + std::to_string(status.st_mtim.tv_nsec) + " " +
            std::to_string(status.st_ctim.tv_sec) + " " + std::to_string(status.st_ctim.tv_nsec);
    }
    return items;
}

/// A card with good pictures, pictures that are cut, and files that only look like some.
void fillCard(const TemporaryFolder& folder) {
    const Bytes jpeg = jpegOf(testPicture(160, 120));
    const Bytes photo = withExif(jpeg, {.orientation = 6, .date = "2018:09:03 14:05:59"});
    const Bytes tiff = tiffOf(testPicture(60, 40), 3);
    folder.write("DCIM/100ABCDE/IMG_0001.JPG", photo);
    folder.write("DCIM/100ABCDE/IMG_0002.TIF", tiff);
    folder.write("DCIM/100ABCDE/IMG_0003.JPG", std::span(photo).first(photo.size() / 2));
    folder.write("DCIM/100ABCDE/IMG_0004.TIF", std::span(tiff).first(tiff.size() / 2));
    folder.write("DCIM/100ABCDE/IMG_0005.JPG", "no picture at all");
    folder.write("DCIM/101ABCDE/IMG_0006.JPG", "");
    folder.write("DCIM/101ABCDE/IMG_0007.TIF", jpegWith({.width = 65500, .height = 65500}));
    folder.write("DCIM/101ABCDE/IMG_0008.JPG", tiffWith({.components = 1, .bitsPerComponent = 1}));
    folder.write("DCIM/101ABCDE/notes.txt", "notes");
    folder.write("DCIM/101ABCDE/._IMG_0001.JPG", std::string_view("\x00\x05\x16\x07", 4));
    folder.link("DCIM/101ABCDE/IMG_0009.JPG", "../100ABCDE/IMG_0001.JPG");
    folder.link("DCIM/101ABCDE/AGAIN", "..");
}

/// Every question that can be asked about one photo.
void askEverything(CFURLRef url) {
    DateTimeRec created{};
    DateTimeRec modified{};
    int32_t depth = 0;
    uint32_t size = 0;
    char name[256];
    PascalBuffer extension;
    FSRef reference;
    CFStringRef nameText = nullptr;
    (void)IsExistAtURLCocoa(url);
    (void)GetFileSizeAtURLCocoa(url);
    CFRelease(GetNameAtURLCocoa(url, 1));
    std::free(ReadFileAtURLCocoa(url, &size));
    std::free(ReadFileAtURLCocoaWithLimit(url, &size, 0));
    (void)GetFileModDateCocoa(url, &modified);
    (void)CMF_GetFileTime(url, &created, nullptr, &modified);
    (void)GetFileBoundsAtURLCocoa(url);
    (void)imageDepthAtPathCocoa(url, &depth);
    CFRelease(GetUserDataAtPath(url != nullptr ? url->path() : nullptr));
    (void)NSURLGetFileName(url, name, sizeof name);
    (void)NSURLGetFileNameAsCFString(url, &nameText);
    chooseSaveExtension(url, {kUTTypeJPEG, kUTTypeTIFF, kUTTypePDF}, extension);
    if (url != nullptr && url->path() != nullptr) (void)PathToFSRefCocoa(url->path()->c_str(), &reference);
}

std::vector<Ref<const CFURL>> photosOf(const std::string& folder) {
    CFileSearchDC search;
    EXPECT_TRUE(search.Open(urlAt(folder).get()));
    EXPECT_EQ(search.FileSearch(kAllLevels), 0);
    std::vector<Ref<const CFURL>> photos;
    for (uint32_t index = 1; index <= search.GetListNum(); ++index) {
        CFURLRef url = nullptr;
        EXPECT_TRUE(search.GetURLAt(&url, index));
        photos.push_back(adopt(url));
    }
    return photos;
}

/// Lists the card, asks everything about every photo and decodes each.
size_t session(const std::string& card) {
    const AutoreleasePool pool;
    const auto photos = photosOf(card);
    for (const auto& url : photos) {
        askEverything(url.get());
        const auto source = ImageSource::open(url.get());
        if (source) (void)source->createImage(0, 16, 16);
    }
    return photos.size();
}

/// Variables of the environment for the length of a scope.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const std::string& value) : m_name(name) {
        if (const char* before = std::getenv(name)) m_before = before;
        setenv(name, value.c_str(), 1);
    }
    ~ScopedEnvironment() {
        if (m_before) {
            setenv(m_name, m_before->c_str(), 1);
        } else {
            unsetenv(m_name);
        }
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    const char* m_name;
    std::optional<std::string> m_before;
};

/// What a library could change behind the back of the program that loads it.
struct ProcessState {
    size_t threadCount = threads();
    size_t fileCount = openFiles();
    std::string folder = fs::current_path();
    std::string locale = std::setlocale(LC_ALL, nullptr);
    std::vector<std::string> environment;
    std::vector<void (*)(int)> handlers;
    mode_t mask;

    ProcessState() : mask(umask(022)) {
        umask(mask);
        for (char** variable = environ; *variable != nullptr; ++variable)
            environment.emplace_back(*variable);
        for (int number = 1; number < SIGRTMIN; ++number) {
            struct sigaction action {};
            if (sigaction(number, nullptr, &action) == 0) handlers.push_back(action.sa_handler);
        }
    }
    friend bool operator==(const ProcessState&, const ProcessState&) = default;
};

struct Operation {
    const char* name;
    std::function<void()> run;
};

enum class MemoryOutcome : uint8_t { Sufficient, Refused, Thrown };

/// Runs an operation that may allocate so many times before memory runs out.
MemoryOutcome withAllocations(int successes, const Operation& operation) {
    const FailingAllocations allocations(successes);
    try {
        operation.run();
    } catch (...) {
        return MemoryOutcome::Thrown;
    }
    return allocations.happened() ? MemoryOutcome::Refused : MemoryOutcome::Sufficient;
}

/// Every exported operation that may need memory. Results that a caller would own are given back.
std::vector<Operation> operationsOn(const TemporaryFolder& folder) {
    const std::string path = folder.write("a rather long name for a photo.jpg", jpegWith({}));
    const auto url = urlAt(path);
    const auto free = urlAt(folder.at("a place for a copy that nothing stands at.jpg"));
    const auto link = urlAt(folder.link("a link.jpg", "a rather long name for a photo.jpg"));
    const auto name = pascal("a folder for temporary items of this test");
    ZebFileManager* const manager = ZebFileManager::defaultManager();
    ExifInformation facts{};
    EXPECT_EQ(manager->readExifTag(url->path(), &facts), kNoErr);
    const double modified = facts.modificationTime;
    const auto list = urlAt(folder.write(
        "list.plist",
        "<plist><array><dict><key>a key that is longer than a short string</key><array><string>a text that "
        "is longer than a short string</string><data>QUJD</data></array></dict></array></plist>"));
    return {
        {"GetNameAtURLCocoa", [=] { CFRelease(GetNameAtURLCocoa(url.get(), 1)); }},
        {"CopyFileCocoa", [=] { (void)CopyFileCocoa(free.get(), url.get()); }},
        {"DeleteFileAtURLCocoa", [=] { (void)DeleteFileAtURLCocoa(free.get()); }},
        {"ReadFileAtURLCocoa", [=] { std::free(ReadFileAtURLCocoa(url.get(), nullptr)); }},
        {"ReadFileAtURLCocoaWithLimit",
         [=] { std::free(ReadFileAtURLCocoaWithLimit(url.get(), nullptr, 0)); }},
        {"GetFileModDateCocoa",
         [=] {
             DateTimeRec date;
             (void)GetFileModDateCocoa(url.get(), &date);
         }},
        {"GetFileBoundsAtURLCocoa", [=] { (void)GetFileBoundsAtURLCocoa(url.get()); }},
        {"imageDepthAtPathCocoa",
         [=] {
             int32_t depth = 0;
             (void)imageDepthAtPathCocoa(url.get(), &depth);
         }},
        {"GetTempFolderURLCocoa",
         [=] {
             CFURLRef made = nullptr;
             (void)GetTempFolderURLCocoa(&made, name.data(), name.data());
             CFRelease(made);
         }},
        {"PathToFSRefCocoa",
         [=] {
             FSRef reference;
             (void)PathToFSRefCocoa(path.c_str(), &reference);
         }},
        {"urlOfFileReference",
         [=] {
             FSRef reference{};
             (void)makeFileReference(path.c_str(), &reference);
             (void)urlOfFileReference(reference);
         }},
        {"copyTemporaryFolder", [=] { (void)copyTemporaryFolder(); }},
        {"copyCacheFolder", [=] { (void)copyCacheFolder(); }},
        {"readPropertyList", [=] { (void)readPropertyList(list.get()); }},
        {"CMF_GetFileTime",
         [=] {
             DateTimeRec date;
             (void)CMF_GetFileTime(url.get(), &date, nullptr, &date);
         }},
        {"CheckDateForCocoa",
         [=] {
             DateTimeRec date;
             (void)CheckDateForCocoa("2018:09:03 14:05:59", &date);
         }},
        {"CheckDateSub",
         [=, date = text("a text of the caf\u00e9, too long to be kept without memory")] {
             int16_t value = 0;
             (void)CheckDateSub(date.get(), &value, 5);
         }},
        {"GetUserDataAtPath", [=] { CFRelease(GetUserDataAtPath(url->path())); }},
        {"NSURLGetFileName",
         [=] {
             char buffer[256];
             (void)NSURLGetFileName(url.get(), buffer, sizeof buffer);
         }},
        {"NSURLGetFileNameAsCFString",
         [=] {
             CFStringRef fileName = nullptr;
             if (NSURLGetFileNameAsCFString(url.get(), &fileName) != (fileName != nullptr)) std::abort();
         }},
        {"ZebFileManager::readDataHandle",
         [=] {
             const AutoreleasePool pool;
             const NSData* data = nullptr;
             const OSErr code = manager->readDataHandle(url->path(), &data);
             if ((code == kNoErr) != (data != nullptr)) std::abort();
         }},
        {"ZebFileManager::readExifTag",
         [=] {
             ExifInformation info{};
             manager->flushExifCache();
             if (manager->readExifTag(url->path(), &info) != kNoErr) std::abort();
             if (manager->readExifTag(link->path(), &info) != kNoErr) std::abort();
         }},
        {"ZebFileManager::setExifToCahce",
         [=] {
             ExifInformation info{};
             manager->flushExifCache();
             info.modificationTime = modified;
             const bool added = manager->setExifToCahce(url->path(), &info);
             if (added != manager->exifFromCache(url->path(), &info)) std::abort();
         }},
    };
}

}  // namespace

TEST(LibraryTest, ASessionStartsNoThreadAndKeepsNoFileOpen) {
    const TemporaryFolder card;
    fillCard(card);
    const size_t threadsBefore = threads();
    const size_t filesBefore = openFiles();
    EXPECT_EQ(session(card.path()), 8U);
    EXPECT_EQ(threads(), threadsBefore);
    EXPECT_EQ(openFiles(), filesBefore);
}

TEST(LibraryTest, ASessionSaysNothing) {
    const TemporaryFolder card;
    fillCard(card);
    const CapturedLog log;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    session(card.path());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(log.lines().empty());
}

TEST(LibraryTest, ASessionWritesNothing) {
    const TemporaryFolder card;
    const TemporaryFolder home;
    fillCard(card);
    const ScopedEnvironment homeFolder("HOME", home.path());
    const ScopedEnvironment cacheFolder("XDG_CACHE_HOME", home.makeFolder("cache"));
    const ScopedEnvironment temporaryFolder("TMPDIR", home.makeFolder("temporary"));
    const auto cardBefore = snapshotOf(card.path());
    const auto homeBefore = snapshotOf(home.path());
    session(card.path());
    EXPECT_EQ(snapshotOf(card.path()), cardBefore);
    EXPECT_EQ(snapshotOf(home.path()), homeBefore);
}

TEST(LibraryTest, LoadingChangesNothingInTheProcess) {
    const TemporaryFolder home;
    const ScopedEnvironment homeFolder("HOME", home.path());
    const ScopedEnvironment cacheFolder("XDG_CACHE_HOME", home.path());
    const ScopedEnvironment temporaryFolder("TMPDIR", home.path());
    const ProcessState before;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    void* library = dlopen(FI_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    const std::string output = testing::internal::GetCapturedStdout();
    const std::string errors = testing::internal::GetCapturedStderr();
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(output + errors, "");
    EXPECT_TRUE(ProcessState() == before);
    EXPECT_TRUE(fs::is_empty(home.path()));
    EXPECT_EQ(dlclose(library), 0);
}

TEST(LibraryTest, ListsCountFromOneAndNoneIsAtZero) {
    const TemporaryFolder card;
    card.write("a.jpg", "");
    card.write("b.jpg", "");
    CFileSearchDC search;
    ASSERT_TRUE(search.Open(urlAt(card.path()).get()));
    search.FileSearch(1);
    ASSERT_EQ(search.GetListNum(), 2U);
    CFURLRef url = nullptr;
    EXPECT_FALSE(search.GetURLAt(&url, 0));
    EXPECT_EQ(url, nullptr);
    ASSERT_TRUE(search.GetURLAt(&url, 1));
    EXPECT_EQ(adopt(url)->path()->view(), card.at("a.jpg"));
    ASSERT_TRUE(search.GetURLAt(&url, 2));
    EXPECT_EQ(adopt(url)->path()->view(), card.at("b.jpg"));
    EXPECT_FALSE(search.GetURLAt(&url, 3));
}

TEST(LibraryTest, WhatAnOperationMakesIsTheCallersAlone) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("photo.jpg", jpegWith({})));
    const auto name = pascal("Photos");
    CFileSearchDC search;
    ASSERT_TRUE(search.Open(urlAt(folder.path()).get()));
    search.FileSearch(1);
    struct Maker {
        const char* name;
        std::function<CFTypeRef()> make;
    };
    const Maker makers[] = {
        {"GetNameAtURLCocoa", [&] { return GetNameAtURLCocoa(url.get(), 0); }},
        {"GetNameAtURLCocoa with parent", [&] { return GetNameAtURLCocoa(url.get(), 1); }},
        {"GetUserDataAtPath", [&] { return GetUserDataAtPath(url->path()); }},
        {"GetTempFolderURLCocoa",
         [&] {
             CFURLRef made = nullptr;
             EXPECT_EQ(GetTempFolderURLCocoa(&made, name.data(), nullptr), 0);
             return made;
         }},
        {"CFileSearchDC::GetURLAt",
         [&] {
             CFURLRef found = nullptr;
             EXPECT_TRUE(search.GetURLAt(&found, 1));
             return found;
         }},
    };
    for (const Maker& maker : makers) {
        const size_t waiting = autoreleasedObjects();
        const auto first = adopt(maker.make());
        const auto second = adopt(maker.make());
        ASSERT_TRUE(first && second) << maker.name;
        EXPECT_NE(first.get(), second.get()) << maker.name;
        EXPECT_EQ(first->retainCount(), 1U) << maker.name;
        EXPECT_EQ(autoreleasedObjects(), waiting) << maker.name;
    }
    EXPECT_EQ(url->retainCount(), 1U) << "arguments are not kept";
}

TEST(LibraryTest, WhatIsOnlyLentStaysWithItsOwner) {
    const TemporaryFolder folder;
    folder.write("photo.jpg", "");
    const auto search = make<FileSearchDC>();
    search->open(urlAt(folder.path()).get());
    search->searchStart(1);
    const size_t waiting = autoreleasedObjects();
    const CFStringRef path = search->getStringAt(1);
    ASSERT_NE(path, nullptr);
    EXPECT_EQ(path->retainCount(), 1U) << "the list's";
    EXPECT_EQ(search->getStringAt(1), path);
    EXPECT_EQ(autoreleasedObjects(), waiting);
}

TEST(LibraryTest, MissingArgumentsAreAnswered) {
    EXPECT_NO_THROW(askEverything(nullptr));
    EXPECT_NO_THROW(askEverything(urlWithoutPath().get()));
    EXPECT_NO_THROW(askEverything(urlAt("/").get()));
    EXPECT_NO_THROW(askEverything(urlAt("/" + std::string(70'000, 'x')).get()));
    EXPECT_NO_THROW(askEverything(urlAt("/proc/self/mem").get()));
    EXPECT_NO_THROW(askEverything(urlAt("/dev/null").get()));
}

TEST(LibraryTest, DamagedFilesAreAnsweredWithoutAWord) {
    const TemporaryFolder folder;
    const std::vector<Bytes> good = {
        withExif(jpegOf(testPicture(48, 32)), {.orientation = 6, .date = "2018:09:03 14:05:59"}),
        tiffOf(testPicture(24, 16), 3), jpegWith({}), tiffWith({})};
    testing::internal::CaptureStderr();
    std::mt19937 random(20260);
    for (int round = 0; round < 400; ++round) {
        Bytes bytes = good[static_cast<size_t>(round) % good.size()];
        for (unsigned changes = random() % 8; changes > 0; --changes)
            bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
        if (round % 3 == 0) bytes.resize(random() % bytes.size());
        const auto url = urlAt(folder.write("photo.jpg", bytes));
        ASSERT_NO_THROW(askEverything(url.get())) << round;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(LibraryTest, NothingIsThrownWhereverMemoryRunsOut) {
    const TemporaryFolder folder;
    constexpr int kMostAllocations = 2000;
    for (const Operation& operation : operationsOn(folder)) {
        MemoryOutcome outcome = MemoryOutcome::Refused;
        for (int successes = 0; outcome == MemoryOutcome::Refused && successes < kMostAllocations;
             ++successes) {
            outcome = withAllocations(successes, operation);
            EXPECT_NE(outcome, MemoryOutcome::Thrown) << operation.name << " after " << successes;
        }
        EXPECT_EQ(outcome, MemoryOutcome::Sufficient) << operation.name;
    }
}

TEST(LibraryTest, ReferencesMadeWhereMemoryRanOutStandForOneFileEach) {
    const TemporaryFolder folder;
    for (int successes = 0; successes < 40; ++successes) {
        const std::string first = folder.write("a rather long name " + std::to_string(successes), "x");
        const std::string second = folder.write("another long name " + std::to_string(successes), "x");
        FSRef reference{};
        {
            const FailingAllocations scarce(successes);
            (void)makeFileReference(first.c_str(), &reference);
        }
        FSRef a{};
        FSRef b{};
        ASSERT_TRUE(makeFileReference(second.c_str(), &b));
        ASSERT_TRUE(makeFileReference(first.c_str(), &a));
        EXPECT_NE(a.id, b.id) << successes;
        EXPECT_EQ(urlOfFileReference(a)->path()->view(), first);
        EXPECT_EQ(urlOfFileReference(b)->path()->view(), second);
    }
}

TEST(LibraryTest, SourcesHaveAFolderForEachSubsystem) {
    const fs::path sources = fs::path(FI_SOURCES);
    std::set<std::string> folders;
    for (const auto& entry : fs::directory_iterator(sources)) {
        if (entry.is_directory()) folders.insert(entry.path().filename().string());
    }
    EXPECT_EQ(folders, (std::set<std::string>{"DataPreparation", "FileImporter", "Foundation",
                                              "ImageMetadata", "PhotoCollections", "PlatformKit"}));
    EXPECT_TRUE(fs::exists(sources / "FileImporter/CFileImporterCocoa.cpp"));
    for (const char* face : {"FileServices.h", "FileTypes.h", "HeadRead.h", "DateText.h"})
        EXPECT_TRUE(fs::exists(sources / "Foundation" / face)) << face;
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// What is remembered of photos, and when it counts.
#include "ImageMetadata/ExifCache.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "Foundation/TestText.h"
#include "ImageMetadata/ExifPhotos.h"
#include "ImageMetadata/FileStamp.h"
#include "PlatformKit/Data.h"
#include "PlatformKit/Dictionary.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

double modifiedAt(const std::string& path) {
    return modificationTimeAt(path.c_str()).value_or(-1);
}

/// A record of the file as it is now that can be told from others by its width.
ExifInformation recordOf(const std::string& path, uint16_t width) {
    ExifInformation info{};
    info.width = width;
    info.modificationTime = modifiedAt(path);
    return info;
}

/// A record without a zero byte.
ExifInformation fullRecord(double modificationTime) {
    ExifInformation info;
    std::memset(&info, 0x5A, sizeof info);
    info.modificationTime = modificationTime;
    return info;
}

/// A cache together with the texts of the paths that it is asked for.
struct Asking {
    ExifCache cache;

    bool add(const std::string& path, const ExifInformation& info) {
        return cache.add(ExifCache::Key(text(path).get()), info);
    }
    bool find(const std::string& path, ExifInformation& info) {
        return cache.find(ExifCache::Key(text(path).get()), info);
    }
    void replaceSize(const std::string& path, NSSize size, NSPoint resolution) {
        cache.replaceSize(ExifCache::Key(text(path).get()), size, resolution);
    }
    /// Width of the record that is found; -1 when none is.
    int widthOf(const std::string& path) {
        ExifInformation info{};
        return find(path, info) ? info.width : -1;
    }
    size_t entries() const { return cache.copyEntries()->count(); }
};

}  // namespace

TEST(ExifCacheTest, AnEmptyOneFindsNothing) {
    const TemporaryFolder folder;
    Asking asking;
    ExifInformation info = fullRecord(1);
    const ExifInformation before = info;
    EXPECT_FALSE(asking.find(folder.write("photo.jpg", "x"), info));
    EXPECT_EQ(std::memcmp(&info, &before, sizeof info), 0);
    EXPECT_EQ(asking.entries(), 0U);
}

TEST(ExifCacheTest, NoPathHasNoEntry) {
    ExifCache cache;
    ExifInformation info{};
    EXPECT_FALSE(cache.add(ExifCache::Key(nullptr), info));
    EXPECT_FALSE(cache.find(ExifCache::Key(nullptr), info));
    cache.replaceSize(ExifCache::Key(nullptr), {1, 1}, {1, 1});
    EXPECT_EQ(cache.copyEntries()->count(), 0U);
}

TEST(ExifCacheTest, EveryByteOfARecordIsKept) {
    const TemporaryFolder folder;
    Asking asking;
    const std::string path = folder.write("photo.jpg", "x");
    ExifInformation empty{};
    empty.modificationTime = modifiedAt(path);
    for (const ExifInformation& record : {fullRecord(modifiedAt(path)), empty}) {
        asking.cache.flush();
        ASSERT_TRUE(asking.add(path, record));
        ExifInformation found = fullRecord(7);
        ASSERT_TRUE(asking.find(path, found));
        EXPECT_EQ(std::memcmp(&found, &record, sizeof found), 0);
    }
}

TEST(ExifCacheTest, AnEntryIsAddedUnlessOneMatches) {
    const TemporaryFolder folder;
    Asking asking;
    const std::string path = folder.write("photo.jpg", "x");
    EXPECT_TRUE(asking.add(path, recordOf(path, 1)));
    EXPECT_FALSE(asking.add(path, recordOf(path, 2)));
    EXPECT_EQ(asking.widthOf(path), 1);
    EXPECT_EQ(asking.entries(), 1U);
}

TEST(ExifCacheTest, ATouchedFileGetsASecondEntryAndTheOldOneStays) {
    const TemporaryFolder folder;
    Asking asking;
    const std::string path = folder.write("photo.jpg", "x");
    setModified(path, 1'500'000'000, 250'000'000);
    EXPECT_TRUE(asking.add(path, recordOf(path, 1)));
    setModified(path, 1'500'000'000, 250'001'000);
    EXPECT_EQ(asking.widthOf(path), -1) << "a microsecond later is another file";
    EXPECT_TRUE(asking.add(path, recordOf(path, 2)));
    EXPECT_EQ(asking.widthOf(path), 2);
    EXPECT_EQ(asking.entries(), 2U);
    setModified(path, 1'500'000'000, 250'000'000);
    EXPECT_EQ(asking.widthOf(path), 1) << "the old entry again";
    EXPECT_FALSE(asking.add(path, recordOf(path, 3)));
}

TEST(ExifCacheTest, OfTwoEntriesThatMatchTheOlderOneCounts) {
    const TemporaryFolder folder;
    Asking asking;
    const std::string path = folder.write("photo.jpg", "x");
    ExifInformation early = recordOf(path, 1);
    early.modificationTime = 1'000'000'000.5;
    EXPECT_TRUE(asking.add(path, early));
    early.width = 2;
    EXPECT_TRUE(asking.add(path, early)) << "neither is the file's";
    setModified(path, 1'000'000'000, 500'000'000);
    EXPECT_EQ(asking.widthOf(path), 1);
    asking.replaceSize(path, {9, 9}, {});
    EXPECT_EQ(asking.widthOf(path), 9);
    EXPECT_EQ(asking.entries(), 2U);
}

TEST(ExifCacheTest, ADeletedFileNeverMatches) {
    const TemporaryFolder folder;
    Asking asking;
    const std::string path = folder.write("photo.jpg", "x");
    const ExifInformation record = recordOf(path, 1);
    ASSERT_TRUE(asking.add(path, record));
    ASSERT_EQ(unlink(path.c_str()), 0);
    EXPECT_EQ(asking.widthOf(path), -1);
    asking.replaceSize(path, {9, 9}, {});
    EXPECT_TRUE(asking.add(path, record)) << "no entry matches";
    folder.write("photo.jpg", "x");
    setModified(path, 0);
    EXPECT_EQ(asking.widthOf(path), -1);
}

TEST(ExifCacheTest, ALinkCountsByItsOwnTimeAndOnlyWhileItLeadsSomewhere) {
    const TemporaryFolder folder;
    Asking asking;
    const std::string target = folder.write("photo.jpg", "x");
    const std::string link = folder.link("link.jpg", "photo.jpg");
    setModified(target, 1'400'000'000);
    setModified(link, 1'500'000'000);
    EXPECT_EQ(modifiedAt(link), 1'500'000'000.0);
    ASSERT_TRUE(asking.add(link, recordOf(link, 1)));
    setModified(target, 1'600'000'000);
    EXPECT_EQ(asking.widthOf(link), 1) << "the target's time does not matter";
    ASSERT_EQ(unlink(target.c_str()), 0);
    EXPECT_EQ(asking.widthOf(link), -1) << "the link leads nowhere";
    folder.write("photo.jpg", "y");
    EXPECT_EQ(asking.widthOf(link), 1);
    setModified(link, 1'500'000'001);
    EXPECT_EQ(asking.widthOf(link), -1);
}

TEST(ExifCacheTest, ARecordThatACallerStampsMatches) {
    const TemporaryFolder folder;
    Asking asking;
    const std::string path = folder.write("photo.jpg", "x");
    ExifInformation info{};
    // Here a division by 1e9 would round to another number.
    setModified(path, 1, 144'272'509);
    info.modificationTime = 1 + 144'272'509 * 1e-9;
    ASSERT_TRUE(asking.add(path, info));
    EXPECT_TRUE(asking.find(path, info));
    EXPECT_FALSE(asking.add(path, info));
}

TEST(ExifCacheTest, PathsAreComparedByTheirBytes) {
    const TemporaryFolder folder;
    Asking asking;
    const std::string path = folder.write("caf\xc3\xa9.jpg", "x");
    ASSERT_TRUE(asking.add(path, recordOf(path, 1)));
    EXPECT_EQ(asking.widthOf(folder.at("cafe\xcc\x81.jpg")), -1);
    EXPECT_EQ(asking.widthOf(folder.path() + "//caf\xc3\xa9.jpg"), -1) << "the same file by another path";
    EXPECT_EQ(asking.widthOf(path), 1);
}

TEST(ExifCacheTest, FlushForgetsEverything) {
    const TemporaryFolder folder;
    Asking asking;
    const std::string path = folder.write("photo.jpg", "x");
    ASSERT_TRUE(asking.add(path, recordOf(path, 1)));
    asking.cache.flush();
    EXPECT_EQ(asking.entries(), 0U);
    EXPECT_EQ(asking.widthOf(path), -1);
    EXPECT_TRUE(asking.add(path, recordOf(path, 2)));
    EXPECT_EQ(asking.widthOf(path), 2);
}

TEST(ExifCacheTest, SizesAreTruncatedAndAZeroResolutionKeepsTheOld) {
    const TemporaryFolder folder;
    Asking asking;
    const std::string path = folder.write("photo.jpg", "x");
    ASSERT_TRUE(asking.add(path, fullRecord(modifiedAt(path))));
    struct Case {
        NSSize size;
        NSPoint resolution;
        uint16_t width;
        uint16_t height;
        NSPoint kept;
    };
    const CGFloat nan = std::nan("");
    const CGFloat infinity = std::numeric_limits<CGFloat>::infinity();
    const Case cases[] = {
        {{640.9, 480.999}, {300, 150.5}, 640, 480, {300, 150.5}},
        {{1, 2}, {0, 0}, 1, 2, {300, 150.5}},
        {{3, 4}, {0, 72}, 3, 4, {0, 72}},
        {{65536 + 5, 65535.5}, {0, 0}, 5, 65535, {0, 72}},
        {{-1.5, -0.5}, {0, 0}, 65535, 0, {0, 72}},
        {{nan, infinity}, {0, 0}, 0, 0, {0, 72}},
        {{1e300, -1e300}, {0, 0}, 0, 0, {0, 72}},
    };
    for (const Case& c : cases) {
        asking.replaceSize(path, c.size, c.resolution);
        ExifInformation expected = fullRecord(modifiedAt(path));
        expected.width = c.width;
        expected.height = c.height;
        expected.xResolution = c.kept.x;
        expected.yResolution = c.kept.y;
        ExifInformation info{};
        ASSERT_TRUE(asking.find(path, info));
        EXPECT_EQ(std::memcmp(&info, &expected, sizeof info), 0) << c.size.width;
    }
    EXPECT_EQ(asking.entries(), 1U);
}

TEST(ExifCacheTest, ReplacingTheSizeOfWhatDoesNotMatchDoesNothing) {
    const TemporaryFolder folder;
    Asking asking;
    const std::string path = folder.write("photo.jpg", "x");
    asking.replaceSize(path, {9, 9}, {9, 9});
    EXPECT_EQ(asking.entries(), 0U);
    const ExifInformation record = recordOf(path, 1);
    ASSERT_TRUE(asking.add(path, record));
    setModified(path, 1'000'000'000);
    asking.replaceSize(path, {9, 9}, {9, 9});
    const auto entries = asking.cache.copyEntries();
    const auto* data = entries->at<CFDictionary>(0)->value<CFData>("exif");
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(std::memcmp(data->bytes().data(), &record, sizeof record), 0);
}

TEST(ExifCacheTest, EntriesAreDictionariesWithPathAndExifOldestFirst) {
    const TemporaryFolder folder;
    Asking asking;
    std::vector<ExifInformation> records;
    for (const char* name : {"b.jpg", "a.jpg", "c.jpg"}) {
        const std::string path = folder.write(name, "x");
        records.push_back(fullRecord(modifiedAt(path)));
        ASSERT_TRUE(asking.add(path, records.back()));
    }
    const auto entries = asking.cache.copyEntries();
    ASSERT_EQ(entries->count(), 3U);
    for (size_t i = 0; i < 3; ++i) {
        const auto* entry = entries->at<CFDictionary>(i);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->count(), 2U);
        const auto* path = entry->value<CFString>("path");
        const auto* data = entry->value<CFData>("exif");
        ASSERT_TRUE(path != nullptr && data != nullptr);
        EXPECT_EQ(path->view(), folder.at(std::string(1, "bac"[i]) + ".jpg"));
        ASSERT_EQ(data->length(), sizeof(ExifInformation));
        EXPECT_EQ(std::memcmp(data->bytes().data(), &records[i], sizeof records[i]), 0);
    }
}

TEST(ExifCacheTest, ManyPathsAndTheirVersionsAreKeptApart) {
    const TemporaryFolder folder;
    Asking asking;
    constexpr uint16_t kFiles = 300;
    std::vector<std::string> paths;
    for (uint16_t i = 0; i < kFiles; ++i)
        paths.push_back(folder.write("photo" + std::to_string(i) + ".jpg", ""));
    for (const time_t second : {1'000'000'000, 1'000'000'001, 1'000'000'002}) {
        for (uint16_t i = 0; i < kFiles; ++i) {
            setModified(paths[i], second);
            ASSERT_TRUE(
                asking.add(paths[i], recordOf(paths[i], static_cast<uint16_t>(i + second % 10 * 1000))));
        }
    }
    for (uint16_t i = 0; i < kFiles; ++i) {
        EXPECT_EQ(asking.widthOf(paths[i]), i + 2000);
        setModified(paths[i], 1'000'000'001);
        EXPECT_EQ(asking.widthOf(paths[i]), i + 1000);
    }
    EXPECT_EQ(asking.entries(), 3U * kFiles);
}

TEST(ExifCacheTest, ThreadsThatAddTheSameFileLeaveOneEntry) {
    const TemporaryFolder folder;
    Asking asking;
    std::vector<std::string> paths;
    for (int i = 0; i < 50; ++i)
        paths.push_back(folder.write("photo" + std::to_string(i) + ".jpg", ""));
    const auto work = [&](uint16_t width) {
        for (const std::string& path : paths) {
            ExifInformation info{};
            if (!asking.find(path, info)) asking.add(path, recordOf(path, width));
            asking.replaceSize(path, {static_cast<CGFloat>(width), 1}, {});
        }
    };
    std::thread first(work, uint16_t{1});
    std::thread second(work, uint16_t{2});
    std::thread third([&] {
        for (int i = 0; i < 20; ++i)
            (void)asking.entries();
    });
    first.join();
    second.join();
    third.join();
    EXPECT_EQ(asking.entries(), paths.size());
    for (const std::string& path : paths) {
        const int width = asking.widthOf(path);
        EXPECT_TRUE(width == 1 || width == 2) << width;
    }
}

/// A flush may come between the two times that an operation takes the lock, and another path's entry to
/// where this one's was.
TEST(ExifCacheTest, ThreadsMayFlushWhatOthersAreAskingFor) {
    const TemporaryFolder folder;
    Asking asking;
    std::vector<std::string> paths;
    for (int i = 0; i < 12; ++i) {
        paths.push_back(folder.write("photo" + std::to_string(i) + ".jpg", ""));
        setModified(paths.back(), 1'500'000'000);
    }
    std::atomic<bool> goesOn{true};
    std::atomic<int> added{0};
    const auto work = [&](bool backwards) {
        for (size_t i = 0; goesOn; ++i) {
            const size_t at = backwards ? paths.size() - 1 - i % paths.size() : i % paths.size();
            if (asking.add(paths[at], recordOf(paths[at], static_cast<uint16_t>(at)))) ++added;
            const int width = asking.widthOf(paths[at]);
            ASSERT_TRUE(width == -1 || width == static_cast<int>(at)) << width << ", not " << at;
        }
    };
    std::thread first(work, false);
    std::thread second(work, true);
    for (int flushes = 0; flushes < 40; ++flushes) {
        added = 0;
        asking.cache.flush();
        while (added < 6 && !testing::Test::HasFailure())
            std::this_thread::yield();
    }
    goesOn = false;
    first.join();
    second.join();
}

TEST(ExifCacheTest, TheProcessHasOne) {
    EXPECT_EQ(&sharedExifCache(), &sharedExifCache());
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// The manager: one object, reads of heads, and the cache of Exif facts by its historic operations.
#include "FileImporter/ZebFileManager.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "FileImporter/CFileImporterCocoa.h"
#include "Foundation/ScopedTimeZone.h"
#include "Foundation/TestText.h"
#include "ImageMetadata/ExifCache.h"
#include "ImageMetadata/ExifPhotos.h"
#include "PlatformKit/Base/ImplicitPool.h"
#include "Support/FailingAllocations.h"
#include "Support/FailingReads.h"
#include "Support/Privileges.h"
#include "Support/TemporaryFolder.h"

namespace fi {

struct ZebFileManagerLayout {
    /// Addresses of the instance variables in their historic order.
    static std::vector<const void*> addressesOf(const ZebFileManager& manager) {
        return {&manager._target,        &manager._preparedAction,         &manager._queueLock,
                &manager._queues,        &manager._isPrepareThreadRunning, &manager._isMainBusy,
                &manager._mountedVolumes};
    }
    static const NSMutableArray* queuesOf(const ZebFileManager& manager) { return manager._queues.get(); }
};

namespace test {

namespace {

constexpr time_t kModified = 1'535'983'559;

class ZebFileManagerTest : public testing::Test {
protected:
    void SetUp() override { m_manager->flushExifCache(); }
    void TearDown() override { m_manager->flushExifCache(); }

    /// A photo whose facts are an orientation of 6 and a size, with resolutions.
    std::string writePhoto(std::string_view name) const {
        const auto exif = exifWithVersion()
                              .longs(0xA002, {4000})
                              .longs(0xA003, {3000})
                              .fractions(0x011A, {{300, 1}})
                              .fractions(0x011B, {{150, 1}});
        std::string path = m_folder.write(name, photoOf(TiffDirectory().shorts(0x0112, {6}), exif));
        setModified(path, kModified);
        return path;
    }

    const TemporaryFolder m_folder;
    ZebFileManager* const m_manager = ZebFileManager::defaultManager();
    const AutoreleasePool m_pool;
};

std::string patterned(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    return bytes;
}

std::string_view bytesOf(const NSData* data) {
    if (data == nullptr) return "(no data)";
    return {reinterpret_cast<const char*>(data->bytes().data()), data->length()};
}

size_t remembered() {
    return sharedExifCache().copyEntries()->count();
}

}  // namespace

TEST_F(ZebFileManagerTest, ThereIsOneAndItStays) {
    ASSERT_NE(m_manager, nullptr);
    EXPECT_EQ(ZebFileManager::defaultManager(), m_manager);
    ZebFileManager::terminateManager();
    EXPECT_EQ(ZebFileManager::defaultManager(), m_manager);
    std::thread([&] { EXPECT_EQ(ZebFileManager::defaultManager(), m_manager); }).join();
}

TEST_F(ZebFileManagerTest, InstanceVariablesStandInTheirOrder) {
    const auto addresses = ZebFileManagerLayout::addressesOf(*m_manager);
    EXPECT_TRUE(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
    EXPECT_EQ(std::adjacent_find(addresses.begin(), addresses.end()), addresses.end());
}

TEST_F(ZebFileManagerTest, BeginsWithAnEmptyQueue) {
    const NSMutableArray* queues = ZebFileManagerLayout::queuesOf(*m_manager);
    ASSERT_NE(queues, nullptr);
    EXPECT_EQ(queues->count(), 0U);
}

TEST_F(ZebFileManagerTest, HeadsAre65567BytesAndWholeFilesAreWhole) {
    const std::string bytes = patterned(100'000);
    const std::string name = m_folder.write("photo.jpg", bytes);
    const auto path = text(name);
    const NSData* data = nullptr;
    EXPECT_EQ(m_manager->readDataHandle(path.get(), &data), 0);
    EXPECT_TRUE(bytesOf(data) == bytes.substr(0, 65567));
    uint32_t size = 7;
    EXPECT_EQ(m_manager->readDataHandle(path.get(), &data, &size), 0);
    EXPECT_TRUE(bytesOf(data) == bytes.substr(0, 65567));
    EXPECT_EQ(size, 7U) << "this form tells no size";
    EXPECT_EQ(m_manager->readDataHandle(path.get(), &data, &size, true), 0);
    EXPECT_TRUE(bytesOf(data) == bytes.substr(0, 65567));
    EXPECT_EQ(size, 65567U);
    EXPECT_EQ(m_manager->readDataHandle(path.get(), &data, &size, false), 0);
    EXPECT_TRUE(bytesOf(data) == bytes);
    EXPECT_EQ(size, 100'000U);
    EXPECT_EQ(m_manager->readDataHandle(path.get(), &data, nullptr, true), 0);
    EXPECT_EQ(data->length(), 65567U);

    const auto url = urlAt(name);
    void* block = ReadFileAtURLCocoa(url.get(), &size);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(size, 65567U) << "the file services read the same";
    EXPECT_EQ(std::memcmp(block, bytes.data(), size), 0);
    std::free(block);
}

TEST_F(ZebFileManagerTest, DataAreAutoreleased) {
    const auto path = text(m_folder.write("photo.jpg", "bytes"));
    const size_t waiting = autoreleasedObjects();
    const NSData* data = nullptr;
    {
        const AutoreleasePool pool;
        ASSERT_EQ(m_manager->readDataHandle(path.get(), &data), 0);
        EXPECT_EQ(data->retainCount(), 1U);
        EXPECT_EQ(autoreleasedObjects(), waiting + 1);
    }
    EXPECT_EQ(autoreleasedObjects(), waiting);
}

TEST_F(ZebFileManagerTest, WhatCannotBeReadHasACodeAndNoData) {
    ASSERT_EQ(chmod(m_folder.path().c_str(), 0755), 0);
    const std::string locked = m_folder.write("locked.jpg", patterned(70'000));
    ASSERT_EQ(chmod(locked.c_str(), 0), 0);
    m_folder.makeFolder("folder.jpg");
    struct stat folder {};
    ASSERT_EQ(stat(m_folder.at("folder.jpg").c_str(), &folder), 0);
    constexpr uint32_t kUntouched = 7;
    struct Case {
        std::string path;
        OSErr code;
        uint32_t size;
    };
    const Case cases[] = {
        {m_folder.at("missing.jpg"), -43, kUntouched},
        {m_folder.write("empty.jpg", ""), -43, kUntouched},
        {m_folder.write("album.qal", "a project"), -43, kUntouched},
        {locked, -43, 65567},
        {m_folder.at("folder.jpg"), -108, static_cast<uint32_t>(folder.st_size)},
    };
    const auto before = CFData::create({});
    const OrdinaryUser user;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        const auto path = text(c.path);
        const NSData* data = before.get();
        uint32_t size = kUntouched;
        EXPECT_EQ(m_manager->readDataHandle(path.get(), &data, &size, true), c.code);
        EXPECT_EQ(data, nullptr);
        EXPECT_EQ(size, c.size);
        data = before.get();
        EXPECT_EQ(m_manager->readDataHandle(path.get(), &data), c.code);
        EXPECT_EQ(data, nullptr);
        data = before.get();
        size = kUntouched;
        EXPECT_EQ(m_manager->readDataHandle(path.get(), &data, &size), c.code);
        EXPECT_EQ(data, nullptr);
        EXPECT_EQ(size, kUntouched);
        EXPECT_EQ(m_manager->readDataHandle(path.get(), &data, nullptr, false), c.code);
    }
    const NSData* data = before.get();
    EXPECT_EQ(m_manager->readDataHandle(nullptr, &data), -43);
    EXPECT_EQ(data, nullptr);
}

TEST_F(ZebFileManagerTest, OfAPulledCardNothingIsHandedOut) {
    const auto path = text(m_folder.write("photo.jpg", patterned(70'000)));
    for (const bool limit : {true, false}) {
        const NSData* data = nullptr;
        uint32_t size = 0;
        const FailingReads reads(0);
        EXPECT_EQ(m_manager->readDataHandle(path.get(), &data, &size, limit), -108);
        EXPECT_EQ(data, nullptr);
        EXPECT_EQ(size, limit ? 65567U : 70'000U) << "the bytes to read were known";
    }
}

TEST_F(ZebFileManagerTest, OfAPulledCardFactsAreWhatTheCallerPassedIn) {
    // Read in two steps by the quick way; either may fail, and then the plain way does.
    const auto main = TiffDirectory().bytes(0x0100, kTagUndefinedType, padding(20'000)).shorts(0x0112, {3});
    const auto exif = exifWithVersion().text(0x9003, "2019:05:06 10:11:12");
    const std::string name = m_folder.write("photo.jpg", photoOf(main, exif));
    setModified(name, kModified);
    for (const int successes : {0, 1}) {
        m_manager->flushExifCache();
        ExifInformation info{};
        info.orientation = 6;
        info.width = 4000;
        {
            const FailingReads reads(successes);
            EXPECT_EQ(m_manager->readExifTag(text(name).get(), &info), 0);
        }
        EXPECT_EQ(info.orientation, 6) << successes;
        EXPECT_EQ(info.width, 0) << successes;
        EXPECT_EQ(info.height, 4000) << successes;
        EXPECT_EQ(info.date, DateTimeRec{}) << successes;
        EXPECT_EQ(info.modificationTime, kModified) << successes;
        EXPECT_EQ(remembered(), 1U) << successes;
    }
}

TEST_F(ZebFileManagerTest, AFileOf4GiBIsAnEmptyOne) {
    const std::string path = m_folder.write("huge.jpg", "0123456789abcdef");
    const NSData* data = nullptr;
    ASSERT_EQ(truncate(path.c_str(), off_t{1} << 32U), 0);
    EXPECT_EQ(m_manager->readDataHandle(text(path).get(), &data), -43);
    ASSERT_EQ(truncate(path.c_str(), (off_t{1} << 32U) + 10), 0);
    EXPECT_EQ(m_manager->readDataHandle(text(path).get(), &data), 0);
    EXPECT_EQ(bytesOf(data), "0123456789");
}

TEST_F(ZebFileManagerTest, WithoutMemoryAReadFails) {
    const auto path = text(m_folder.write("photo.jpg", patterned(70'000)));
    for (int successes = 0; successes < 20; ++successes) {
        const NSData* data = nullptr;
        OSErr code = 0;
        bool refused = false;
        {
            const FailingAllocations allocations(successes);
            code = m_manager->readDataHandle(path.get(), &data);
            refused = allocations.happened();
        }
        EXPECT_EQ(code, refused ? -108 : 0) << successes;
        EXPECT_EQ(data == nullptr, refused) << successes;
    }
}

TEST_F(ZebFileManagerTest, SizesHave64BitsAndLinksTheirOwn) {
    const std::string path = m_folder.write("huge.jpg", "x");
    ASSERT_EQ(truncate(path.c_str(), (off_t{1} << 32U) + 10), 0);
    EXPECT_EQ(m_manager->fileSize(text(path).get()), (uint64_t{1} << 32U) + 10);
    EXPECT_EQ(m_manager->fileSize(text(m_folder.link("link.jpg", "huge.jpg")).get()), 8U);
    EXPECT_EQ(m_manager->fileSize(text(m_folder.link("dangling.jpg", "nothing")).get()), 7U);
    EXPECT_EQ(m_manager->fileSize(text(m_folder.at("missing.jpg")).get()), 0U);
    EXPECT_EQ(m_manager->fileSize(nullptr), 0U);
}

TEST_F(ZebFileManagerTest, ModificationDatesFollowLinksAndCountDaysFromSunday) {
    const ScopedTimeZone zone(kCentralEurope);
    const std::string path = m_folder.write("photo.jpg", "x");
    setModified(path, kModified);
    const std::string link = m_folder.link("link.jpg", "photo.jpg");
    setModified(link, 1'000'000'000);
    constexpr DateTimeRec kDate = {2018, 9, 3, 16, 5, 59, 1};
    for (const std::string& name : {path, link}) {
        DateTimeRec date{};
        EXPECT_EQ(m_manager->fileModDate(text(name).get(), &date), 0);
        EXPECT_EQ(date, kDate) << name;
    }
    setModified(path, kModified - 86400);
    DateTimeRec date{};
    EXPECT_EQ(m_manager->fileModDate(text(path).get(), &date), 0);
    EXPECT_EQ(date.dayOfWeek, 0) << "a Sunday";
    EXPECT_EQ(m_manager->fileModDate(text(m_folder.link("dangling.jpg", "nothing")).get(), &date), -43);
    EXPECT_EQ(m_manager->fileModDate(text(m_folder.at("missing.jpg")).get(), &date), -43);
    EXPECT_EQ(m_manager->fileModDate(nullptr, &date), -43);
}

TEST_F(ZebFileManagerTest, CopyingAlwaysGoesOnAfterAnError) {
    EXPECT_TRUE(m_manager->fileManager(nullptr, nullptr));
    EXPECT_TRUE(m_manager->fileManager(m_manager, CFDictionary::create({}).get()));
}

TEST_F(ZebFileManagerTest, FactsAreReadAndComeFromTheCacheThen) {
    const auto path = text(writePhoto("photo.jpg"));
    ExifInformation info{};
    EXPECT_FALSE(m_manager->exifFromCache(path.get(), &info)) << "there is no cache yet";
    EXPECT_EQ(m_manager->readExifTag(path.get(), &info), 0);
    EXPECT_EQ(info.orientation, 6);
    EXPECT_EQ(info.width, 3000);
    EXPECT_EQ(info.modificationTime, kModified);
    ExifInformation cached{};
    EXPECT_TRUE(m_manager->exifFromCache(path.get(), &cached));
    EXPECT_EQ(std::memcmp(&cached, &info, sizeof info), 0);
    EXPECT_FALSE(m_manager->setExifToCahce(path.get(), &info)) << "it is there";
    m_manager->flushExifCache();
    EXPECT_FALSE(m_manager->exifFromCache(path.get(), &cached));
    EXPECT_TRUE(m_manager->setExifToCahce(path.get(), &info));
    EXPECT_TRUE(m_manager->exifFromCache(path.get(), &cached));
}

TEST_F(ZebFileManagerTest, FactsOfNothingAreNotThere) {
    ExifInformation info{};
    EXPECT_EQ(m_manager->readExifTag(nullptr, &info), -43);
    EXPECT_EQ(m_manager->readExifTag(text(m_folder.at("missing.jpg")).get(), &info), -43);
    EXPECT_FALSE(m_manager->exifFromCache(nullptr, &info));
    EXPECT_FALSE(m_manager->setExifToCahce(nullptr, &info));
    m_manager->replaceSizeInCache(nullptr, {1, 2}, {3, 4});
    EXPECT_EQ(remembered(), 0U);
    const auto missing = text(m_folder.at("missing.jpg"));
    EXPECT_TRUE(m_manager->setExifToCahce(missing.get(), &info)) << "no entry matches";
    EXPECT_FALSE(m_manager->exifFromCache(missing.get(), &info)) << "there is no file";
}

TEST_F(ZebFileManagerTest, SizesAreThoseOfTheFacts) {
    const auto path = text(writePhoto("photo.jpg"));
    NSPoint resolution{1, 2};
    EXPECT_EQ(m_manager->sizeFromExif(path.get(), &resolution), (NSSize{3000, 4000}));
    EXPECT_EQ(resolution, (NSPoint{300, 150}));
    EXPECT_EQ(m_manager->sizeFromExif(path.get(), nullptr), (NSSize{3000, 4000}));
    resolution = {1, 2};
    EXPECT_EQ(m_manager->sizeFromExif(text(m_folder.at("missing.jpg")).get(), &resolution), (NSSize{0, 0}));
    EXPECT_EQ(resolution, (NSPoint{1, 2})) << "left alone";
}

TEST_F(ZebFileManagerTest, AReplacedSizeIsTheSizeFromThenOn) {
    const auto path = text(writePhoto("photo.jpg"));
    m_manager->replaceSizeInCache(path.get(), {1, 1}, {1, 1});
    EXPECT_EQ(remembered(), 0U) << "nothing matches, nothing happens";
    NSPoint resolution;
    ASSERT_EQ(m_manager->sizeFromExif(path.get(), &resolution), (NSSize{3000, 4000}));
    m_manager->replaceSizeInCache(path.get(), {640.9, 480.2}, {0, 0});
    EXPECT_EQ(m_manager->sizeFromExif(path.get(), &resolution), (NSSize{640, 480}));
    EXPECT_EQ(resolution, (NSPoint{300, 150})) << "kept";
    m_manager->replaceSizeInCache(path.get(), {640, 480}, {72.5, 0});
    EXPECT_EQ(m_manager->sizeFromExif(path.get(), &resolution), (NSSize{640, 480}));
    EXPECT_EQ(resolution, (NSPoint{72.5, 0}));
}

TEST_F(ZebFileManagerTest, ThreadsThatReadTheSamePhotoLeaveOneEntry) {
    const auto path = text(writePhoto("photo.jpg"));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                ExifInformation info{};
                EXPECT_EQ(m_manager->readExifTag(path.get(), &info), 0);
                EXPECT_EQ(info.orientation, 6);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(remembered(), 1U);
}

}  // namespace test
}  // namespace fi

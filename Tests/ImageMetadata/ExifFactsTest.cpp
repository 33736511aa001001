// SPDX-License-Identifier: Apache-2.0
// The Exif facts of a photo, from the file or from the cache.
#include "ImageMetadata/ExifFacts.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "FileImporter/CIMAGETAG.h"
#include "Foundation/ScopedTimeZone.h"
#include "Foundation/TestText.h"
#include "ImageMetadata/ExifCache.h"
#include "ImageMetadata/ExifPhotos.h"
#include "ImageMetadata/FactReaders.h"
#include "PlatformKit/Base/ImplicitPool.h"
#include "PlatformKit/Data.h"
#include "PlatformKit/Dictionary.h"
#include "Support/FailingAllocations.h"
#include "Support/Privileges.h"
#include "Support/ScopedFaults.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

constexpr time_t kModified = 1'535'983'559;
constexpr DateTimeRec kModifiedDate = {2018, 9, 3, 14, 5, 59, 1};  ///< of kModified in UTC, a Monday
constexpr const char* kShot = "2019:05:06 10:11:12";
constexpr DateTimeRec kShotDate = {2019, 5, 6, 10, 11, 12, 0};

/// A folder of photos, all of them of kModified, and an empty cache.
class ExifFactsTest : public testing::Test {
protected:
    void SetUp() override { sharedExifCache().flush(); }
    void TearDown() override { sharedExifCache().flush(); }

    template <typename Contents>
    std::string write(std::string_view name, const Contents& bytes) const {
        std::string path = m_folder.write(name, bytes);
        setModified(path, kModified);
        return path;
    }

    static OSErr read(const std::string& path, ExifInformation& info) {
        return readExifTag(text(path).get(), info);
    }

    /// The facts of a photo by the plain way, which have to be those of the quick way and readExifTag's.
    ExifInformation factsOf(const Bytes& photo) const {
        const std::string path = write("photo.jpg", photo);
        const auto name = text(path);
        ExifInformation plain{};
        ExifInformation quick{};
        ExifInformation read{};
        readFactsPlainly(name.get(), plain);
        EXPECT_TRUE(readFactsQuickly(name.get(), quick) ? std::memcmp(&plain, &quick, sizeof plain) == 0
                                                        : quick.modificationTime == 0);
        sharedExifCache().flush();
        EXPECT_EQ(readExifTag(name.get(), read), 0);
        EXPECT_EQ(std::memcmp(&plain, &read, sizeof plain), 0);
        return plain;
    }
    ExifInformation factsOf(const TiffDirectory& ifd0, const TiffDirectory& exif) const {
        const ExifInformation little = factsOf(photoOf(ifd0, exif, ByteOrder::Little));
        const ExifInformation big = factsOf(photoOf(ifd0, exif, ByteOrder::Big));
        EXPECT_EQ(std::memcmp(&little, &big, sizeof little), 0) << "the byte orders differ";
        return big;
    }

    static size_t remembered() { return sharedExifCache().copyEntries()->count(); }

    const TemporaryFolder m_folder;

private:
    const ScopedTimeZone m_zone{"UTC0"};
};

/// What a caller may leave in a record, to see what is written.
ExifInformation usedRecord() {
    ExifInformation info;
    std::memset(&info, 0x5A, sizeof info);
    info.orientation = 6;
    info.width = 4000;
    info.height = 3000;
    return info;
}

/// What becomes of it when only the step after the reading is done.
ExifInformation usedRecordStamped(double modificationTime) {
    ExifInformation info = usedRecord();
    info.width = 3000;
    info.height = 4000;
    info.modificationTime = modificationTime;
    return info;
}

bool same(const ExifInformation& a, const ExifInformation& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// Asks twice, the first time without memory; only the second answer can be remembered.
bool areToldWithoutACache() {
    const TemporaryFolder folder;
    const Bytes photo = photoOf(TiffDirectory().shorts(0x0112, {6}), exifWithVersion());
    const auto path = text(folder.write("photo.jpg", photo));
    ExifInformation first{};
    OSErr code = -1;
    bool refused = false;
    {
        const FailingAllocations allocations(0);
        code = readExifTag(path.get(), first);
        refused = allocations.happened();
    }
    ExifInformation second{};
    return refused && code == 0 && readExifTag(path.get(), second) == 0 && same(first, second) &&
           first.orientation == 6 && sharedExifCache().copyEntries()->count() == 1;
}

ExifInformation onlyDate(const DateTimeRec& date) {
    ExifInformation info{};
    info.date = date;
    info.modificationTime = kModified;
    return info;
}

}  // namespace

TEST_F(ExifFactsTest, MissingFilesAreNotFound) {
    ExifInformation info = usedRecord();
    EXPECT_EQ(read(m_folder.at("missing.jpg"), info), -43);
    EXPECT_EQ(read(m_folder.link("dangling.jpg", "missing.jpg"), info), -43);
    EXPECT_EQ(read("", info), -43);
    EXPECT_EQ(readExifTag(nullptr, info), -43);
    EXPECT_TRUE(same(info, usedRecord()));
    EXPECT_EQ(remembered(), 0U);
}

TEST_F(ExifFactsTest, AFileWithoutExifHasItsModificationDateAndIsRemembered) {
    for (const Bytes& bytes :
         {jpegOf(testPicture(8, 8)), tiffOf(testPicture(8, 8)), Bytes{'x'}, Bytes(40, 0)}) {
        EXPECT_TRUE(same(factsOf(bytes), onlyDate(kModifiedDate)));
        EXPECT_EQ(remembered(), 1U);
    }
}

TEST_F(ExifFactsTest, TheDateIsTheOriginalElseTheDigitizedElseTheFiles) {
    struct Case {
        const char* original;
        const char* digitized;
        DateTimeRec date;
    };
    const Case cases[] = {
        {kShot, "2020:01:02 03:04:05", kShotDate},
        {"", "2020:01:02 03:04:05", {2020, 1, 2, 3, 4, 5, 0}},
        {"2019:02:30 10:11:12", "2020:01:02 03:04:05", {2020, 1, 2, 3, 4, 5, 0}},
        {"    :  :     :  :  ", kShot, kShotDate},
        {"2019:05:06", kShot, kShotDate},
        {"2019:05:06 10:11:12\xc3\xa9", kShot, kShotDate},
        {"2019:05:06 10:11:12 and later", "", kShotDate},
        {"2019-05-06T10.11.12", "", kShotDate},
        {"0000:00:00 00:00:00", "0000:00:00 00:00:00", kModifiedDate},
        {"", "", kModifiedDate},
        {kShot, "", kShotDate},
    };
    for (const Case& c : cases) {
        TiffDirectory exif = exifWithVersion();
        if (*c.original != 0) exif.text(0x9003, c.original);
        if (*c.digitized != 0) exif.text(0x9004, c.digitized);
        EXPECT_TRUE(same(factsOf({}, exif), onlyDate(c.date))) << c.original << " / " << c.digitized;
    }
}

TEST_F(ExifFactsTest, ADateNeedsNoNulBehindIt) {
    const std::string_view shot = kShot;
    for (const uint16_t type : {uint16_t{2}, uint16_t{7}, uint16_t{1}, uint16_t{6}}) {
        const auto exif = exifWithVersion().bytes(0x9003, type, {shot.begin(), shot.end()});
        EXPECT_TRUE(same(factsOf({}, exif), onlyDate(kShotDate))) << type;
        const auto cut = exifWithVersion().bytes(0x9003, type, {shot.begin(), shot.end() - 1});
        EXPECT_TRUE(same(factsOf({}, cut), onlyDate(kModifiedDate))) << type;
    }
}

TEST_F(ExifFactsTest, TheModificationDateIsThatOfALinksTarget) {
    const std::string target = write("photo.jpg", jpegOf(testPicture(8, 8)));
    const std::string link = m_folder.link("link.jpg", "photo.jpg");
    setModified(link, 1'600'000'000, 500'000'000);
    ExifInformation info{};
    ASSERT_EQ(read(link, info), 0);
    EXPECT_EQ(info.date, kModifiedDate);
    EXPECT_EQ(info.modificationTime, 1'600'000'000.5) << "the link's own";
}

TEST_F(ExifFactsTest, WithoutAVersionOnlyTheDateOfTheFileIsTold) {
    const auto ifd0 = TiffDirectory().shorts(0x0112, {6});
    const auto exif = TiffDirectory().text(0x9003, kShot).longs(0xA002, {4000}).shorts(0xA001, {1});
    EXPECT_TRUE(same(factsOf(ifd0, exif), onlyDate(kModifiedDate)));
}

TEST_F(ExifFactsTest, TheOrientationIsThatOfTheMainDirectory) {
    struct Case {
        TiffDirectory ifd0;
        int16_t orientation;
    };
    const Case cases[] = {
        {TiffDirectory(), 0},
        {TiffDirectory().shorts(0x0112, {3}), 3},
        {TiffDirectory().shorts(0x0112, {2, 8}), 2},
        {TiffDirectory().shorts(0x0112, {4, 8, 1}), 4},
        {TiffDirectory().longs(0x0112, {0x10004}), 4},
        {TiffDirectory().shorts(0x0112, {0xFFFF}), -1},
        {TiffDirectory().shorts(0x0112, {99}), 99},
        {TiffDirectory().shorts(0x0112, {}), 0},
        {TiffDirectory().bytes(0x0112, 7, {2, 1, 0}), 0x102},
    };
    for (const Case& c : cases)
        EXPECT_EQ(factsOf(c.ifd0, exifWithVersion().shorts(0x0112, {8})).orientation, c.orientation);
    const Bytes thumbnailTurned = tiffPhotoOf({}, exifWithVersion(), TiffDirectory().shorts(0x0112, {6}));
    EXPECT_EQ(factsOf(thumbnailTurned).orientation, 0);
}

TEST_F(ExifFactsTest, SizesAreTheFirstValueOfAnyTypeModulo65536) {
    struct Case {
        TiffDirectory exif;
        uint16_t width;
    };
    const Case cases[] = {
        {exifWithVersion(), 0},
        {exifWithVersion().shorts(0xA002, {4000}), 4000},
        {exifWithVersion().longs(0xA002, {4000}), 4000},
        {exifWithVersion().longs(0xA002, {70'000}), 70'000 - 65'536},
        {exifWithVersion().longs(0xA002, {65'535, 17}), 65'535},
        {exifWithVersion().fractions(0xA002, {{640, 1}}), 640},
        {exifWithVersion().bytes(0xA002, 1, {200}), 200},
        {exifWithVersion().bytes(0xA002, 1, {0x34, 0x12, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9}), 0x1234},
        {exifWithVersion().bytes(0xA002, 7, {0x34, 0x12, 9}), 0x34},
        {exifWithVersion().bytes(0xA002, 1, padding(300)), 0x2020},
        {exifWithVersion().text(0xA002, "4000"), 0},
        {exifWithVersion().shorts(0xA002, {}), 0},
    };
    for (const Case& c : cases) {
        const ExifInformation info = factsOf({}, c.exif);
        EXPECT_EQ(info.width, c.width);
        EXPECT_EQ(info.height, 0);
    }
    EXPECT_EQ(factsOf({}, exifWithVersion().longs(0xA003, {3000})).height, 3000);
    EXPECT_EQ(factsOf(TiffDirectory().longs(0xA002, {1}), exifWithVersion()).width, 0)
        << "of the Exif directory";
}

TEST_F(ExifFactsTest, TheFirstOfTwoEqualTagsCounts) {
    const auto exif = exifWithVersion()
                          .longs(0xA002, {1})
                          .longs(0xA002, {2})
                          .text(0x9003, kShot)
                          .text(0x9003, "2020:01:02 03:04:05");
    const ExifInformation info = factsOf(TiffDirectory().shorts(0x0112, {3}).shorts(0x0112, {4}), exif);
    EXPECT_EQ(info.width, 1);
    EXPECT_EQ(info.orientation, 3);
    EXPECT_EQ(info.date, kShotDate);
}

TEST_F(ExifFactsTest, PhotosThatLieOnTheirSideAreToldUpright) {
    for (uint16_t orientation = 0; orientation < 10; ++orientation) {
        const ExifInformation info = factsOf(TiffDirectory().shorts(0x0112, {orientation}),
                                             exifWithVersion().longs(0xA002, {4000}).longs(0xA003, {3000}));
        const bool onSide = orientation >= 5 && orientation <= 8;
        EXPECT_EQ(info.width, onSide ? 3000 : 4000) << orientation;
        EXPECT_EQ(info.height, onSide ? 4000 : 3000) << orientation;
        EXPECT_EQ(info.orientation, orientation);
    }
}

TEST_F(ExifFactsTest, ResolutionsAreNumeratorsOfTheExifDirectoryInSinglePrecision) {
    const auto usual = TiffDirectory().fractions(0x011A, {{300, 1}}).fractions(0x011B, {{300, 1}});
    ExifInformation info = factsOf(usual, exifWithVersion());
    EXPECT_EQ(info.xResolution, 0);
    EXPECT_EQ(info.yResolution, 0);
    info =
        factsOf({}, exifWithVersion().fractions(0x011A, {{16'777'217, 3}}).fractions(0x011B, {{72, 10}}));
    EXPECT_EQ(info.xResolution, 16'777'216.0);
    EXPECT_EQ(info.yResolution, 72.0);
    info = factsOf({}, exifWithVersion().longs(0x011A, {0xFFFF'FFFF}).shorts(0x011B, {72}));
    EXPECT_EQ(info.xResolution, 4'294'967'296.0);
    EXPECT_EQ(info.yResolution, 72.0);
}

TEST_F(ExifFactsTest, TheMakerIsEmptyUnlessItIsNoText) {
    const auto makerOf = [&](const TiffDirectory& ifd0) {
        const ExifInformation info = factsOf(ifd0, exifWithVersion());
        EXPECT_EQ(info.maker[sizeof info.maker - 1], 0);
        return std::string(info.maker);
    };
    EXPECT_EQ(makerOf(TiffDirectory().text(0x010F, "Maker of cameras")), "");
    EXPECT_EQ(makerOf(TiffDirectory().bytes(0x010F, 1, {'M', 'a', 'k', 'e', 'r'})), "Maker");
    EXPECT_EQ(makerOf(TiffDirectory().bytes(0x010F, 7, {'M', 'a', 'k', 'e', 'r'})), "M");
    EXPECT_EQ(makerOf(TiffDirectory().shorts(0x010F, {'M' | 'a' << 8, 'k'})), "Ma");
    EXPECT_EQ(makerOf(TiffDirectory().bytes(0x010F, 1, std::vector<uint8_t>(255, 'm'))),
              std::string(255, 'm'));
    EXPECT_EQ(makerOf(TiffDirectory().bytes(0x010F, 1, std::vector<uint8_t>(3000, 'm'))),
              std::string(255, 'm'));
    EXPECT_EQ(
        makerOf(TiffDirectory().fractions(0x010F, std::vector<Fraction>(40, {0x6B616D6D, 0x20207265}))),
        std::string("mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  "
                    "mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  "
                    "mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  mmaker  "
                    "mmaker  mmaker "));
}

TEST_F(ExifFactsTest, OnlyAColorSpaceOfOneIsSRGB) {
    const auto isSRGB = [&](const TiffDirectory& exif) { return factsOf({}, exif).isSRGB; };
    EXPECT_EQ(isSRGB(exifWithVersion()), 0);
    EXPECT_EQ(isSRGB(exifWithVersion().shorts(0xA001, {1})), 1);
    EXPECT_EQ(isSRGB(exifWithVersion().shorts(0xA001, {2})), 0);
    EXPECT_EQ(isSRGB(exifWithVersion().shorts(0xA001, {0xFFFF})), 0);
    EXPECT_EQ(isSRGB(exifWithVersion().longs(0xA001, {1})), 1);
    EXPECT_EQ(isSRGB(exifWithVersion().longs(0xA001, {0x10001})), 1) << "16 bits of it";
    EXPECT_EQ(isSRGB(exifWithVersion().text(0xA001, "\x01")), 0);
    EXPECT_EQ(isSRGB(exifWithVersion().bytes(0xA001, 1, {1})), 1);
}

TEST_F(ExifFactsTest, NothingButTheFactsIsFilled) {
    const auto ifd0 = TiffDirectory().shorts(0x0112, {1}).text(0x010F, "Maker");
    const auto exif = exifWithVersion()
                          .text(0x9003, kShot)
                          .longs(0xA002, {4000})
                          .longs(0xA003, {3000})
                          .shorts(0xA001, {1});
    ExifInformation expected = onlyDate(kShotDate);
    expected.orientation = 1;
    expected.width = 4000;
    expected.height = 3000;
    expected.isSRGB = 1;
    EXPECT_TRUE(same(factsOf(ifd0, exif), expected));
    ExifInformation info = usedRecord();
    sharedExifCache().flush();
    ASSERT_EQ(read(write("photo.jpg", photoOf(ifd0, exif)), info), 0);
    EXPECT_TRUE(same(info, expected)) << "what stood in the record is gone";
}

TEST_F(ExifFactsTest, FactsBeforeABadTagCount) {
    const auto exif =
        exifWithVersion().text(0x9003, kShot).bytes(0x927C, 7, padding(40'000)).longs(0xA002, {4000});
    EXPECT_TRUE(same(factsOf({}, exif), onlyDate(kShotDate))) << "a count of 40000 is a negative one";
}

TEST_F(ExifFactsTest, TheSharedReaderIsLeftAlone) {
    const auto exif = exifWithVersion().text(0x9003, kShot);
    const Bytes other = photoOf(TiffDirectory().shorts(0x0112, {7}), exif);
    int16_t format = 0;
    uint32_t offset = 0;
    uint32_t size = 0;
    uint32_t error = 0;
    ASSERT_EQ(gImageTag.CreateField(nullptr, reinterpret_cast<const char*>(other.data()),
                                    static_cast<uint32_t>(other.size()), &format, &offset, &size, &error),
              1);
    EXPECT_EQ(factsOf(photoOf(TiffDirectory().shorts(0x0112, {3}), exif)).orientation, 3);
    IMAGETAG_INFO* info = gImageTag.GetInfo(0, 0x0112, &error);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->value[0], 7);
    gImageTag.ReleaseInfo(info);
    gImageTag.CloseField();
}

TEST_F(ExifFactsTest, AnUnchangedFileIsNotReadAgain) {
    const auto photo = [](uint16_t orientation) {
        return photoOf(TiffDirectory().shorts(0x0112, {orientation}), exifWithVersion());
    };
    ExifInformation info{};
    ASSERT_EQ(read(write("photo.jpg", photo(3)), info), 0);
    const std::string path = write("photo.jpg", photo(4));
    info = {};
    ASSERT_EQ(read(path, info), 0);
    EXPECT_EQ(info.orientation, 3) << "same modification time";
    EXPECT_EQ(remembered(), 1U);
    setModified(path, kModified, 1000);
    ASSERT_EQ(read(path, info), 0);
    EXPECT_EQ(info.orientation, 4);
    EXPECT_EQ(remembered(), 2U) << "the old entry stays";
    ASSERT_EQ(unlink(path.c_str()), 0);
    EXPECT_EQ(read(path, info), -43);
    EXPECT_EQ(remembered(), 2U);
}

TEST_F(ExifFactsTest, WhereTheHeadCannotBeReadTheRecordIsOnlyStamped) {
    ASSERT_EQ(chmod(m_folder.path().c_str(), 0755), 0);
    const std::string locked = write("locked.jpg", "x");
    ASSERT_EQ(chmod(locked.c_str(), 0), 0);
    const std::string pipe = m_folder.at("pipe.jpg");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    setModified(pipe, kModified);
    m_folder.makeFolder("folder.jpg");
    setModified(m_folder.at("folder.jpg"), kModified);
    const std::string empty = write("empty.jpg", "");
    const OrdinaryUser user;
    for (const std::string& path : {locked, pipe, m_folder.at("folder.jpg"), empty}) {
        sharedExifCache().flush();
        ExifInformation info = usedRecord();
        EXPECT_EQ(read(path, info), 0) << path;
        EXPECT_TRUE(same(info, usedRecordStamped(kModified))) << path;
        EXPECT_EQ(remembered(), 1U) << path;
        ExifInformation again{};
        EXPECT_EQ(read(path, again), 0) << path;
        EXPECT_TRUE(same(again, info)) << "from the cache: " << path;
    }
}

TEST_F(ExifFactsTest, AProjectFileGetsAnEmptyRecord) {
    const Bytes photo = photoOf(TiffDirectory().shorts(0x0112, {6}), exifWithVersion().text(0x9003, kShot));
    for (const char* name : {"album.qal", "album.QaL"}) {
        ExifInformation info{};
        ASSERT_EQ(read(write(name, photo), info), 0);
        ExifInformation expected{};
        expected.modificationTime = kModified;
        EXPECT_TRUE(same(info, expected)) << name;
    }
    EXPECT_EQ(remembered(), 2U);
}

TEST_F(ExifFactsTest, SizesOf4GiBAndMoreCountModulo4GiB) {
    constexpr off_t kFourGiB = off_t{1} << 32U;
    const Bytes photo = photoOf(TiffDirectory().shorts(0x0112, {3}), exifWithVersion());
    const std::string path = m_folder.write("huge.jpg", photo);
    struct Case {
        off_t size;
        int16_t orientation;
    };
    const auto photoSize = static_cast<off_t>(photo.size());
    for (const Case& c : {Case{kFourGiB, 0}, Case{kFourGiB + 40, 0}, Case{kFourGiB + photoSize, 3},
                          Case{kFourGiB - 1, 3}}) {
        ASSERT_EQ(truncate(path.c_str(), c.size), 0);
        sharedExifCache().flush();
        ExifInformation info{};
        EXPECT_EQ(read(path, info), 0);
        EXPECT_EQ(info.orientation, c.orientation) << c.size;
    }
}

TEST_F(ExifFactsTest, OfAShortReadWhatCameCounts) {
    const auto exif = exifWithVersion().text(0x9003, kShot);
    const Bytes photo = photoOf({}, exif);
    Bytes padded = photo;
    padded.resize(2 * photo.size());
    const ScopedFaults faults{Fault::ShortRead};
    ExifInformation info{};
    ASSERT_EQ(read(write("photo.jpg", padded), info), 0);
    EXPECT_EQ(info.date, kShotDate);
    sharedExifCache().flush();
    ASSERT_EQ(read(write("photo.jpg", photo), info), 0);
    EXPECT_EQ(info.date, kModifiedDate) << "half of it is too little";
}

TEST_F(ExifFactsTest, AnOrdinaryPhotoNeedsNoMemory) {
    const auto ifd0 = TiffDirectory().shorts(0x0112, {6}).text(0x010F, "Maker");
    const auto exif =
        exifWithVersion().text(0x9003, kShot).longs(0xA002, {4000}).bytes(0x927C, 7, padding(30'000));
    const auto path = text(write("photo.jpg", photoOf(ifd0, exif)));
    ExifInformation info{};
    bool refused = false;
    bool quick = false;
    {
        const ScopedFaults faults{Fault::Allocation};
        const FailingAllocations allocations(0);
        quick = readFactsQuickly(path.get(), info);
        refused = allocations.happened();
    }
    EXPECT_TRUE(quick);
    EXPECT_FALSE(refused);
    EXPECT_EQ(info.height, 4000);
}

TEST_F(ExifFactsTest, WithoutMemoryFactsAreToldButNotRemembered) {
    const auto path =
        text(write("photo.jpg", photoOf(TiffDirectory().shorts(0x0112, {6}), exifWithVersion())));
    const auto link = text(m_folder.link("link.jpg", "photo.jpg"));
    ExifInformation info{};
    ExifInformation kept = usedRecord();
    OSErr code = -1;
    OSErr linkCode = -1;
    {
        const FailingAllocations allocations(0);
        code = readExifTag(path.get(), info);
        linkCode = readExifTag(link.get(), kept);
    }
    EXPECT_EQ(code, 0);
    EXPECT_EQ(info.orientation, 6);
    EXPECT_EQ(linkCode, 0);
    EXPECT_EQ(kept.orientation, 6) << "the caller's";
    EXPECT_EQ(kept.width, 3000) << "the head cannot be read";
    EXPECT_EQ(remembered(), 0U);
}

TEST_F(ExifFactsTest, MemoryMayEndAtAnyPlace) {
    const auto exif = exifWithVersion().text(0x9003, kShot).bytes(0xA002, 1, padding(300));
    const auto photo = text(write("photo.jpg", photoOf(TiffDirectory().shorts(0x0112, {6}), exif)));
    const auto link = text(m_folder.link("link.jpg", "photo.jpg"));
    for (const auto& path : {photo, link}) {
        bool refused = true;
        for (int successes = 0; refused; ++successes) {
            ASSERT_LT(successes, 100);
            sharedExifCache().flush();
            ExifInformation info{};
            OSErr code = -1;
            {
                const FailingAllocations allocations(successes);
                code = readExifTag(path.get(), info);
                refused = allocations.happened();
            }
            EXPECT_EQ(code, 0) << successes;
            EXPECT_TRUE(info.orientation == 6 || info.orientation == 0) << successes;
            EXPECT_EQ(remembered(), refused ? 0U : 1U) << successes;
        }
    }
}

TEST(ExifFactsFirstTest, WithoutMemoryForACacheFactsAreToldAllTheSame) {
    // In a process of its own, which has not asked for the cache yet.
    EXPECT_EXIT(std::exit(areToldWithoutACache() ? 0 : 1), testing::ExitedWithCode(0), "^$");
}

TEST_F(ExifFactsTest, NothingWaitsInThePool) {
    const auto photo = text(write("photo.jpg", photoOf({}, exifWithVersion())));
    const auto link = text(m_folder.link("link.jpg", "photo.jpg"));
    const AutoreleasePool pool;
    const size_t waiting = autoreleasedObjects();
    for (const auto& path : {photo, link}) {
        ExifInformation info{};
        ASSERT_EQ(readExifTag(path.get(), info), 0);
        ASSERT_EQ(readExifTag(path.get(), info), 0);
    }
    EXPECT_EQ(autoreleasedObjects(), waiting);
}

TEST_F(ExifFactsTest, ThreadsThatAskForTheSamePhotosLeaveOneEntryEach) {
    std::vector<std::string> paths;
    for (int i = 0; i < 40; ++i) {
        const auto ifd0 = TiffDirectory().shorts(0x0112, {static_cast<uint16_t>(i)});
        paths.push_back(write("photo" + std::to_string(i) + ".jpg", photoOf(ifd0, exifWithVersion())));
    }
    const auto work = [&](bool backwards) {
        for (size_t i = 0; i < paths.size(); ++i) {
            const size_t at = backwards ? paths.size() - 1 - i : i;
            ExifInformation info{};
            EXPECT_EQ(read(paths[at], info), 0);
            EXPECT_EQ(info.orientation, static_cast<int16_t>(at));
        }
    };
    std::thread first(work, false);
    std::thread second(work, false);
    std::thread third(work, true);
    first.join();
    second.join();
    third.join();
    EXPECT_EQ(remembered(), paths.size());
}

}  // namespace fi::test

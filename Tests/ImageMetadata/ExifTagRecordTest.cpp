// SPDX-License-Identifier: Apache-2.0
// The facts of a photo in the importer's record of it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <string>

#include "FileImporter/ExifFunctions.h"
#include "Foundation/HeaderBytes.h"
#include "Foundation/ScopedTimeZone.h"
#include "Foundation/TestText.h"
#include "ImageMetadata/TagTypes.h"
#include "Support/MakePictures.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

// 2 August 2021, 12:34:56 UTC, a Monday.
constexpr time_t kMonday = 1627907696;
constexpr DateTimeRec kModified{2021, 8, 2, 12, 34, 56, 1};

tCacheInfo filledRecord() {
    tCacheInfo record;
    std::memset(&record, 0x5A, sizeof record);
    return record;
}

bool isSame(const tCacheInfo& a, const tCacheInfo& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

TiffDirectory photo(uint16_t orientation) {
    TiffDirectory exif;
    exif.bytes(36864, kTagUndefined, {'0', '2', '2', '0'})
        .text(36867, "2019:05:06 07:08:09")
        .longs(40962, {4000})
        .shorts(40963, {3000});
    return TiffDirectory().shorts(274, {orientation}).directory(kExifPointer, exif);
}

}  // namespace

TEST(ExifTagRecordTest, AFileThatIsNotThereIsNotFoundAndTheRecordStays) {
    const TemporaryFolder folder;
    const auto missing = urlAt(folder.at("missing.jpg"));
    const auto withoutPath = urlWithoutPath();
    for (const CFURLRef url : {CFURLRef{nullptr}, CFURLRef{missing.get()}, CFURLRef{withoutPath.get()}}) {
        tCacheInfo record = filledRecord();
        EXPECT_EQ(ReadExifTagForZebFileManager(url, &record), -43);
        EXPECT_TRUE(isSame(record, filledRecord()));
    }
}

TEST(ExifTagRecordTest, FourFactsAreCopiedAndNothingElse) {
    const TemporaryFolder folder;
    for (const uint16_t orientation : {uint16_t{1}, uint16_t{6}}) {
        const std::string path = folder.write(std::to_string(orientation) + ".jpg",
                                              withExif(jpegWith({.width = 640, .height = 480}),
                                                       tiffBlock({photo(orientation)}, ByteOrder::Big)));
        tCacheInfo expected = filledRecord();
        expected.date = {2019, 5, 6, 7, 8, 9, 0};
        expected.orientation = orientation;
        expected.exifValue1 = orientation == 6 ? 3000 : 4000;
        expected.exifValue2 = orientation == 6 ? 4000 : 3000;
        for (int round = 0; round < 2; ++round) {
            tCacheInfo record = filledRecord();
            EXPECT_EQ(ReadExifTagForZebFileManager(urlAt(path).get(), &record), 0);
            EXPECT_TRUE(isSame(record, expected)) << orientation;
        }
    }
}

TEST(ExifTagRecordTest, WithoutExifThereIsTheModificationDate) {
    const ScopedTimeZone zone("UTC0");
    const TemporaryFolder folder;
    const std::string path = folder.write("plain.jpg", jpegWith({.width = 640, .height = 480}));
    const timespec times[2] = {{kMonday, 0}, {kMonday, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    tCacheInfo expected = filledRecord();
    expected.date = kModified;
    expected.orientation = 0;
    expected.exifValue1 = 0;
    expected.exifValue2 = 0;
    tCacheInfo record = filledRecord();
    EXPECT_EQ(ReadExifTagForZebFileManager(urlAt(path).get(), &record), 0);
    EXPECT_TRUE(isSame(record, expected));
}

TEST(ExifTagRecordTest, OfAFileThatCannotBeReadEveryFactIsZero) {
    const TemporaryFolder folder;
    for (const std::string& path : {folder.write("empty.jpg", ""), folder.write("album.qal", jpegWith({})),
                                    folder.makeFolder("folder.jpg")}) {
        tCacheInfo expected = filledRecord();
        expected.date = {};
        expected.orientation = 0;
        expected.exifValue1 = 0;
        expected.exifValue2 = 0;
        tCacheInfo record = filledRecord();
        EXPECT_EQ(ReadExifTagForZebFileManager(urlAt(path).get(), &record), 0);
        EXPECT_TRUE(isSame(record, expected)) << path;
    }
}

}  // namespace fi::test

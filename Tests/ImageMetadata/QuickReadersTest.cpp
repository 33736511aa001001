// SPDX-License-Identifier: Apache-2.0
// Date and orientation of one photo from its tags.
#include "ImageMetadata/QuickReaders.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "Foundation/HeaderBytes.h"
#include "Foundation/ScopedTimeZone.h"
#include "Foundation/TestText.h"
#include "ImageMetadata/TagTypes.h"
#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/Base/Faults.h"
#include "Support/MakePictures.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

// 2 August 2021, 12:34:56 UTC, a Monday.
constexpr time_t kMonday = 1627907696;
constexpr DateTimeRec kModified{2021, 8, 2, 12, 34, 56, 1};
constexpr DateTimeRec kUntouched{-1, -2, -3, -4, -5, -6, -7};

constexpr uint16_t kOriginal = 36867;
constexpr uint16_t kDigitized = 36868;
constexpr ByteOrder kOrders[] = {ByteOrder::Little, ByteOrder::Big};

/// Files that were modified at kModified, in a time zone that makes it so.
class QuickReadersTest : public ::testing::Test {
protected:
    std::string modifiedThen(const std::string& path) const {
        const timespec times[2] = {{kMonday, 0}, {kMonday, 0}};
        EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        return path;
    }
    template <typename Bytes>
    std::string write(const char* name, const Bytes& bytes) const {
        return modifiedThen(m_folder.write(name, bytes));
    }

    const ScopedTimeZone m_zone{"UTC0"};
    const TemporaryFolder m_folder;
};

/// A photo whose IFD0 and Exif directory are these.
Bytes jpegWithTags(TiffDirectory main, TiffDirectory exif, ByteOrder order = ByteOrder::Little) {
    main.directory(kExifPointer, std::move(exif));
    return withExif(jpegWith({}), tiffBlock({main}, order));
}

Bytes tiffWithTags(TiffDirectory main, TiffDirectory exif, ByteOrder order = ByteOrder::Little) {
    main.directory(kExifPointer, std::move(exif));
    return tiffBlock({main}, order);
}

bool isClosed(CIMAGETAG& tags) {
    for (uint16_t slot = 0; slot < 8; ++slot) {
        uint32_t size = 0;
        uint32_t error = 0;
        IMAGETAG_ARRAY* array = tags.GetArray(slot, &size, &error);
        tags.ReleaseArray(array);
        if (array != nullptr) return false;
    }
    return true;
}

DateTimeRec fastDateOf(const std::string& path) {
    CIMAGETAG tags;
    DateTimeRec date = kUntouched;
    EXPECT_EQ(readDateFromExifFast(urlAt(path).get(), tags, date), 0) << path;
    EXPECT_TRUE(isClosed(tags)) << path;
    return date;
}

int16_t fastOrientationOf(const std::string& path) {
    CIMAGETAG tags;
    int16_t orientation = -1;
    EXPECT_EQ(readOrientationFromExifFast(urlAt(path).get(), tags, orientation), 0) << path;
    EXPECT_TRUE(isClosed(tags)) << path;
    return orientation;
}

DateTimeRec dateOf(const std::string& path, int32_t mode, OSErr code = 0) {
    CIMAGETAG tags;
    DateTimeRec date = kUntouched;
    EXPECT_EQ(readDate(urlAt(path).get(), mode, tags, date), code) << path;
    EXPECT_TRUE(isClosed(tags)) << path;
    return date;
}

}  // namespace

TEST_F(QuickReadersTest, TheDateIsThatOfTheOriginal) {
    const DateTimeRec expected{2019, 5, 6, 7, 8, 9, 0};
    for (const ByteOrder order : kOrders) {
        TiffDirectory exif;
        exif.text(kOriginal, "2019:05:06 07:08:09").text(kDigitized, "2020:01:02 03:04:05");
        EXPECT_EQ(fastDateOf(write("a.jpg", jpegWithTags({}, exif, order))), expected);
        EXPECT_EQ(fastDateOf(write("a.tif", tiffWithTags({}, exif, order))), expected);
    }
}

TEST_F(QuickReadersTest, ADateThatIsNoneGivesWayToTheDigitizing) {
    const DateTimeRec expected{2020, 1, 2, 3, 4, 5, 0};
    for (const char* rejected :
         {"0000:00:00 00:00:00", "2019:02:30 07:08:09", "    :  :     :  :  ", "2019", ""}) {
        TiffDirectory exif;
        exif.text(kOriginal, rejected).text(kDigitized, "2020:01:02 03:04:05");
        EXPECT_EQ(fastDateOf(write("a.jpg", jpegWithTags({}, exif))), expected) << rejected;
    }
    EXPECT_EQ(fastDateOf(write("a.jpg",
                               jpegWithTags({}, TiffDirectory().text(kDigitized, "2020:01:02 03:04:05")))),
              expected);
}

TEST_F(QuickReadersTest, WithoutADateItIsTheModification) {
    EXPECT_EQ(fastDateOf(write("plain.jpg", jpegWith({}))), kModified);
    EXPECT_EQ(fastDateOf(write("plain.tif", tiffWith({}))), kModified);
    EXPECT_EQ(fastDateOf(write("text.jpg", "a text and no picture")), kModified);
    TiffDirectory rejected;
    rejected.text(kOriginal, "0000:00:00 00:00:00").text(kDigitized, "2019:13:01 00:00:00");
    EXPECT_EQ(fastDateOf(write("rejected.jpg", jpegWithTags({}, rejected))), kModified);
    // Dates of the main directory are no dates of the shot.
    TiffDirectory main;
    main.text(306, "2019:05:06 07:08:09").text(kOriginal, "2019:05:06 07:08:09");
    EXPECT_EQ(fastDateOf(write("main.jpg", jpegWithTags(main, TiffDirectory().shorts(40961, {1})))),
              kModified);
}

TEST_F(QuickReadersTest, ADateNeedsNoExifVersionAndNoTextType) {
    const DateTimeRec expected{2019, 5, 6, 7, 8, 9, 0};
    const std::string text = "2019:05:06 07:08:09";
    TiffDirectory exif;
    exif.bytes(36864, 7, {'0', '2', '2', '0'}).text(kOriginal, text);
    EXPECT_EQ(fastDateOf(write("version.jpg", jpegWithTags({}, exif))), expected);
    for (const uint16_t type : {uint16_t{kTagByte}, uint16_t{kTagASCII}, uint16_t{kTagUndefined}}) {
        TiffDirectory bare;
        bare.bytes(kOriginal, type, {text.begin(), text.end()});
        EXPECT_EQ(fastDateOf(write("type.jpg", jpegWithTags({}, bare))), expected) << type;
    }
    TiffDirectory longer;
    longer.text(kOriginal, text + " and more");
    EXPECT_EQ(fastDateOf(write("longer.jpg", jpegWithTags({}, longer))), expected);
}

TEST_F(QuickReadersTest, ADateReadBeforeABrokenTagCounts) {
    TiffDirectory exif;
    exif.text(kOriginal, "2019:05:06 07:08:09").bytes(37500, 7, Bytes(40000, 0));
    EXPECT_EQ(fastDateOf(write("large.jpg", jpegWithTags({}, exif))),
              (DateTimeRec{2019, 5, 6, 7, 8, 9, 0}));
}

TEST_F(QuickReadersTest, TheOrientationIsWhatIsStated) {
    for (const ByteOrder order : kOrders) {
        for (const int number : {1, 2, 3, 4, 5, 6, 7, 8, 0, 9, 300, 65535}) {
            const auto stated = static_cast<uint16_t>(number);
            TiffDirectory main;
            main.shorts(274, {stated});
            const TiffDirectory exif = TiffDirectory().shorts(40961, {1});
            const auto expected = static_cast<int16_t>(stated);
            EXPECT_EQ(fastOrientationOf(write("a.jpg", jpegWithTags(main, exif, order))), expected);
            EXPECT_EQ(fastOrientationOf(write("a.tif", tiffWithTags(main, exif, order))), expected);
        }
    }
}

TEST_F(QuickReadersTest, TheOrientationIsTheFirst16Bits) {
    for (const ByteOrder order : kOrders) {
        const TiffDirectory exif = TiffDirectory().shorts(40961, {1});
        EXPECT_EQ(
            fastOrientationOf(write("a.jpg", jpegWithTags(TiffDirectory().longs(274, {6}), exif, order))),
            6);
        EXPECT_EQ(fastOrientationOf(
                      write("a.jpg", jpegWithTags(TiffDirectory().shorts(274, {8, 6, 3}), exif, order))),
                  8);
        EXPECT_EQ(fastOrientationOf(
                      write("a.jpg", jpegWithTags(TiffDirectory().bytes(274, 1, {6}), exif, order))),
                  0);
    }
}

TEST_F(QuickReadersTest, WithoutOneTheOrientationIsZero) {
    EXPECT_EQ(fastOrientationOf(write("plain.jpg", jpegWith({}))), 0);
    EXPECT_EQ(fastOrientationOf(write("plain.tif", tiffWith({}))), 0);
    EXPECT_EQ(fastOrientationOf(write("text.jpg", "a text and no picture")), 0);
    const TiffDirectory exif = TiffDirectory().shorts(274, {6});
    EXPECT_EQ(fastOrientationOf(write("exif.jpg", jpegWithTags({}, exif))), 0)
        << "it is the main directory's";
}

TEST_F(QuickReadersTest, TheCodeOfAFailedReadIsPassedOn) {
    CIMAGETAG tags;
    const auto expectCode = [&tags](CFURLRef url, OSErr code) {
        DateTimeRec date = kUntouched;
        EXPECT_EQ(readDateFromExifFast(url, tags, date), code);
        EXPECT_EQ(date, kUntouched);
        int16_t orientation = -1;
        EXPECT_EQ(readOrientationFromExifFast(url, tags, orientation), code);
        EXPECT_EQ(orientation, -1);
        EXPECT_TRUE(isClosed(tags));
    };
    expectCode(urlAt(write("empty.jpg", "")).get(), -43);
    expectCode(urlAt(m_folder.at("missing.jpg")).get(), -108);
    expectCode(urlAt(m_folder.path()).get(), -108);
    expectCode(urlAt(write("album.qal", jpegWith({}))).get(), -108);
    expectCode(nullptr, -108);
}

TEST_F(QuickReadersTest, WithoutMemoryForTagsThereAreNone) {
    TiffDirectory main;
    main.shorts(274, {6});
    TiffDirectory exif;
    exif.text(kOriginal, "2019:05:06 07:08:09");
    const std::string path = write("a.jpg", jpegWithTags(main, exif));
    CIMAGETAG tags;
    DateTimeRec date = kUntouched;
    int16_t orientation = -1;
    OSErr codeOfDate = 1;
    OSErr codeOfOrientation = 1;
    const auto url = urlAt(path);
    g_faultInjector = [](Fault fault, std::string_view detail) {
        return fault == Fault::Allocation && detail == "GetInfo";
    };
    codeOfDate = readDateFromExifFast(url.get(), tags, date);
    codeOfOrientation = readOrientationFromExifFast(url.get(), tags, orientation);
    g_faultInjector = nullptr;
    EXPECT_EQ(codeOfDate, 0);
    EXPECT_EQ(date, kModified);
    EXPECT_EQ(codeOfOrientation, 0);
    EXPECT_EQ(orientation, 0);
    EXPECT_TRUE(isClosed(tags));
}

TEST_F(QuickReadersTest, OneFileAfterTheOtherLeavesNothingBehind) {
    CIMAGETAG tags;
    TiffDirectory exif;
    exif.text(kOriginal, "2019:05:06 07:08:09");
    const auto big =
        urlAt(write("big.jpg", jpegWithTags(TiffDirectory().shorts(274, {6}), exif, ByteOrder::Big)));
    const auto little = urlAt(write("little.tif", tiffWithTags(TiffDirectory().shorts(274, {8}), exif)));
    const auto plain = urlAt(write("plain.jpg", jpegWith({})));
    for (int round = 0; round < 2; ++round) {
        int16_t orientation = -1;
        EXPECT_EQ(readOrientationFromExifFast(big.get(), tags, orientation), 0);
        EXPECT_EQ(orientation, 6);
        EXPECT_EQ(readOrientationFromExifFast(little.get(), tags, orientation), 0);
        EXPECT_EQ(orientation, 8);
        EXPECT_EQ(readOrientationFromExifFast(plain.get(), tags, orientation), 0);
        EXPECT_EQ(orientation, 0);
        DateTimeRec date = kUntouched;
        EXPECT_EQ(readDateFromExifFast(little.get(), tags, date), 0);
        EXPECT_EQ(date, (DateTimeRec{2019, 5, 6, 7, 8, 9, 0}));
        EXPECT_EQ(readDateFromExifFast(plain.get(), tags, date), 0);
        EXPECT_EQ(date, kModified);
    }
}

TEST_F(QuickReadersTest, TheDateOfAPhotoIsItsExifDate) {
    const DateTimeRec expected{2019, 5, 6, 7, 8, 9, 0};
    TiffDirectory exif;
    exif.text(kOriginal, "2019:05:06 07:08:09");
    for (const int32_t mode : {0, 2, -1}) {
        for (const char* name : {"a.jpg", "a.JPEG", "a.tif", "a.TIFF"})
            EXPECT_EQ(dateOf(write(name, jpegWithTags({}, exif)), mode), expected) << name;
        EXPECT_EQ(dateOf(write("b.tif", tiffWithTags({}, exif)), mode), expected);
    }
}

TEST_F(QuickReadersTest, InTheModeOfFileDatesItIsTheModification) {
    TiffDirectory exif;
    exif.text(kOriginal, "2019:05:06 07:08:09");
    EXPECT_EQ(dateOf(write("a.jpg", jpegWithTags({}, exif)), kFileDateOnly), kModified);
    EXPECT_EQ(dateOf(write("a.tif", tiffWithTags({}, exif)), kFileDateOnly), kModified);
    EXPECT_EQ(dateOf(m_folder.at("missing.jpg"), kFileDateOnly, -43), kUntouched);
}

TEST_F(QuickReadersTest, TheDateOfAnyOtherFileIsItsModification) {
    TiffDirectory exif;
    exif.text(kOriginal, "2019:05:06 07:08:09");
    for (const char* name : {"a.pict", "a.pct", "a.pdf", "a.bmp", "a.png", "a.qal", "noextension"})
        EXPECT_EQ(dateOf(write(name, jpegWithTags({}, exif)), 0), kModified) << name;
    EXPECT_EQ(dateOf(modifiedThen(m_folder.makeFolder("folder")), 0), kModified);
}

TEST_F(QuickReadersTest, APhotoThatCannotBeReadHasItsModificationDate) {
    EXPECT_EQ(dateOf(write("empty.jpg", ""), 0), kModified);
    EXPECT_EQ(dateOf(modifiedThen(m_folder.makeFolder("folder.jpg")), 0), kModified);
    EXPECT_EQ(dateOf(m_folder.at("missing.jpg"), 0, -43), kUntouched);
    EXPECT_EQ(dateOf(m_folder.at("missing.pict"), 0, -43), kUntouched);
    CIMAGETAG tags;
    DateTimeRec date = kUntouched;
    EXPECT_EQ(readDate(nullptr, 0, tags, date), -43);
    EXPECT_EQ(readDate(urlWithoutPath().get(), 0, tags, date), -43);
    EXPECT_EQ(date, kUntouched);
}

TEST_F(QuickReadersTest, APipeIsAnsweredAtOnce) {
    const std::string pipe = m_folder.at("pipe.jpg");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(dateOf(modifiedThen(pipe), 0), kModified);
    int16_t orientation = -1;
    EXPECT_EQ(readExifOrientation(urlAt(pipe).get(), &orientation), 0);
    EXPECT_EQ(orientation, -1);
    EXPECT_FALSE(checkPhotoSize(nullptr, urlAt(pipe).get(), nullptr));
}

TEST_F(QuickReadersTest, PictDatesAreNeverFound) {
    DateTimeRec date = kUntouched;
    EXPECT_EQ(readPictDate(date), -43);
    EXPECT_EQ(date, kUntouched);
}

}  // namespace fi::test

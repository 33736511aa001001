// SPDX-License-Identifier: Apache-2.0
// The dates of files and of texts through the exported functions.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>

#include "FileImporter/CFileImporterCocoa.h"
#include "Foundation/ScopedTimeZone.h"
#include "Foundation/TestText.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

// 1 August 2021, 12:34:56 UTC, a Sunday.
constexpr time_t kSunday = 1627821296;
constexpr time_t kDay = 86400;

constexpr DateTimeRec kNoDate{};
constexpr DateTimeRec kUntouched{-1, -2, -3, -4, -5, -6, -7};

void setModified(const std::string& path, time_t seconds, long nanoseconds = 0) {
    const timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

/// The moment at which the file system says that the file was made.
time_t madeByHand(const std::string& path) {
    struct statx status {};
    EXPECT_EQ(statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME | STATX_CTIME | STATX_MTIME, &status), 0);
    if ((status.stx_mask & STATX_BTIME) != 0) return status.stx_btime.tv_sec;
    return std::min(status.stx_ctime.tv_sec, status.stx_mtime.tv_sec);
}

DateTimeRec utcDate(time_t seconds, int firstDayOfWeek) {
    tm parts{};
    gmtime_r(&seconds, &parts);
    return {static_cast<int16_t>(parts.tm_year + 1900),
            static_cast<int16_t>(parts.tm_mon + 1),
            static_cast<int16_t>(parts.tm_mday),
            static_cast<int16_t>(parts.tm_hour),
            static_cast<int16_t>(parts.tm_min),
            static_cast<int16_t>(parts.tm_sec),
            static_cast<int16_t>(parts.tm_wday + firstDayOfWeek)};
}

struct Times {
    OSErr code = 0;
    DateTimeRec creation = kUntouched;
    DateTimeRec modification = kUntouched;
};

Times timesOf(CFURLRef url) {
    Times times;
    times.code = CMF_GetFileTime(url, &times.creation, nullptr, &times.modification);
    return times;
}

DateTimeRec modifiedAt(const std::string& path) {
    DateTimeRec date = kUntouched;
    EXPECT_EQ(GetFileModDateCocoa(urlAt(path).get(), &date), 0) << path;
    return date;
}

/// Makes a folder the current one for a scope.
class ScopedCurrentFolder {
public:
    explicit ScopedCurrentFolder(const std::string& path) : m_before(std::filesystem::current_path()) {
        std::filesystem::current_path(path);
    }
    ~ScopedCurrentFolder() { std::filesystem::current_path(m_before); }
    ScopedCurrentFolder(const ScopedCurrentFolder&) = delete;
    ScopedCurrentFolder& operator=(const ScopedCurrentFolder&) = delete;

private:
    std::filesystem::path m_before;
};

}  // namespace

TEST(FileDatesTest, ModificationDateIsLocalWithDaysFromZero) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", "bytes");
    const ScopedTimeZone zone(kCentralEurope);
    setModified(path, kSunday);
    EXPECT_EQ(modifiedAt(path), (DateTimeRec{2021, 8, 1, 14, 34, 56, 0})) << "summer time, Sunday";
    setModified(path, kSunday + 6 * kDay);
    EXPECT_EQ(modifiedAt(path), (DateTimeRec{2021, 8, 7, 14, 34, 56, 6})) << "Saturday";
    setModified(path, kSunday + 184 * kDay);
    EXPECT_EQ(modifiedAt(path), (DateTimeRec{2022, 2, 1, 13, 34, 56, 2})) << "winter time, Tuesday";
}

TEST(FileDatesTest, FractionsOfASecondAreDroppedTowardThePast) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", "bytes");
    const ScopedTimeZone zone("UTC0");
    setModified(path, kSunday, 999'999'999);
    EXPECT_EQ(modifiedAt(path), (DateTimeRec{2021, 8, 1, 12, 34, 56, 0}));
    setModified(path, -1, 500'000'000);
    EXPECT_EQ(modifiedAt(path), (DateTimeRec{1969, 12, 31, 23, 59, 59, 3}));
}

TEST(FileDatesTest, ModificationDateOfALinkIsItsTargets) {
    const TemporaryFolder folder;
    const ScopedTimeZone zone("UTC0");
    setModified(folder.write("photo.jpg", "bytes"), kSunday);
    const std::string link = folder.link("link.jpg", "photo.jpg");
    setModified(link, kSunday + 2 * kDay);
    EXPECT_EQ(modifiedAt(link), (DateTimeRec{2021, 8, 1, 12, 34, 56, 0}));
}

TEST(FileDatesTest, WhatIsMissingOrHasNoPathHasNoModificationDate) {
    const TemporaryFolder folder;
    DateTimeRec date = kUntouched;
    EXPECT_EQ(GetFileModDateCocoa(nullptr, &date), -43);
    EXPECT_EQ(GetFileModDateCocoa(urlWithoutPath().get(), &date), -43);
    EXPECT_EQ(GetFileModDateCocoa(urlAt(folder.at("missing.jpg")).get(), &date), -43);
    EXPECT_EQ(GetFileModDateCocoa(urlAt(folder.link("dangling.jpg", "missing.jpg")).get(), &date), -43);
    EXPECT_EQ(date, kUntouched);
}

TEST(FileDatesTest, FoldersHaveAModificationDate) {
    const TemporaryFolder folder;
    const ScopedTimeZone zone("UTC0");
    setModified(folder.path(), kSunday);
    EXPECT_EQ(modifiedAt(folder.path()), (DateTimeRec{2021, 8, 1, 12, 34, 56, 0}));
}

TEST(FileDatesTest, FileTimesAreCreationAndModificationWithDaysFromOne) {
    const TemporaryFolder folder;
    const ScopedTimeZone zone("UTC0");
    const std::string path = folder.write("photo.jpg", "bytes");
    setModified(path, kSunday);
    const Times sunday = timesOf(urlAt(path).get());
    EXPECT_EQ(sunday.code, 0);
    EXPECT_EQ(sunday.modification, (DateTimeRec{2021, 8, 1, 12, 34, 56, 1})) << "Sunday";
    EXPECT_EQ(sunday.creation, utcDate(madeByHand(path), 1));
    setModified(path, kSunday + 6 * kDay);
    const Times saturday = timesOf(urlAt(path).get());
    EXPECT_EQ(saturday.modification.dayOfWeek, 7) << "Saturday";
    // Where the file system keeps no creation, the older of two other dates stands in.
    EXPECT_EQ(saturday.creation, utcDate(madeByHand(path), 1));
}

TEST(FileDatesTest, TheTwoServicesCountTheDaysOfTheWeekDifferently) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", "bytes");
    for (int day = 0; day < 7; ++day) {
        setModified(path, kSunday + day * kDay);
        DateTimeRec wanted = modifiedAt(path);
        ++wanted.dayOfWeek;
        EXPECT_EQ(timesOf(urlAt(path).get()).modification, wanted) << day;
    }
}

TEST(FileDatesTest, FileTimesAreLocal) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", "bytes");
    const ScopedTimeZone zone(kCentralEurope);
    setModified(path, kSunday);
    EXPECT_EQ(timesOf(urlAt(path).get()).modification, (DateTimeRec{2021, 8, 1, 14, 34, 56, 1}));
}

TEST(FileDatesTest, WithoutACreationRecordNothingIsFilled) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("photo.jpg", "bytes"));
    DateTimeRec modification = kUntouched;
    EXPECT_EQ(CMF_GetFileTime(url.get(), nullptr, nullptr, &modification), -2700);
    EXPECT_EQ(modification, kUntouched);
    EXPECT_EQ(CMF_GetFileTime(url.get(), nullptr, nullptr, nullptr), -2700);
}

TEST(FileDatesTest, WithoutAModificationRecordTheCreationIsFilled) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("photo.jpg", "bytes"));
    const DateTimeRec wanted = timesOf(url.get()).creation;
    DateTimeRec creation = kUntouched;
    EXPECT_EQ(CMF_GetFileTime(url.get(), &creation, nullptr, nullptr), -2700);
    EXPECT_EQ(creation, wanted);
    EXPECT_NE(creation, kNoDate);
}

TEST(FileDatesTest, TheThirdArgumentIsNeverWritten) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("photo.jpg", "bytes"));
    unsigned char guard[64];
    std::memset(guard, 0x5A, sizeof guard);
    Times times;
    EXPECT_EQ(CMF_GetFileTime(url.get(), &times.creation, guard + 24, &times.modification), 0);
    for (const unsigned char byte : guard)
        EXPECT_EQ(byte, 0x5A);
}

TEST(FileDatesTest, AURLThatIsNotThereHasNoTimes) {
    const Times times = timesOf(nullptr);
    EXPECT_EQ(times.code, -43);
    EXPECT_EQ(times.creation, kUntouched);
    EXPECT_EQ(times.modification, kUntouched);
    EXPECT_EQ(CMF_GetFileTime(nullptr, nullptr, nullptr, nullptr), -43)
        << "before anything else is looked at";
}

TEST(FileDatesTest, WhatIsMissingSucceedsWithoutDates) {
    const TemporaryFolder folder;
    const Times times = timesOf(urlAt(folder.at("missing.jpg")).get());
    EXPECT_EQ(times.code, 0);
    EXPECT_EQ(times.creation, kNoDate);
    EXPECT_EQ(times.modification, kNoDate);
}

TEST(FileDatesTest, TheTextOfAFileURLIsDecodedToItsPath) {
    const TemporaryFolder folder;
    const ScopedTimeZone zone("UTC0");
    for (const char* name : {"a photo.jpg", "100%.jpg", "a%20b.jpg", "caf\u00e9 #1?.jpg", "caf\xe9.jpg"}) {
        setModified(folder.write(name, "bytes"), kSunday);
        const Times times = timesOf(urlAt(folder.at(name)).get());
        EXPECT_EQ(times.code, 0) << name;
        EXPECT_EQ(times.modification, (DateTimeRec{2021, 8, 1, 12, 34, 56, 1})) << name;
    }
    const std::string path = folder.at("a photo.jpg");
    for (const std::string& url : {"file://" + folder.path() + "/a%20photo.jpg",
                                   "file://localhost" + folder.path() + "/a%20photo.jpg",
                                   "file:" + folder.path() + "/a%20photo.jpg"}) {
        EXPECT_EQ(timesOf(CFURL::createFromString(url).get()).modification.year, 2021) << url;
    }
}

TEST(FileDatesTest, TextThatIsNoFileURLIsAPathAsItStands) {
    const TemporaryFolder folder;
    const ScopedTimeZone zone("UTC0");
    setModified(folder.write("photos:/a%20b.jpg", "bytes"), kSunday);
    setModified(folder.write("photos:/a b.jpg", "bytes"), kSunday + kDay);
    const ScopedCurrentFolder current(folder.path());
    const Times times = timesOf(CFURL::createFromString("photos:/a%20b.jpg").get());
    EXPECT_EQ(times.code, 0);
    EXPECT_EQ(times.modification, (DateTimeRec{2021, 8, 1, 12, 34, 56, 1}));
}

TEST(FileDatesTest, TextOfAFileURLWithoutAPathHereIsNotAPath) {
    const TemporaryFolder folder;
    folder.write("file:/elsewhere/photo.jpg", "bytes");
    const ScopedCurrentFolder current(folder.path());
    const Times times = timesOf(CFURL::createFromString("file://elsewhere/photo.jpg").get());
    EXPECT_EQ(times.code, 0);
    EXPECT_EQ(times.modification, kNoDate);
}

TEST(FileDatesTest, DateTextsFillTheRecord) {
    DateTimeRec date = kUntouched;
    EXPECT_TRUE(CheckDateForCocoa("2018:09:03 14:05:59", &date));
    EXPECT_EQ(date, (DateTimeRec{2018, 9, 3, 14, 5, 59, 0}));
}

TEST(FileDatesTest, TextsThatAreNoDateLeaveTheRecordUntouched) {
    DateTimeRec date = kUntouched;
    for (const char* text :
         {"2018:02:30 10:00:00", "2018:13:01 00:00:00", "2018:09:03 14:05:5", "", "0000:09:03 14:05:59",
          "2018:09:03 14:05:60", "2019:02:29 12:00:00", "2018:09:03 14:05:59\xc3\xa9"})
        EXPECT_FALSE(CheckDateForCocoa(text, &date)) << text;
    EXPECT_FALSE(CheckDateForCocoa(nullptr, &date));
    EXPECT_EQ(date, kUntouched);
}

TEST(FileDatesTest, FieldsOfDateTextsAreStored) {
    const auto date = text("2018:09:03 14:05:59");
    constexpr int16_t kValues[] = {2018, 9, 3, 14, 5, 59};
    for (int32_t field = 0; field < 6; ++field) {
        int16_t value = -1;
        EXPECT_TRUE(CheckDateSub(date.get(), &value, field)) << field;
        EXPECT_EQ(value, kValues[field]) << field;
    }
}

TEST(FileDatesTest, FieldsThatAreNoNumbersAreNotStored) {
    const auto date = text("201x:19:03 14:05:5");
    int16_t value = -1;
    for (const int32_t field : {0, 1, 5, -1, 6})
        EXPECT_FALSE(CheckDateSub(date.get(), &value, field)) << field;
    EXPECT_FALSE(CheckDateSub(nullptr, &value, 0));
    EXPECT_EQ(value, -1);
}

}  // namespace fi::test

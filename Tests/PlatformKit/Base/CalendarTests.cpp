// SPDX-License-Identifier: Apache-2.0
// Local dates in chosen time zones.
#include "PlatformKit/Base/Calendar.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <filesystem>
#include <optional>
#include <string>

namespace fi::test {

namespace {

/// The default time zone for the length of a scope.
class Zone {
public:
    explicit Zone(const char* name) {
        if (const char* before = getenv("TZ")) m_before = before;
        setenv("TZ", name, 1);
        tzset();
    }
    ~Zone() {
        if (m_before) {
            setenv("TZ", m_before->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;

private:
    std::optional<std::string> m_before;
};

/// Central European time with its rule spelt out, so that no zone files are needed.
constexpr const char* kBerlin = "CET-1CEST,M3.5.0,M10.5.0/3";

/// Whether mktime leaves the parts of a date as they are.
bool keptByTheSystem(const DateTimeRec& date) {
    tm parts{};
    parts.tm_year = date.year - 1900;
    parts.tm_mon = date.month - 1;
    parts.tm_mday = date.day;
    parts.tm_hour = date.hour;
    parts.tm_min = date.minute;
    parts.tm_sec = date.second;
    parts.tm_isdst = -1;
    const time_t moment = mktime(&parts);
    return moment != -1 && parts.tm_mday == date.day && parts.tm_hour == date.hour &&
           parts.tm_min == date.minute && parts.tm_sec == date.second;
}

TEST(Calendar, CountsTheDaysOfTheWeekBothWays) {
    const Zone zone("UTC0");
    EXPECT_EQ(localDate(0, WeekDays::FromZero), (DateTimeRec{1970, 1, 1, 0, 0, 0, 4}));
    EXPECT_EQ(localDate(0, WeekDays::FromOne), (DateTimeRec{1970, 1, 1, 0, 0, 0, 5}));
    EXPECT_EQ(localDate(3 * 86400, WeekDays::FromZero).dayOfWeek, 0) << "a Sunday";
    EXPECT_EQ(localDate(3 * 86400, WeekDays::FromOne).dayOfWeek, 1);
}

TEST(Calendar, KnowsMomentsBefore1970AndBeyond2038) {
    const Zone zone("UTC0");
    EXPECT_EQ(localDate(-1, WeekDays::FromZero), (DateTimeRec{1969, 12, 31, 23, 59, 59, 3}));
    EXPECT_EQ(localDate(int64_t{1} << 31, WeekDays::FromZero), (DateTimeRec{2038, 1, 19, 3, 14, 8, 2}));
    EXPECT_EQ(localDate(253402300799, WeekDays::FromZero), (DateTimeRec{9999, 12, 31, 23, 59, 59, 5}));
}

TEST(Calendar, MomentThatNoRecordCanTellGivesZeros) {
    const Zone zone("UTC0");
    EXPECT_EQ(localDate(INT64_MAX, WeekDays::FromOne), DateTimeRec{});
    EXPECT_EQ(localDate(INT64_MIN, WeekDays::FromOne), DateTimeRec{});
    EXPECT_EQ(localDate(int64_t{1} << 40, WeekDays::FromOne), DateTimeRec{}) << "the year 36812";
    EXPECT_EQ(localDate(-(int64_t{1} << 41), WeekDays::FromOne), DateTimeRec{});
}

TEST(Calendar, FollowsTheZoneAndItsSummerTime) {
    const Zone zone(kBerlin);
    EXPECT_EQ(localDate(1616889599, WeekDays::FromZero), (DateTimeRec{2021, 3, 28, 0, 59, 59, 0}));
    EXPECT_EQ(localDate(1616893199, WeekDays::FromZero), (DateTimeRec{2021, 3, 28, 1, 59, 59, 0}));
    EXPECT_EQ(localDate(1616893200, WeekDays::FromZero), (DateTimeRec{2021, 3, 28, 3, 0, 0, 0}));
}

TEST(Calendar, TimeThatTheClockSkipsDoesNotExist) {
    const Zone zone(kBerlin);
    EXPECT_FALSE(localDateExists({2021, 3, 28, 2, 30, 0, 0}));
    EXPECT_FALSE(localDateExists({2021, 3, 28, 2, 0, 0, 0}));
    EXPECT_TRUE(localDateExists({2021, 3, 28, 1, 59, 59, 0}));
    EXPECT_TRUE(localDateExists({2021, 3, 28, 3, 0, 0, 0}));
    EXPECT_TRUE(localDateExists({2021, 10, 31, 2, 30, 0, 0})) << "this one exists twice";
    const Zone utc("UTC0");
    EXPECT_TRUE(localDateExists({2021, 3, 28, 2, 30, 0, 0}));
}

TEST(Calendar, NamedZonesOfTheSystemHaveTheSameRules) {
    if (!std::filesystem::exists("/usr/share/zoneinfo/Europe/Berlin"))
        GTEST_SKIP() << "the system has no time zone files";
    const Zone zone("Europe/Berlin");
    EXPECT_FALSE(localDateExists({2021, 3, 28, 2, 30, 0, 0}));
    EXPECT_TRUE(localDateExists({2021, 3, 28, 3, 30, 0, 0}));
}

TEST(Calendar, ADateExistsWhereTheSystemsConversionKeepsIt) {
    for (const char* name :
         {"UTC0", kBerlin, "America/New_York", "Australia/Lord_Howe", "Pacific/Apia", "right/UTC"}) {
        const Zone zone(name);
        for (int64_t moment = -3'000'000'000; moment < 4'000'000'000; moment += 1'000'003) {
            DateTimeRec date = localDate(moment, WeekDays::FromZero);
            date.hour = static_cast<int16_t>(moment % 4 + 1);
            date.minute = static_cast<int16_t>(moment / 4 % 61);
            ASSERT_EQ(localDateExists(date), keptByTheSystem(date)) << name << " " << moment;
        }
    }
}

TEST(Calendar, MidnightExistsAfterALeapSecondToo) {
    if (!std::filesystem::exists("/usr/share/zoneinfo/right/UTC"))
        GTEST_SKIP() << "the system has no time zone files with leap seconds";
    const Zone zone("right/UTC");
    EXPECT_TRUE(localDateExists({2016, 12, 31, 23, 59, 60, 0}));
    EXPECT_TRUE(localDateExists({2017, 1, 1, 0, 0, 0, 0}));
    EXPECT_FALSE(localDateExists({2017, 1, 1, 23, 59, 60, 0}));
}

TEST(Calendar, LeapDaysExistInLeapYearsOnly) {
    const Zone zone("UTC0");
    for (const int16_t year : {int16_t{2000}, int16_t{2020}, int16_t{2024}, int16_t{2400}})
        EXPECT_TRUE(localDateExists({year, 2, 29, 12, 0, 0, 0})) << year;
    for (const int16_t year : {int16_t{1900}, int16_t{2021}, int16_t{2100}})
        EXPECT_FALSE(localDateExists({year, 2, 29, 12, 0, 0, 0})) << year;
}

TEST(Calendar, YearsOfFourDigitsExist) {
    const Zone zone("UTC0");
    EXPECT_TRUE(localDateExists({1, 1, 1, 0, 0, 0, 0}));
    EXPECT_TRUE(localDateExists({9999, 12, 31, 23, 59, 59, 0}));
    EXPECT_TRUE(localDateExists({1969, 12, 31, 23, 59, 59, 0})) << "the moment -1";
}

TEST(Calendar, PartsOutOfTheirRangeDoNotExist) {
    const Zone zone("UTC0");
    EXPECT_FALSE(localDateExists({2021, 0, 1, 0, 0, 0, 0}));
    EXPECT_FALSE(localDateExists({2021, 13, 1, 0, 0, 0, 0}));
    EXPECT_FALSE(localDateExists({2021, 1, 0, 0, 0, 0, 0}));
    EXPECT_FALSE(localDateExists({2021, 4, 31, 0, 0, 0, 0}));
    EXPECT_FALSE(localDateExists({2021, 1, 1, 24, 0, 0, 0}));
    EXPECT_FALSE(localDateExists({2021, 1, 1, 0, 60, 0, 0}));
    EXPECT_FALSE(localDateExists({2021, 1, 1, 0, 0, 60, 0}));
    EXPECT_FALSE(localDateExists({2021, 1, 1, 0, 0, -1, 0}));
    EXPECT_FALSE(localDateExists({}));
}

TEST(Calendar, DatesOfMomentsExistEverywhere) {
    for (const char* name : {"UTC0", kBerlin, "NST3:30NDT,M3.2.0,M11.1.0", "LINT-14"}) {
        const Zone zone(name);
        for (int64_t moment = -2'000'000'000; moment < 8'000'000'000; moment += 9'999'991)
            ASSERT_TRUE(localDateExists(localDate(moment, WeekDays::FromZero))) << name << " " << moment;
    }
}

}  // namespace

}  // namespace fi::test

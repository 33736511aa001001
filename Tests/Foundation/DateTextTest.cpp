// SPDX-License-Identifier: Apache-2.0
// Dates read from texts: each field, the calendar, and what makes a text no date.
#include "Foundation/DateText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>

#include "Foundation/ScopedTimeZone.h"

namespace fi::test {

namespace {

constexpr std::string_view kGood = "2018:09:03 14:05:59";

std::string dateText(int year, int month, int day, int hour, int minute, int second) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%04d:%02d:%02d %02d:%02d:%02d", year, month, day, hour, minute,
                  second);
    return buffer;
}

/// Days of a month by counting on the fingers.
int daysOf(int year, int month) {
    if (month == 2) return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

/// The rules of one field, written down once more in the plainest way.
std::optional<int16_t> slowField(const std::string& text, int field) {
    static constexpr int kShortest[] = {5, 8, 11, 14, 17, 19};
    static constexpr int kStart[] = {0, 5, 8, 11, 14, 17};
    static constexpr int kLowest[] = {1, 1, 1, 0, 0, 0};
    static constexpr int kHighest[] = {9999, 12, 31, 23, 59, 59};
    if (field < 0 || field > 5) return std::nullopt;
    if (static_cast<int>(text.size()) < kShortest[field]) return std::nullopt;
    const std::string digits = text.substr(static_cast<size_t>(kStart[field]), field == 0 ? 4 : 2);
    if (digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
    const int value = std::stoi(digits);
    if (value > kHighest[field] || value < kLowest[field]) return std::nullopt;
    return static_cast<int16_t>(value);
}

}  // namespace

TEST(DateTextTest, EachFieldIsReadFromItsPlace) {
    constexpr int16_t kValues[] = {2018, 9, 3, 14, 5, 59};
    for (int field = 0; field < 6; ++field)
        EXPECT_EQ(dateField(kGood, field), kValues[field]) << field;
}

TEST(DateTextTest, YearNeedsFiveCharacters) {
    EXPECT_FALSE(dateField("2018", 0));
    EXPECT_EQ(dateField("2018:", 0), 2018);
}

TEST(DateTextTest, EachFieldNeedsItsShortestText) {
    constexpr size_t kShortest[] = {5, 8, 11, 14, 17, 19};
    for (int field = 0; field < 6; ++field) {
        EXPECT_FALSE(dateField(kGood.substr(0, kShortest[field] - 1), field)) << field;
        EXPECT_TRUE(dateField(kGood.substr(0, kShortest[field]), field)) << field;
    }
}

TEST(DateTextTest, EachFieldHasItsBounds) {
    struct Case {
        const char* text;
        int field;
        bool valid;
    };
    const Case cases[] = {
        {"0000:01:01 00:00:00", 0, false}, {"0001:01:01 00:00:00", 0, true},
        {"9999:01:01 00:00:00", 0, true},  {"2018:00:01 00:00:00", 1, false},
        {"2018:01:01 00:00:00", 1, true},  {"2018:12:01 00:00:00", 1, true},
        {"2018:13:01 00:00:00", 1, false}, {"2018:01:00 00:00:00", 2, false},
        {"2018:01:01 00:00:00", 2, true},  {"2018:01:31 00:00:00", 2, true},
        {"2018:01:32 00:00:00", 2, false}, {"2018:01:01 00:00:00", 3, true},
        {"2018:01:01 23:00:00", 3, true},  {"2018:01:01 24:00:00", 3, false},
        {"2018:01:01 00:00:00", 4, true},  {"2018:01:01 00:59:00", 4, true},
        {"2018:01:01 00:60:00", 4, false}, {"2018:01:01 00:00:00", 5, true},
        {"2018:01:01 00:00:59", 5, true},  {"2018:01:01 00:00:60", 5, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(dateField(c.text, c.field).has_value(), c.valid) << c.text << " field " << c.field;
}

TEST(DateTextTest, ThereAreOnlySixFields) {
    for (const int field : {-1, 6, 7, 1 << 30, -(1 << 30)})
        EXPECT_FALSE(dateField(kGood, field)) << field;
}

TEST(DateTextTest, OnlyDigitsMakeANumber) {
    for (const char* text : {"20x8:09:03 14:05:59", "+018:09:03 14:05:59", " 018:09:03 14:05:59",
                             "2.18:09:03 14:05:59", "-018:09:03 14:05:59"})
        EXPECT_FALSE(dateField(text, 0)) << text;
}

TEST(DateTextTest, LettersElsewhereDoNotDisturbAField) {
    EXPECT_EQ(dateField("abcdeXXf03hijkl", 2), 3);
    EXPECT_FALSE(dateField("abcdeXXf03hijkl", 1));
    EXPECT_EQ(dateField("yyyy:mm:dd hh:mm:59", 5), 59);
}

TEST(DateTextTest, FieldsOfATextBeyondASCIIAreCountedInCharacters) {
    // The separator is one character of two bytes, then one of four bytes that counts twice.
    EXPECT_EQ(dateField("2018\u00e909:", 1), 9);
    EXPECT_EQ(dateField("2018\U0001F4F7xx03:", 2), 3);
    EXPECT_EQ(dateField("201\u0668:09", 0), std::nullopt) << "digits of other scripts are no digits";
}

TEST(DateTextTest, FieldsAgreeWithTheirPlainRules) {
    std::mt19937 random(20180903);
    const std::string alphabet = "0123456789999: x";
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 26, '0');
        if (round % 2 == 0) text = std::string(kGood).substr(0, random() % 20);
        for (size_t changes = random() % 4; changes > 0 && !text.empty(); --changes)
            text[random() % text.size()] = alphabet[random() % alphabet.size()];
        for (int field = -1; field <= 6; ++field)
            ASSERT_EQ(dateField(text, field), slowField(text, field)) << '"' << text << "\" " << field;
    }
}

TEST(DateTextTest, AWholeDateIsTakenApartWithNoDayOfWeek) {
    const auto date = dateOfText(kGood);
    ASSERT_TRUE(date);
    EXPECT_EQ(*date, (DateTimeRec{2018, 9, 3, 14, 5, 59, 0}));
}

TEST(DateTextTest, ThirtiethOfFebruaryPassesEveryFieldAndIsNoDate) {
    constexpr std::string_view kText = "2018:02:30 10:00:00";
    for (int field = 0; field < 6; ++field)
        EXPECT_TRUE(dateField(kText, field)) << field;
    EXPECT_FALSE(dateOfText(kText));
}

TEST(DateTextTest, ThirteenthMonthFailsAtTheMonth) {
    constexpr std::string_view kText = "2018:13:01 00:00:00";
    EXPECT_TRUE(dateField(kText, 0));
    EXPECT_FALSE(dateField(kText, 1));
    EXPECT_FALSE(dateOfText(kText));
}

TEST(DateTextTest, EighteenCharactersFailAtTheSecond) {
    constexpr std::string_view kText = "2018:09:03 14:05:5";
    for (int field = 0; field < 5; ++field)
        EXPECT_TRUE(dateField(kText, field)) << field;
    EXPECT_FALSE(dateField(kText, 5));
    EXPECT_FALSE(dateOfText(kText));
}

TEST(DateTextTest, SeparatorsAreNotLookedAt) {
    for (const char* text : {"2018-09-03 14:05:59", "2018/09/03T14.05.59", "2018009003014005059"})
        EXPECT_TRUE(dateOfText(text)) << text;
}

TEST(DateTextTest, WhatFollowsTheSecondIsIgnored) {
    EXPECT_EQ(dateOfText("2018:09:03 14:05:59.12+02"), dateOfText(kGood));
    EXPECT_EQ(std::string_view("2018:09:03 14:05:59.12+02").size(), 25U);
}

TEST(DateTextTest, YearZeroIsRejectedAndHourZeroAccepted) {
    EXPECT_FALSE(dateOfText("0000:01:01 12:00:00"));
    EXPECT_TRUE(dateOfText("2018:01:01 00:00:00"));
}

TEST(DateTextTest, LeapDaysExistInLeapYearsOnly) {
    EXPECT_TRUE(dateOfText("2020:02:29 12:00:00"));
    EXPECT_TRUE(dateOfText("2000:02:29 12:00:00"));
    EXPECT_FALSE(dateOfText("2019:02:29 12:00:00"));
    EXPECT_FALSE(dateOfText("1900:02:29 12:00:00"));
}

TEST(DateTextTest, TextBeyondASCIIIsNoDate) {
    EXPECT_FALSE(
        dateOfText("2018:09:03\u00a0"
                   "14:05:59"));
    EXPECT_FALSE(dateOfText("2018:09:03 14:05:59\xff"));
    EXPECT_FALSE(dateOfText(""));
}

TEST(DateTextTest, ATimeThatTheClockSkipsInSpringIsNoDate) {
    const ScopedTimeZone zone(kCentralEurope);
    EXPECT_TRUE(dateOfText("2021:03:28 01:59:59"));
    EXPECT_FALSE(dateOfText("2021:03:28 02:00:00"));
    EXPECT_FALSE(dateOfText("2021:03:28 02:30:00"));
    EXPECT_FALSE(dateOfText("2021:03:28 02:59:59"));
    EXPECT_TRUE(dateOfText("2021:03:28 03:00:00"));
    EXPECT_TRUE(dateOfText("2021:03:27 02:30:00")) << "the day before has that hour";
}

TEST(DateTextTest, ATimeThatTheClockRepeatsInAutumnIsADate) {
    const ScopedTimeZone zone(kCentralEurope);
    EXPECT_TRUE(dateOfText("2021:10:31 02:30:00"));
}

TEST(DateTextTest, TheSkippedHourOfOneZoneExistsInAnother) {
    const ScopedTimeZone zone("UTC0");
    EXPECT_TRUE(dateOfText("2021:03:28 02:30:00"));
}

TEST(DateTextTest, TheMomentBeforeTheEpochIsADate) {
    const ScopedTimeZone zone("UTC0");
    EXPECT_TRUE(dateOfText("1969:12:31 23:59:59"));
}

TEST(DateTextTest, EveryDayOfManyYearsAgreesWithASlowCalendar) {
    const ScopedTimeZone zone("UTC0");
    for (const int year : {1, 4, 100, 400, 1582, 1752, 1900, 1970, 2000, 2018, 2020, 2038, 2100, 9999}) {
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= 31; ++day) {
                const std::string text = dateText(year, month, day, 12, 34, 56);
                ASSERT_EQ(dateOfText(text).has_value(), day <= daysOf(year, month)) << text;
            }
        }
    }
}

TEST(DateTextTest, RandomMomentsAgreeWithASlowCalendar) {
    const ScopedTimeZone zone("UTC0");
    std::mt19937 random(4711);
    const auto upTo = [&random](int most) {
        return static_cast<int>(random() % static_cast<unsigned>(most));
    };
    for (int round = 0; round < 20000; ++round) {
        const int year = upTo(10000), month = upTo(14), day = upTo(33);
        const int hour = upTo(26), minute = upTo(62), second = upTo(62);
        const bool valid = year > 0 && month > 0 && month < 13 && day > 0 && day <= daysOf(year, month) &&
                           hour < 24 && minute < 60 && second < 60;
        const std::string text = dateText(year, month, day, hour, minute, second);
        const auto date = dateOfText(text);
        ASSERT_EQ(date.has_value(), valid) << text;
        if (!date) continue;
        const DateTimeRec wanted{static_cast<int16_t>(year),
                                 static_cast<int16_t>(month),
                                 static_cast<int16_t>(day),
                                 static_cast<int16_t>(hour),
                                 static_cast<int16_t>(minute),
                                 static_cast<int16_t>(second),
                                 0};
        ASSERT_EQ(*date, wanted) << text;
    }
}

}  // namespace fi::test

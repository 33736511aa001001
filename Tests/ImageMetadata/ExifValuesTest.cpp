// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/ExifValues.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "ImageMetadata/TagTypes.h"

namespace fi::test {

namespace {

constexpr uint8_t kUntouched = 0xEE;

/// A record whose value is a run of words, and the area it is copied to.
struct Record {
    std::vector<char> value;
    IMAGETAG_INFO info{};
    std::vector<uint8_t> out;
    uint8_t unit = 0;

    Record(uint16_t type, int32_t count, std::vector<char> bytes) : value(std::move(bytes)) {
        info.type = type;
        info.count = count;
        info.value = value.data();
        out.assign(value.size() + 16, kUntouched);
        unit = valueFromType(out.data(), info);
    }

    /// What was written must be these bytes and nothing behind them.
    void expect(const std::vector<uint8_t>& bytes, uint8_t expectedUnit) const {
        std::vector<uint8_t> expected = bytes;
        expected.resize(out.size(), kUntouched);
        EXPECT_EQ(out, expected) << "type " << info.type << " count " << info.count;
        EXPECT_EQ(unit, expectedUnit) << "type " << info.type;
    }
};

std::vector<char> counting(size_t size) {
    std::vector<char> bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i + 1);
    return bytes;
}

IMAGETAG_INFO infoOf(uint16_t type, int32_t count, std::string& value) {
    return {36867, type, kImageTagKindPlain, count, value.data(), {}};
}

}  // namespace

TEST(ExifValuesTest, BytesAreCopiedWhole) {
    Record(kTagByte, 1, counting(1)).expect({1}, 1);
    Record(kTagByte, 5, counting(5)).expect({1, 2, 3, 4, 5}, 1);
}

TEST(ExifValuesTest, FractionsAreCopiedAsPairsOfWords) {
    Record(kTagRational, 1, counting(8)).expect({1, 2, 3, 4, 5, 6, 7, 8}, 8);
    Record(kTagRational, 2, counting(16))
        .expect({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}, 8);
}

TEST(ExifValuesTest, OfEveryOtherTypeTheFirstValueIsCopied) {
    struct Case {
        uint16_t type;
        std::vector<uint8_t> first;
    };
    const std::vector<Case> cases = {
        {kTagShort, {1, 2}},
        {kTagSShort, {1, 2}},
        {kTagLong, {1, 2, 3, 4}},
        {kTagSLong, {1, 2, 3, 4}},
        {kTagFloat, {1, 2, 3, 4}},
        {kTagSRational, {1, 2, 3, 4}},  // the numerator alone
        {kTagSByte, {1}},
        {kTagUndefined, {1}},
        {kTagDouble, {1, 2, 3, 4, 5, 6, 7, 8}},
    };
    for (const Case& c : cases) {
        for (const int32_t count : {1, 3}) {
            const size_t size = static_cast<size_t>(count) * unitSizeOfType(c.type);
            Record(c.type, count, counting(size)).expect(c.first, static_cast<uint8_t>(c.first.size()));
        }
    }
}

TEST(ExifValuesTest, TextsAndUnknownTypesAreNotCopied) {
    for (const uint16_t type : {uint16_t{kTagASCII}, uint16_t{0}, uint16_t{13}, uint16_t{65535}})
        Record(type, 8, counting(10)).expect({}, 0);
}

TEST(ExifValuesTest, ACountBelowOneIsNothing) {
    for (uint16_t type = 0; type <= 13; ++type) {
        for (const int32_t count : {0, -1, -32768})
            Record(type, count, counting(8)).expect({}, 0);
    }
}

TEST(ExifValuesTest, WithoutRoomTheUnitIsTold) {
    constexpr std::array<uint8_t, 14> kUnits = {0, 1, 0, 2, 4, 8, 1, 1, 2, 4, 4, 4, 8, 0};
    std::string value(8, 'x');
    for (uint16_t type = 0; type < kUnits.size(); ++type)
        EXPECT_EQ(valueFromType(nullptr, infoOf(type, 1, value)), kUnits[type]) << type;
}

TEST(ExifValuesTest, FourOrientationsAreTurnsAndAllElseStays) {
    constexpr std::array<int16_t, 9> kTurns = {0, 0, 2, 2, 4, 5, 1, 7, 3};
    for (int16_t orientation = 0; orientation < 9; ++orientation)
        EXPECT_EQ(turnOfOrientation(orientation), kTurns[static_cast<size_t>(orientation)]);
    for (const int16_t none : {int16_t{9}, int16_t{-1}, int16_t{32767}, int16_t{-32768}})
        EXPECT_EQ(turnOfOrientation(none), none);
}

TEST(ExifValuesTest, ATextEndsWithItsCountOrItsFirstNul) {
    std::string value("2019:05:06\0junk", 15);
    EXPECT_EQ(textOfTag(infoOf(kTagASCII, 15, value)), "2019:05:06");
    EXPECT_EQ(textOfTag(infoOf(kTagASCII, 4, value)), "2019");
    EXPECT_EQ(textOfTag(infoOf(kTagUndefined, 4, value)), "2019");
    EXPECT_EQ(textOfTag(infoOf(kTagLong, 1, value)), "2019");
    EXPECT_EQ(textOfTag(infoOf(kTagASCII, 0, value)), "");
    EXPECT_EQ(textOfTag(infoOf(kTagASCII, -4, value)), "");
    EXPECT_EQ(textOfTag(infoOf(13, 4, value)), "");
}

TEST(ExifValuesTest, TheFirstShortIsTheFirst16BitsOfAnyType) {
    std::string value("\x06\x00\x01\x00", 4);
    for (const uint16_t type : {uint16_t{kTagShort}, uint16_t{kTagSShort}})
        EXPECT_EQ(firstShortOfTag(infoOf(type, 2, value)), 6);
    EXPECT_EQ(firstShortOfTag(infoOf(kTagLong, 1, value)), 6);
    EXPECT_EQ(firstShortOfTag(infoOf(kTagByte, 2, value)), 6);
    EXPECT_EQ(firstShortOfTag(infoOf(kTagByte, 1, value)), 0);
    EXPECT_EQ(firstShortOfTag(infoOf(kTagShort, 0, value)), 0);
    value[1] = '\x80';
    EXPECT_EQ(firstShortOfTag(infoOf(kTagShort, 1, value)), -32762);
}

TEST(ExifValuesTest, ADateTextMustNameATime) {
    DateTimeRec date{1, 2, 3, 4, 5, 6, 7};
    const DateTimeRec untouched = date;
    for (const char* text :
         {"", "2018", "2018:02:30 10:00:00", "0000:00:00 00:00:00", "    :  :     :  :  "}) {
        EXPECT_FALSE(readDateText(text, date)) << text;
        EXPECT_EQ(date, untouched) << text;
    }
    EXPECT_TRUE(readDateText("2018:09:03 14:05:59", date));
    EXPECT_EQ(date, (DateTimeRec{2018, 9, 3, 14, 5, 59, 0}));
}

TEST(ExifValuesTest, ADateHasAYearAMonthADayAndNoNegativeTime) {
    struct Case {
        DateTimeRec date;
        bool isDate;
    };
    const std::vector<Case> cases = {
        {{2020, 1, 1, 0, 0, 0, 0}, true},    {{2020, 0, 1, 0, 0, 0, 0}, false},
        {{2020, 1, 0, 0, 0, 0, 0}, false},   {{0, 1, 1, 0, 0, 0, 0}, false},
        {{-1, 1, 1, 0, 0, 0, 0}, false},     {{2020, -1, 1, 0, 0, 0, 0}, false},
        {{2020, 1, -1, 0, 0, 0, 0}, false},  {{2020, 1, 1, -1, 0, 0, 0}, false},
        {{2020, 1, 1, 0, -1, 0, 0}, false},  {{2020, 1, 1, 0, 0, -1, 0}, false},
        {{2020, 1, 1, 0, 0, 61, 0}, true},   {{2020, 99, 99, 99, 99, 99, 0}, true},
        {{1, 1, 1, 0, 0, 0, -7}, true},      {{32767, 32767, 32767, 32767, 32767, 32767, 0}, true},
        {{-32768, 1, 1, 0, 0, 0, 0}, false}, {{0, 0, 0, 0, 0, 0, 0}, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(isDate(c.date), c.isDate) << c.date.year << ' ' << c.date.month << ' ' << c.date.hour;
}

}  // namespace fi::test

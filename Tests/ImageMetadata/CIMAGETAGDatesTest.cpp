// SPDX-License-Identifier: Apache-2.0
// Dates and versions, which are parsed when their record is made.
#include <gtest/gtest.h>

#include <string>

#include "ImageMetadata/TagParse.h"

namespace fi::test {

namespace {

using namespace std::string_literals;

/// Parses a file with one value in IFD0 and looks at its record.
struct OneValue {
    OneValue(ByteOrder order, uint16_t number, uint16_t type, const std::string& value) {
        TagBytes file(order);
        if (value.size() <= 4) {
            file.directory(8, {bytesEntry(number, type, value)});
        } else {
            file.directory(8, {entryAt(number, type, static_cast<uint32_t>(value.size()), 100)})
                .text(100, value);
        }
        EXPECT_EQ(parse(tag, file).answer, kDone);
    }

    [[nodiscard]] Parsed parsed() const { return parsedOf(tag.record(0)); }
    [[nodiscard]] uint16_t kind() const { return tag.record(0).kind; }

    OpenTag tag;
};

/// What a date with its NUL is parsed to.
Parsed dateOf(const std::string& text) {
    const OneValue value(ByteOrder::Little, 306, 2, text + '\0');
    EXPECT_EQ(value.kind(), kImageTagKindDate);
    return value.parsed();
}

Parsed allOf(uint16_t number) {
    return {number, number, number, number, number, number};
}

}  // namespace

TEST(CIMAGETAGDatesTest, ExifVersionsAreNumbers) {
    struct Case {
        const char* text;
        uint16_t number;
    };
    for (const ByteOrder order : kBothOrders) {
        for (const Case& c : {Case{"0220", 220}, Case{"0100", 100}, Case{"0232", 232}, Case{"0300", 300}}) {
            const OneValue value(order, 36864, 7, c.text);
            EXPECT_EQ(value.kind(), kImageTagKindExifVersion);
            EXPECT_EQ(value.parsed(), (Parsed{c.number})) << c.text;
        }
    }
}

TEST(CIMAGETAGDatesTest, FlashpixVersionsAreNumbers) {
    for (const ByteOrder order : kBothOrders) {
        const OneValue value(order, 40960, 7, "0100");
        EXPECT_EQ(value.kind(), kImageTagKindFlashpixVersion);
        EXPECT_EQ(value.parsed(), (Parsed{100}));
    }
}

TEST(CIMAGETAGDatesTest, VersionsAreTheirFirstFourBytes) {
    const DigitsInNewMemory digits;
    EXPECT_EQ(OneValue(ByteOrder::Little, 36864, 7, "0220").parsed(), (Parsed{220}));
    EXPECT_EQ(OneValue(ByteOrder::Little, 36864, 7, "02209999").parsed(), (Parsed{220}));
    EXPECT_EQ(OneValue(ByteOrder::Little, 36864, 2, "0221\0"s).parsed(), (Parsed{221}));
    // Shorter ones do not go on into what stands behind them.
    EXPECT_EQ(OneValue(ByteOrder::Little, 36864, 7, "02").parsed(), (Parsed{2}));
    EXPECT_EQ(OneValue(ByteOrder::Little, 40960, 7, "").parsed(), Parsed{});
}

TEST(CIMAGETAGDatesTest, FourTagsAreDates) {
    for (const ByteOrder order : kBothOrders) {
        for (const uint16_t number : Shorts{306, 36867, 36868, 29}) {
            const OneValue value(order, number, 2, "2019:05:06 10:11:12\0"s);
            EXPECT_EQ(value.kind(), kImageTagKindDate) << number;
            EXPECT_EQ(value.parsed(), (Parsed{2019, 5, 6, 10, 11, 12})) << number;
            EXPECT_STREQ(value.tag.record(0).value, "2019:05:06 10:11:12");
        }
    }
}

TEST(CIMAGETAGDatesTest, DatesAreParsedInEveryDirectory) {
    OpenTag tag;
    const TagBytes file = TagBytes(ByteOrder::Big)
                              .directory(8, {longEntry(0x8769, 60), longEntry(0x8825, 120)})
                              .directory(60, {entryAt(36867, 2, 20, 200), entryAt(36868, 2, 20, 240)})
                              .directory(120, {entryAt(29, 2, 11, 280)})
                              .text(200, "2019:05:06 10:11:12")
                              .text(240, "2020:06:07 11:12:13")
                              .text(280, "2021:07:08")
                              .length(300);
    EXPECT_EQ(parse(tag, file).answer, kDone);
    EXPECT_EQ(parsedOf(tag.record(1, 0)), (Parsed{2019, 5, 6, 10, 11, 12}));
    EXPECT_EQ(parsedOf(tag.record(1, 1)), (Parsed{2020, 6, 7, 11, 12, 13}));
    EXPECT_EQ(parsedOf(tag.record(2, 0)), (Parsed{2021, 7, 8, 2021, 2021, 2021}));
}

TEST(CIMAGETAGDatesTest, ADateOfSixFieldsIsParsed) {
    EXPECT_EQ(dateOf("2019:05:06 10:11:12"), (Parsed{2019, 5, 6, 10, 11, 12}));
    EXPECT_EQ(dateOf("1999:12:31 23:59:59"), (Parsed{1999, 12, 31, 23, 59, 59}));
    EXPECT_EQ(dateOf("0000:00:00 00:00:00"), Parsed{});
}

TEST(CIMAGETAGDatesTest, MissingFieldsAreTheFirstOne) {
    EXPECT_EQ(dateOf("2019:05:06"), (Parsed{2019, 5, 6, 2019, 2019, 2019}));
    EXPECT_EQ(dateOf("2019:05:06 10:11"), (Parsed{2019, 5, 6, 10, 11, 2019}));
    EXPECT_EQ(dateOf("2019:05"), (Parsed{2019, 5, 2019, 2019, 2019, 2019}));
    EXPECT_EQ(dateOf("2019"), allOf(2019));
    EXPECT_EQ(dateOf(":05"), (Parsed{0, 5}));
    EXPECT_EQ(dateOf(""), Parsed{});
}

TEST(CIMAGETAGDatesTest, ThreeCharactersSeparateFields) {
    EXPECT_EQ(dateOf("2019/05/06 10:11:12"), (Parsed{2019, 5, 6, 10, 11, 12}));
    EXPECT_EQ(dateOf("2019 05 06 10 11 12"), (Parsed{2019, 5, 6, 10, 11, 12}));
    EXPECT_EQ(dateOf("2019/05:06/10 11:12"), (Parsed{2019, 5, 6, 10, 11, 12}));
    // Others do not: a number ends before them.
    EXPECT_EQ(dateOf("2019-05-06T10.11,12"), allOf(2019));
    EXPECT_EQ(dateOf("2019:05:06T10:11:12"), (Parsed{2019, 5, 6, 11, 12, 2019}));
}

TEST(CIMAGETAGDatesTest, EverySeparatorEndsAField) {
    EXPECT_EQ(dateOf("2019::06  11:12"), (Parsed{2019, 0, 6, 0, 11, 12}));
    EXPECT_EQ(dateOf("2019:05:06 10:11:"), (Parsed{2019, 5, 6, 10, 11, 0}));
    EXPECT_EQ(dateOf("2019:05:06 10:11:12:13 14"), (Parsed{2019, 5, 6, 10, 11, 12}));
}

TEST(CIMAGETAGDatesTest, BlankDatesAreZero) {
    EXPECT_EQ(dateOf("    :  :     :  :  "), Parsed{});
    EXPECT_EQ(dateOf("                   "), Parsed{});
}

TEST(CIMAGETAGDatesTest, ADateEndsAtItsNUL) {
    EXPECT_EQ(dateOf("2019:05:06\0"
                     "10:11:12"s),
              (Parsed{2019, 5, 6, 2019, 2019, 2019}));
}

TEST(CIMAGETAGDatesTest, ADateWithoutNULEndsWithItsValue) {
    const DigitsInNewMemory digits;
    for (const uint16_t type : Shorts{1, 2, 6, 7}) {
        const OneValue value(ByteOrder::Little, 306, type, "2019:05:06 10:11:12");
        EXPECT_EQ(value.parsed(), (Parsed{2019, 5, 6, 10, 11, 12})) << type;
        EXPECT_EQ(OneValue(ByteOrder::Little, 306, type, "2019").parsed(), allOf(2019)) << type;
    }
}

TEST(CIMAGETAGDatesTest, DatesOfAnyLengthAreBounded) {
    std::string longest(32766, '9');
    EXPECT_EQ(OneValue(ByteOrder::Little, 306, 2, longest).kind(), kImageTagKindDate);
    std::string separators(32766, ':');
    EXPECT_EQ(dateOf(separators), Parsed{});
    longest.replace(0, 5, "2019:");
    longest.replace(100, 20, ":6:10:11:12:13:14:15");
    EXPECT_EQ(dateOf(longest)[0], 2019);
    EXPECT_EQ(dateOf(longest)[2], 6);
    EXPECT_EQ(dateOf(longest)[5], 12);
}

TEST(CIMAGETAGDatesTest, OtherTagsAreNotParsed) {
    for (const uint16_t number :
         Shorts{28, 30, 305, 307, 36863, 36865, 36866, 36869, 40959, 40961, 36880}) {
        const OneValue text(ByteOrder::Little, number, 2, "2019:05:06 10:11:12\0"s);
        EXPECT_EQ(text.kind(), kImageTagKindPlain) << number;
        EXPECT_EQ(text.parsed(), Parsed{}) << number;
        const OneValue version(ByteOrder::Little, number, 7, "0220");
        EXPECT_EQ(version.kind(), kImageTagKindPlain) << number;
        EXPECT_EQ(version.parsed(), Parsed{}) << number;
    }
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// What the tool makes of a tag's value, for people and for programs.
#include "TagValue.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

namespace fi::test {
namespace {

enum Type : uint16_t {
    kByte = 1,
    kAscii,
    kShort,
    kLong,
    kRational,
    kSByte,
    kUndefined,
    kSShort,
    kSLong,
    kSRational,
    kFloat,
    kDouble,
};

template <typename T>
PhotoTag tagOf(uint16_t type, const std::vector<T>& units) {
    PhotoTag tag = {0x0100, type, std::string(units.size() * sizeof(T), '\0')};
    if (!units.empty()) std::memcpy(tag.value.data(), units.data(), tag.value.size());
    return tag;
}

PhotoTag textTag(uint16_t type, std::string_view value) {
    return {0x0100, type, std::string(value)};
}

std::string json(const PhotoTag& tag) {
    return tagJsonValue(tag).dump();
}

std::string words(const PhotoTag& tag) {
    return tagWords(tag, 30);
}

struct Numbers {
    PhotoTag tag;
    size_t count;
    const char* json;
    const char* words;
};

TEST(TagValue, NumbersAreExactForEveryType) {
    const Numbers table[] = {
        {tagOf<uint16_t>(kShort, {65535}), 1, "65535", "65535"},
        {tagOf<uint16_t>(kShort, {8, 8, 8}), 3, "[8,8,8]", "8, 8, 8"},
        {tagOf<uint16_t>(kShort, {}), 0, "[]", ""},
        {tagOf<uint32_t>(kLong, {4294967295U}), 1, "4294967295", "4294967295"},
        {tagOf<uint32_t>(kLong, {0, 1}), 2, "[0,1]", "0, 1"},
        {tagOf<uint32_t>(kRational, {1, 60}), 1, "[1,60]", "1/60"},
        {tagOf<uint32_t>(kRational, {4294967295U, 0}), 1, "[4294967295,0]", "4294967295/0"},
        {tagOf<uint32_t>(kRational, {35, 1, 39, 2}), 2, "[[35,1],[39,2]]", "35/1, 39/2"},
        {tagOf<int8_t>(kSByte, {-128, 127}), 2, "[-128,127]", "-128, 127"},
        {tagOf<int16_t>(kSShort, {-32768}), 1, "-32768", "-32768"},
        {tagOf<int32_t>(kSLong, {-2147483647 - 1, 2}), 2, "[-2147483648,2]", "-2147483648, 2"},
        {tagOf<int32_t>(kSRational, {-1, 3}), 1, "[-1,3]", "-1/3"},
        {tagOf<float>(kFloat, {0.5F}), 1, "0.5", "0.5"},
        {tagOf<double>(kDouble, {0.1, -2.0}), 2, "[0.1,-2.0]", "0.1, -2"},
    };
    for (const Numbers& row : table) {
        EXPECT_EQ(tagCount(row.tag), row.count) << row.json;
        EXPECT_EQ(json(row.tag), row.json);
        EXPECT_EQ(words(row.tag), row.words);
        EXPECT_EQ(tagExactText(row.tag), std::nullopt);
    }
}

TEST(TagValue, AFloatKeepsAllItsBits) {
    const float tenth = 0.1F;
    const auto value = tagJsonValue(tagOf<float>(kFloat, {tenth}));
    EXPECT_EQ(static_cast<float>(nlohmann::json::parse(value.dump()).get<double>()), tenth);
    EXPECT_EQ(words(tagOf<float>(kFloat, {tenth})), "0.1");
}

TEST(TagValue, WhatIsNoFiniteNumberIsNull) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(json(tagOf<float>(kFloat, {nan})), "null");
    EXPECT_EQ(json(tagOf<double>(kDouble, {1.5, infinite, -infinite})), "[1.5,null,null]");
    EXPECT_EQ(words(tagOf<double>(kDouble, {infinite})), "inf");
}

TEST(TagValue, ATextLosesOnlyTheZeroBytesAtItsEnd) {
    EXPECT_EQ(json(textTag(kAscii, {"Canon\0\0\0", 8})), R"("Canon")");
    EXPECT_EQ(json(textTag(kAscii, {"a\0b\0", 4})), R"("a\u0000b")");
    EXPECT_EQ(json(textTag(kAscii, " padded  ")), R"(" padded  ")");
    EXPECT_EQ(json(textTag(kAscii, {"\0\0", 2})), R"("")");
    EXPECT_EQ(json(textTag(kAscii, "")), R"("")");
    EXPECT_EQ(tagCount(textTag(kAscii, {"Canon\0", 6})), 6U);
}

TEST(TagValue, ATextThatIsNoUtf8HasItsExactBytesToo) {
    const PhotoTag tag = textTag(kAscii, {"K\xFCste\0", 6});
    EXPECT_EQ(json(tag), "\"K\uFFFDste\"");
    EXPECT_EQ(tagExactText(tag), "S/xzdGU=");
    EXPECT_EQ(tagExactText(textTag(kAscii, "K\u00fcste")), std::nullopt);
}

TEST(TagValue, BytesAreBase64) {
    EXPECT_EQ(json(textTag(kByte, {"\x02\x03\x00\x00", 4})), R"("AgMAAA==")");
    EXPECT_EQ(json(textTag(kUndefined, "0230")), R"("MDIzMA==")");
    EXPECT_EQ(json(textTag(kUndefined, "")), R"("")");
}

TEST(TagValue, ShortBytesCanBeRead) {
    EXPECT_EQ(words(textTag(kByte, {"\x02\x03\x00\x00", 4})), "2, 3, 0, 0");
    EXPECT_EQ(words(textTag(kUndefined, "0230")), "\"0230\"");
    EXPECT_EQ(words(textTag(kUndefined, {"\x01\x02\x03\x00", 4})), "01 02 03 00");
    EXPECT_EQ(words(textTag(kUndefined, "")), "");
}

TEST(TagValue, LongValuesAreCutWithAnEllipsis) {
    const std::string text(100, 't');
    EXPECT_EQ(words(textTag(kAscii, text)), std::string(29, 't') + "\u2026");
    EXPECT_EQ(words(textTag(kUndefined, std::string(300, '\x01'))),
              "01 01 01 01 01 01 01 01 01 01 \u2026 (300 bytes)");
    EXPECT_EQ(words(textTag(kUndefined, text)), "74 74 74 74 74 74 74 74 74 74 \u2026 (100 bytes)");
    EXPECT_EQ(words(tagOf<uint16_t>(kShort, std::vector<uint16_t>(1000, 12345))),
              "12345, 12345, 12345, 12345, \u2026 (1000 values)");
    EXPECT_EQ(words(textTag(kByte, std::string(20, '\0'))),
              "0, 0, 0, 0, 0, 0, 0, 0, 0, 0, \u2026 (20 values)");
}

TEST(TagValue, AValueThatJustFitsIsWhole) {
    const std::string text(30, 't');
    EXPECT_EQ(words(textTag(kAscii, text)), text);
    EXPECT_EQ(words(tagOf<uint16_t>(kShort, {12345, 12345, 12345, 12345, 12})),
              "12345, 12345, 12345, 12345, 12");
}

TEST(TagValue, NothingThatSteersATerminalIsPrinted) {
    EXPECT_EQ(words(textTag(kAscii, {"a\x1b[2Jb\n\0", 8})), "a\\x1b[2Jb\\n");
    EXPECT_EQ(words(textTag(kUndefined, "\x1b[2J")), "1b 5b 32 4a");
}

}  // namespace
}  // namespace fi::test

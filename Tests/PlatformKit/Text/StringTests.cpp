// SPDX-License-Identifier: Apache-2.0
// Text as an object.
#include "PlatformKit/String.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "PlatformKit/Data.h"

namespace fi::test {

namespace {

constinit StringConstant kConstant("constant");

TEST(String, KeepsItsBytesWhateverTheyAre) {
    for (const std::string& bytes : {std::string(), std::string("a"), std::string("\xFF\x80"),
                                     std::string("a\0b", 3), std::string(70000, 'x')}) {
        const auto text = CFString::create(bytes);
        EXPECT_EQ(text->view(), bytes);
        EXPECT_EQ(text->c_str()[bytes.size()], '\0');
        EXPECT_NE(static_cast<const void*>(text->c_str()), static_cast<const void*>(bytes.data()));
    }
}

TEST(String, LengthIsInUTF16Units) {
    EXPECT_EQ(CFString::create("abc")->length(), 3U);
    EXPECT_EQ(CFString::create("\xC3\xA9")->length(), 1U);
    EXPECT_EQ(CFString::create("\xF0\x9F\x93\xB7")->length(), 2U);
    EXPECT_EQ(CFString::create("\xFF\xFF")->length(), 2U);
    EXPECT_EQ(CFString::create("")->length(), 0U);
}

TEST(String, FromAnEncodingOrNull) {
    EXPECT_EQ(CFString::create("\x93\xFA", TextEncoding::ShiftJIS)->view(), "\xE6\x97\xA5");
    EXPECT_FALSE(CFString::create("\x93", TextEncoding::ShiftJIS));
    EXPECT_FALSE(CFString::create("\xFF", TextEncoding::UTF8));
    EXPECT_FALSE(CFString::create("\xC3\xA9", TextEncoding::ASCII));
    EXPECT_EQ(CFString::create("ok", TextEncoding::ASCII)->view(), "ok");
}

TEST(String, FromALengthPrefixedString) {
    constexpr unsigned char kText[] =
        "\x02"
        "abc";
    constexpr unsigned char kBroken[] = "\x01\xFF";
    constexpr unsigned char kEmpty[] = {0};
    EXPECT_EQ(CFString::createFromPascal(kText)->view(), "ab");
    EXPECT_FALSE(CFString::createFromPascal(kBroken));
    EXPECT_EQ(CFString::createFromPascal(kEmpty)->view(), "");
}

TEST(String, EqualityIsByUnitsWithoutNormalisation) {
    const auto text = CFString::create("\xC3\xA9");
    EXPECT_TRUE(text->isEqual(CFString::create("\xC3\xA9").get()));
    EXPECT_EQ(text->hash(), CFString::create("\xC3\xA9")->hash());
    EXPECT_FALSE(text->isEqual(CFString::create("e\xCC\x81").get()));
    EXPECT_FALSE(CFString::create("A")->isEqual(CFString::create("a").get()));
    EXPECT_FALSE(CFString::create(std::string_view("a\0b", 3))->isEqual(CFString::create("a").get()));
    EXPECT_FALSE(text->isEqual(nullptr));
    EXPECT_FALSE(text->isEqual(CFData::create({}).get()));
}

TEST(String, ConstantsEqualOrdinaryStrings) {
    EXPECT_EQ(kConstant.ref()->view(), "constant");
    EXPECT_EQ(std::strlen(kConstant.ref()->c_str()), 8U);
    EXPECT_TRUE(CFString::create("constant")->isEqual(kConstant.ref()));
    EXPECT_EQ(CFString::create("constant")->hash(), kConstant.ref()->hash());
}

TEST(String, ConstantsSurviveHandlesAndPools) {
    {
        const auto handle = adopt(kConstant.ref());
        const AutoreleasePool pool;
        autorelease(kConstant.ref());
    }
    EXPECT_EQ(kConstant.ref()->view(), "constant");
}

}  // namespace

}  // namespace fi::test

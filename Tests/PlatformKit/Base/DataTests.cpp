// SPDX-License-Identifier: Apache-2.0
// Blocks of bytes as objects.
#include "PlatformKit/Data.h"

#include <gtest/gtest.h>

#include "PlatformKit/String.h"

namespace fi::test {

namespace {

TEST(Data, CopiesTheBytesItIsMadeFrom) {
    std::vector<uint8_t> bytes = {1, 0, 2};
    const auto data = CFData::create(bytes);
    bytes[0] = 9;
    EXPECT_EQ(data->length(), 3U);
    EXPECT_EQ(data->bytes()[0], 1);
}

TEST(Data, AdoptsBytesWithoutCopyingThem) {
    std::vector<uint8_t> bytes(100, 7);
    const uint8_t* place = bytes.data();
    EXPECT_EQ(CFData::adopting(std::move(bytes))->bytes().data(), place);
}

TEST(Data, EqualityAndHashAreThoseOfTheBytes) {
    const auto a = CFData::adopting({1, 2, 3});
    const auto same = CFData::adopting({1, 2, 3});
    EXPECT_TRUE(a->isEqual(same.get()));
    EXPECT_EQ(a->hash(), same->hash());
    EXPECT_FALSE(a->isEqual(CFData::adopting({1, 2}).get()));
    EXPECT_FALSE(a->isEqual(CFString::create("\x01\x02\x03").get()));
    EXPECT_FALSE(a->isEqual(nullptr));
}

TEST(Data, MayBeEmpty) {
    const auto empty = CFData::create({});
    EXPECT_EQ(empty->length(), 0U);
    EXPECT_TRUE(empty->isEqual(CFData::adopting({}).get()));
    EXPECT_EQ(empty->hash(), CFData::adopting({})->hash());
}

}  // namespace

}  // namespace fi::test

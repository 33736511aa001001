// SPDX-License-Identifier: Apache-2.0
// One record of limits for the process.
#include "PlatformKit/Limits.h"

#include <gtest/gtest.h>

namespace fi::test {

namespace {

TEST(Limits, OneRecordForAllThatCanBeChanged) {
    const DecodeLimits before = decodeLimits();
    decodeLimits().maximumPixels = 1;
    EXPECT_EQ(decodeLimits().maximumPixels, 1U);
    decodeLimits() = before;
    EXPECT_EQ(decodeLimits().maximumPixels, before.maximumPixels);
}

TEST(Limits, DefaultsLetAPhotoOfEveryCameraThroughAndBoundTheRest) {
    const DecodeLimits limits;
    EXPECT_GE(limits.maximumPixels, 150'000'000U);
    // A colour picture of 130 million pixels in full, and no more than a small computer has to spare.
    EXPECT_GE(limits.maximumBytes, 130'000'000U * uint64_t{4});
    EXPECT_LE(limits.maximumBytes, uint64_t{512} << 20);
    EXPECT_GT(limits.maximumSide, 32'767U);
    EXPECT_GT(limits.maximumScans, 0U);
    EXPECT_GT(limits.maximumPages, 0U);
}

}  // namespace

}  // namespace fi::test

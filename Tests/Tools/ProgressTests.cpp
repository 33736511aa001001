// SPDX-License-Identifier: Apache-2.0
#include "Progress.h"

#include <gtest/gtest.h>

namespace fi::test {
namespace {

TEST(Progress, TellsCountRateAndTimeLeft) {
    EXPECT_EQ(progressText(120, 312, 2.5), "120 of 312 photos, 48 a second, 0:04 left");
    EXPECT_EQ(progressText(3, 1000, 2), "3 of 1000 photos, 1.5 a second, 11:05 left");
}

TEST(Progress, TellsNoRateAsLongAsItIsUnknown) {
    EXPECT_EQ(progressText(0, 312, 10), "0 of 312 photos");
    EXPECT_EQ(progressText(1, 312, 0.1), "1 of 312 photos");
}

TEST(Progress, TellsNoTimeLeftAtTheEnd) {
    EXPECT_EQ(progressText(312, 312, 6.5), "312 of 312 photos, 48 a second");
}

TEST(Progress, WritesNothingWhenStandardErrorIsNoTerminal) {
    testing::internal::CaptureStderr();
    {
        Progress progress(Progress::Meter::Shown);
        for (size_t i = 0; i <= 1000; ++i)
            progress.advance(i, 1000);
        progress.clear();
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Exceptions stop at the edge of the library.
#include "PlatformKit/Base/Boundary.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace fi::test {

namespace {

TEST(Boundary, PassesOnWhatTheWorkReturns) {
    EXPECT_EQ(guarded([] { return 5; }, -108), 5);
    bool ran = false;
    guarded([&] { ran = true; });
    EXPECT_TRUE(ran);
}

TEST(Boundary, TurnsExceptionsIntoTheAnswerForNoMemory) {
    EXPECT_EQ(guarded([]() -> int { throw std::bad_alloc(); }, -108), -108);
    EXPECT_EQ(guarded([]() -> int { throw std::length_error("long"); }, -108), -108);
    guarded([] { throw 1; });
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Nothing that is thrown inside leaves a public operation.
#include "PlatformKit/Imaging/Failures.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace fi::test {
namespace {

TEST(Failures, MissingMemoryIsTold) {
    ImageFailure failure;
    EXPECT_EQ(withoutExceptions(&failure, []() -> int { throw std::bad_alloc(); }), 0);
    EXPECT_EQ(failure.code, ImageError::NoMemory);
    EXPECT_TRUE(failure.text);
}

TEST(Failures, WhateverElseIsThrownIsToldAsDamage) {
    ImageFailure failure;
    EXPECT_EQ(withoutExceptions(&failure, []() -> int { throw std::length_error("too long"); }), 0);
    EXPECT_EQ(failure.code, ImageError::Damaged);
    EXPECT_TRUE(failure.text);
    failure = {};
    EXPECT_FALSE(withoutExceptions(&failure, []() -> bool { throw 1; }));
    EXPECT_EQ(failure.code, ImageError::Damaged);
}

TEST(Failures, NobodyNeedsToAsk) {
    EXPECT_EQ(withoutExceptions(nullptr, []() -> int { throw 1; }), 0);
    EXPECT_EQ(withoutExceptions(nullptr, [] { return 7; }), 7);
}

}  // namespace
}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// A value or a reason.
#include "PlatformKit/Base/Result.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace fi::test {

namespace {

enum class Reason { Missing, Broken };

TEST(Result, HoldsAValue) {
    Result<std::string, Reason> result(std::string("value"));
    EXPECT_TRUE(result.ok());
    EXPECT_TRUE(result);
    EXPECT_EQ(*result, "value");
    EXPECT_EQ(result->size(), 5U);
    result.value() += "!";
    EXPECT_EQ(result.value(), "value!");
}

TEST(Result, HoldsAReasonThatCanBePassedOn) {
    const Result<std::string, Reason> result(Failure{Reason::Broken});
    EXPECT_FALSE(result);
    EXPECT_EQ(result.reason(), Reason::Broken);
    const Result<int, Reason> other = result.failure();
    EXPECT_EQ(other.reason(), Reason::Broken);
}

TEST(Result, TellsAValueFromAReasonOfTheSameType) {
    EXPECT_TRUE((Result<int, int>(1).ok()));
    EXPECT_FALSE((Result<int, int>(Failure{1}).ok()));
}

TEST(Result, MayHoldWhatCanOnlyBeMoved) {
    Result<std::unique_ptr<int>, Reason> result(std::make_unique<int>(3));
    const std::unique_ptr<int> taken = std::move(*result);
    EXPECT_EQ(*taken, 3);
}

}  // namespace

}  // namespace fi::test

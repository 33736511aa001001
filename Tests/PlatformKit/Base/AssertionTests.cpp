// SPDX-License-Identifier: Apache-2.0
// Failed assertions and retired entry points, with and without a handler.
#include "PlatformKit/Assertion.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "PlatformKit/Base/Assertion.h"
#include "PlatformKit/Log.h"

namespace fi::test {

namespace {

AssertionReport s_last;
int s_calls = 0;

void note(const AssertionReport& report) {
    s_last = report;
    ++s_calls;
}

class Assertion : public testing::Test {
protected:
    Assertion() { s_calls = 0; }
    ~Assertion() override {
        setAssertionHandler(nullptr);
        setLogSink(nullptr, nullptr);
    }
};
using AssertionDeathTest = Assertion;

TEST_F(Assertion, HandlerReceivesThePlaceAndMayReturn) {
    setAssertionHandler(note);
    assertionFailed("function", "file.cpp", 12, "what was expected");
    EXPECT_EQ(s_calls, 1);
    EXPECT_STREQ(s_last.message, "what was expected");
    EXPECT_STREQ(s_last.function, "function");
    EXPECT_STREQ(s_last.file, "file.cpp");
    EXPECT_EQ(s_last.line, 12U);
    EXPECT_FALSE(s_last.retired);
}

TEST_F(Assertion, HandlerHearsOfRetiredEntryPointsWithoutAPlace) {
    setAssertionHandler(note);
    reportRetired("no longer in use");
    EXPECT_EQ(s_calls, 1);
    EXPECT_STREQ(s_last.message, "no longer in use");
    EXPECT_EQ(s_last.function, nullptr);
    EXPECT_EQ(s_last.file, nullptr);
    EXPECT_EQ(s_last.line, 0U);
    EXPECT_TRUE(s_last.retired);
}

TEST_F(Assertion, InstallingReturnsTheHandlerBefore) {
    const AssertionHandler standard = setAssertionHandler(note);
    EXPECT_NE(standard, nullptr);
    EXPECT_EQ(setAssertionHandler(nullptr), &note);
    EXPECT_EQ(setAssertionHandler(nullptr), standard);
}

TEST_F(Assertion, RetiredEntryPointIsOnlyLoggedByDefault) {
    std::string logged;
    setLogSink([](const char* message, void* to) { *static_cast<std::string*>(to) += message; }, &logged);
    reportRetired("no longer in use");
    EXPECT_EQ(logged, "no longer in use");
}

TEST_F(AssertionDeathTest, FailureWritesOneLineAndAbortsByDefault) {
    setLogSink([](const char* message, void*) { std::fprintf(stderr, "log<%s>\n", message); }, nullptr);
    EXPECT_EXIT(assertionFailed("run", "Sources/file.cpp", 7, "count > 0"),
                testing::KilledBySignal(SIGABRT),
                "log<count > 0>\n[^\n]*BaseTests: Sources/file.cpp:7: run: Assertion failed: count > 0\n");
}

}  // namespace

}  // namespace fi::test

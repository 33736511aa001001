// SPDX-License-Identifier: Apache-2.0
// The one hard stop of the library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string>
#include <vector>

#include "FileImporter/CFileImporterCocoa.h"
#include "FileImporter/CapturedLog.h"
#include "PlatformKit/Assertion.h"

namespace fi::test {

namespace {

/// Shows the log on standard error, in brackets, so that the parent of a dying process sees it.
void logToStandardError() {
    setLogSink(
        [](const char* message, void*) {
            const std::string line = "log[" + std::string(message) + "]\n";
            (void)!write(STDERR_FILENO, line.data(), line.size());
        },
        nullptr);
}

/// Keeps what a handler is told.
struct Heard {
    std::string message;
    std::string function;
    std::string file;
    unsigned line = 0;
    bool retired = false;
};

std::vector<Heard>& heard() {
    static std::vector<Heard> reports;
    return reports;
}

void keepReport(const AssertionReport& report) {
    heard().push_back({report.message, report.function, report.file, report.line, report.retired});
}

}  // namespace

TEST(AssertionTest, ATrueConditionDoesNothing) {
    const CapturedLog log;
    heard().clear();
    const AssertionHandler before = setAssertionHandler(&keepReport);
    AssertCocoa(true, "never seen");
    setAssertionHandler(before);
    EXPECT_TRUE(heard().empty());
    AssertCocoa(true, "never seen");
    EXPECT_TRUE(log.lines().empty());
}

TEST(AssertionTest, AFalseConditionLogsItsMessageAndStopsTheProcess) {
    const auto fail = [] {
        logToStandardError();
        AssertCocoa(false, "the photo list is gone");
    };
    EXPECT_EXIT(fail(), testing::KilledBySignal(SIGABRT),
                testing::HasSubstr("log[the photo list is gone]\n"));
}

TEST(AssertionTest, TheStopNamesItsPlaceOnStandardError) {
    const auto fail = [] {
        logToStandardError();
        AssertCocoa(false, "the photo list is gone");
    };
    EXPECT_EXIT(fail(), testing::KilledBySignal(SIGABRT),
                testing::HasSubstr(
                    "CFileImporterCocoa:164: AssertCocoa: Assertion failed: the photo list is gone"));
}

TEST(AssertionTest, TheLogReceivesTheMessageOnceAndNothingElse) {
    const CapturedLog log;
    const auto fail = [] {
        logToStandardError();
        AssertCocoa(false, "once");
    };
    EXPECT_EXIT(fail(), testing::KilledBySignal(SIGABRT),
                testing::ResultOf(
                    [](const std::string& output) {
                        size_t count = 0;
                        for (size_t at = output.find("log["); at != std::string::npos;
                             at = output.find("log[", at + 1))
                            ++count;
                        return count;
                    },
                    1U));
    EXPECT_TRUE(log.lines().empty()) << "the dying process was another one";
}

TEST(AssertionTest, APercentSignInAMessageIsText) {
    const auto fail = [] {
        logToStandardError();
        AssertCocoa(false, "100%s%n");
    };
    EXPECT_EXIT(fail(), testing::KilledBySignal(SIGABRT),
                testing::HasSubstr("Assertion failed: 100%s%n\n"));
}

TEST(AssertionTest, AHandlerOfTheHostIsToldMessageAndPlaceAndMayGoOn) {
    const CapturedLog log;
    heard().clear();
    const AssertionHandler before = setAssertionHandler(&keepReport);
    AssertCocoa(false, "the photo list is gone");
    setAssertionHandler(before);
    ASSERT_EQ(heard().size(), 1U);
    const Heard& report = heard().front();
    EXPECT_EQ(report.message, "the photo list is gone");
    EXPECT_EQ(report.function, "AssertCocoa");
    EXPECT_EQ(report.file, "CFileImporterCocoa");
    EXPECT_EQ(report.line, 164U);
    EXPECT_FALSE(report.retired);
}

}  // namespace fi::test

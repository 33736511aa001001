// SPDX-License-Identifier: Apache-2.0
#include "Progress.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

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

/// A terminal that is standard error as long as this lasts, and that can go away meanwhile.
class TerminalAsStandardError {
public:
    TerminalAsStandardError() : m_before(dup(STDERR_FILENO)), m_terminal(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (m_terminal < 0 || grantpt(m_terminal) != 0 || unlockpt(m_terminal) != 0) return;
        const int end = open(ptsname(m_terminal), O_RDWR | O_NOCTTY);
        m_isThere = end >= 0 && dup2(end, STDERR_FILENO) >= 0;
        if (end >= 0) close(end);
    }
    ~TerminalAsStandardError() {
        dup2(m_before, STDERR_FILENO);
        close(m_before);
        goAway();
    }
    TerminalAsStandardError(const TerminalAsStandardError&) = delete;
    TerminalAsStandardError& operator=(const TerminalAsStandardError&) = delete;

    [[nodiscard]] bool isThere() const { return m_isThere; }
    void goAway() {
        if (m_terminal >= 0) close(m_terminal);
        m_terminal = -1;
    }

private:
    int m_before;
    int m_terminal;
    bool m_isThere = false;
};

TEST(Progress, ATerminalThatGoesAwayDoesNotEndTheRun) {
    TerminalAsStandardError terminal;
    if (!terminal.isThere()) GTEST_SKIP() << "no terminal can be made here";
    const auto untilTheNextLine = std::chrono::milliseconds(120);
    Progress progress(Progress::Meter::Shown);
    std::this_thread::sleep_for(untilTheNextLine);
    progress.advance(1, 3);
    terminal.goAway();
    std::this_thread::sleep_for(untilTheNextLine);
    EXPECT_NO_THROW(progress.advance(2, 3));
    EXPECT_NO_THROW(progress.clear());
}

}  // namespace
}  // namespace fi::test

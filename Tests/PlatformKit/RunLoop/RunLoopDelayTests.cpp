// SPDX-License-Identifier: Apache-2.0
// Delayed requests: never inline, never early, in the order of their moments.
#include <gtest/gtest.h>

#include <chrono>
#include <limits>

#include "PlatformKit/RunLoop/LoopSupport.h"
#include "PlatformKit/RunLoop/MainThread.h"

namespace fi::test {

namespace {

using Clock = std::chrono::steady_clock;
using Strings = std::vector<std::string>;

class RunLoopDelay : public testing::Test {
protected:
    Ref<Recorder> m_recorder = make<Recorder>();

    void askIn(double seconds, const std::string& text) {
        const auto word = make<Word>(text);
        EXPECT_TRUE(performAfterDelay(m_recorder.get(), Recorder::noting(), word.get(), seconds));
    }
    bool runUntilNotes(size_t count) {
        return runUntil([&] { return m_recorder->notes().size() >= count; });
    }
};

TEST_F(RunLoopDelay, IsNeverEarly) {
    for (const double seconds : {0.001, 0.01, 0.0333, 0.1}) {
        const size_t before = m_recorder->notes().size();
        const auto start = Clock::now();
        askIn(seconds, "a");
        ASSERT_TRUE(runUntilNotes(before + 1));
        EXPECT_GE(std::chrono::duration<double>(Clock::now() - start).count(), seconds);
    }
}

TEST_F(RunLoopDelay, IsNeverPerformedDuringTheCall) {
    for (const double seconds : {0.0, -5.0, std::numeric_limits<double>::quiet_NaN()}) {
        const size_t before = m_recorder->notes().size();
        askIn(seconds, "a");
        EXPECT_EQ(m_recorder->notes().size(), before);
        EXPECT_EQ(pollRunLoop(), 1U);
        EXPECT_EQ(m_recorder->notes().size(), before + 1);
    }
}

TEST_F(RunLoopDelay, IsNotDueBeforeItsMoment) {
    askIn(0.2, "a");
    EXPECT_EQ(pollRunLoop(), 0U);
    EXPECT_TRUE(runUntilNotes(1));
}

TEST_F(RunLoopDelay, FollowsTheMomentsNotTheRequests) {
    askIn(0.15, "third");
    askIn(0.05, "first");
    askIn(0.1, "second");
    ASSERT_TRUE(runUntilNotes(3));
    EXPECT_EQ(m_recorder->notes(), Strings({"first", "second", "third"}));
}

TEST_F(RunLoopDelay, SameDelayKeepsTheOrderOfTheRequests) {
    Strings expected;
    for (int i = 0; i < 50; ++i) {
        expected.push_back(std::to_string(i));
        askIn(0.01, expected.back());
    }
    ASSERT_TRUE(runUntilNotes(50));
    EXPECT_EQ(m_recorder->notes(), expected);
}

TEST_F(RunLoopDelay, HoldsTargetAndArgumentUntilPerformed) {
    const auto word = make<Word>("kept");
    performAfterDelay(m_recorder.get(), Recorder::noting(), word.get(), 0.01);
    EXPECT_EQ(m_recorder->retainCount(), 2U);
    EXPECT_EQ(word->retainCount(), 2U);
    ASSERT_TRUE(runUntilNotes(1));
    EXPECT_EQ(m_recorder->retainCount(), 1U);
    EXPECT_EQ(word->retainCount(), 1U);
}

TEST_F(RunLoopDelay, AskedByAWorkerRunsOnTheMainThread) {
    onWorker([&] { askIn(0.01, "a"); });
    ASSERT_TRUE(runUntilNotes(1));
    EXPECT_TRUE(m_recorder->alwaysOnMain());
}

TEST_F(RunLoopDelay, EarlierRequestShortensAWaitUnderWay) {
    const auto start = Clock::now();
    std::thread worker([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        askIn(0.01, "a");
    });
    EXPECT_TRUE(runUntilNotes(1));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
    worker.join();
}

TEST_F(RunLoopDelay, EndlessDelayIsAccepted) {
    const auto word = make<Word>("never");
    EXPECT_TRUE(performAfterDelay(m_recorder.get(), Recorder::noting(), word.get(),
                                  std::numeric_limits<double>::infinity()));
    EXPECT_EQ(runLoopFor(0.01), 0U);
    EXPECT_EQ(word->retainCount(), 2U);
}

}  // namespace

}  // namespace fi::test

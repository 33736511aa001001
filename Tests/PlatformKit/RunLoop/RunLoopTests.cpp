// SPDX-License-Identifier: Apache-2.0
// Operations handed to the main thread: where, when and in which order they are performed.
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <stdexcept>

#include "PlatformKit/AutoreleasePool.h"
#include "PlatformKit/Base/ImplicitPool.h"
#include "PlatformKit/RunLoop/LoopSupport.h"
#include "PlatformKit/RunLoop/MainThread.h"

namespace fi::test {

namespace {

using Strings = std::vector<std::string>;

class RunLoop : public testing::Test {
protected:
    ~RunLoop() override { EXPECT_EQ(pollRunLoop(), 0U) << "a test left requests behind"; }

    Ref<Recorder> m_recorder = make<Recorder>();

    void askFromWorker(const std::string& text) {
        onWorker([&] {
            const auto word = make<Word>(text);
            EXPECT_TRUE(performOnMainThread(m_recorder.get(), Recorder::noting(), word.get(), false));
        });
    }
};

TEST_F(RunLoop, OnlyTheInitialThreadIsTheMainThread) {
    EXPECT_TRUE(isMainThread());
    bool onWorkerThread = true;
    onWorker([&] { onWorkerThread = isMainThread(); });
    EXPECT_FALSE(onWorkerThread);
}

TEST_F(RunLoop, PerformsInlineOnTheMainThreadWhetherWaitingOrNot) {
    const auto word = make<Word>("a");
    EXPECT_TRUE(performOnMainThread(m_recorder.get(), Recorder::noting(), word.get(), true));
    EXPECT_EQ(m_recorder->notes(), Strings({"a"}));
    EXPECT_TRUE(performOnMainThread(m_recorder.get(), Recorder::noting(), word.get(), false));
    EXPECT_EQ(m_recorder->notes(), Strings({"a", "a"}));
}

TEST_F(RunLoop, PerformsInTheOrderOfTheRequests) {
    Strings expected;
    for (int i = 0; i < 100; ++i) {
        expected.push_back(std::to_string(i));
        askFromWorker(expected.back());
    }
    EXPECT_TRUE(m_recorder->notes().empty());
    EXPECT_EQ(pollRunLoop(), 100U);
    EXPECT_EQ(m_recorder->notes(), expected);
    EXPECT_TRUE(m_recorder->alwaysOnMain());
}

TEST_F(RunLoop, WaitingRequestReturnsOnlyAfterItWasPerformed) {
    size_t seenByWorker = 0;
    {
        const ServedThread worker([&] {
            performOnMainThread(m_recorder.get(), Recorder::noting(), nullptr, true);
            seenByWorker = m_recorder->notes().size();
        });
    }
    EXPECT_EQ(seenByWorker, 1U);
    EXPECT_EQ(m_recorder->notes(), Strings({"(null)"}));
}

TEST_F(RunLoop, WaitingRequestKeepsItsPlaceInTheOrder) {
    askFromWorker("first");
    {
        const ServedThread worker([&] {
            const auto word = make<Word>("second");
            performOnMainThread(m_recorder.get(), Recorder::noting(), word.get(), true);
        });
    }
    EXPECT_EQ(m_recorder->notes(), Strings({"first", "second"}));
}

TEST_F(RunLoop, HoldsTargetAndArgumentUntilPerformed) {
    const auto word = make<Word>("kept");
    onWorker([&] { performOnMainThread(m_recorder.get(), Recorder::noting(), word.get(), false); });
    EXPECT_EQ(m_recorder->retainCount(), 2U);
    EXPECT_EQ(word->retainCount(), 2U);
    EXPECT_EQ(pollRunLoop(), 1U);
    EXPECT_EQ(m_recorder->retainCount(), 1U);
    EXPECT_EQ(word->retainCount(), 1U);
}

TEST_F(RunLoop, WaitingRequestHasGivenItsReferencesBackWhenItReturns) {
    const auto word = make<Word>("kept");
    uint32_t targetCount = 0;
    uint32_t wordCount = 0;
    {
        const ServedThread worker([&] {
            performOnMainThread(m_recorder.get(), Recorder::noting(), word.get(), true);
            targetCount = m_recorder->retainCount();
            wordCount = word->retainCount();
        });
    }
    EXPECT_EQ(targetCount, 1U);
    EXPECT_EQ(wordCount, 1U);
}

TEST_F(RunLoop, NullTargetOrSelectorIsPerformedAsNothing) {
    onWorker([&] {
        EXPECT_TRUE(performOnMainThread(nullptr, Recorder::noting(), nullptr, false));
        EXPECT_TRUE(performOnMainThread(m_recorder.get(), nullptr, nullptr, false));
    });
    EXPECT_EQ(pollRunLoop(), 2U);
    EXPECT_TRUE(m_recorder->notes().empty());
}

TEST_F(RunLoop, RequestsMadeDuringATurnBelongToTheNext) {
    onWorker([&] { performOnMainThread([&] { askFromWorker("later"); }, false); });
    EXPECT_EQ(pollRunLoop(), 1U);
    EXPECT_TRUE(m_recorder->notes().empty());
    EXPECT_EQ(pollRunLoop(), 1U);
    EXPECT_EQ(m_recorder->notes(), Strings({"later"}));
}

TEST_F(RunLoop, RequestMayPollTheLoopAndTakesTheRestOfTheTurn) {
    size_t inner = 0;
    onWorker([&] { performOnMainThread([&] { inner = pollRunLoop(); }, false); });
    askFromWorker("a");
    askFromWorker("b");
    EXPECT_EQ(pollRunLoop(), 1U);
    EXPECT_EQ(inner, 2U);
    EXPECT_EQ(m_recorder->notes(), Strings({"a", "b"}));
}

TEST_F(RunLoop, RequestMayServeAWorkerThatWaitsForTheMainThread) {
    performOnMainThread(
        [&] {
            const ServedThread worker(
                [&] { performOnMainThread(m_recorder.get(), Recorder::noting(), nullptr, true); });
        },
        true);
    EXPECT_EQ(m_recorder->notes().size(), 1U);
}

TEST_F(RunLoop, ExceptionEndsItsRequestOnly) {
    onWorker([&] {
        performOnMainThread(m_recorder.get(), Recorder::failing(), nullptr, false);
        performOnMainThread(m_recorder.get(), Recorder::noting(), nullptr, false);
    });
    EXPECT_EQ(pollRunLoop(), 2U);
    EXPECT_EQ(m_recorder->notes().size(), 2U);
    EXPECT_EQ(m_recorder->retainCount(), 1U);
    EXPECT_NO_THROW(performOnMainThread(m_recorder.get(), Recorder::failing(), nullptr, true));
}

TEST_F(RunLoop, ExceptionReleasesTheWorkerThatWaits) {
    bool returned = false;
    {
        const ServedThread worker([&] {
            EXPECT_TRUE(performOnMainThread(m_recorder.get(), Recorder::failing(), nullptr, true));
            returned = true;
        });
    }
    EXPECT_TRUE(returned);
}

TEST_F(RunLoop, FunctionThatThrowsTellsTheThreadThatWaitsForIt) {
    const auto throwing = [] { throw std::length_error("too long"); };
    EXPECT_THROW(performOnMainThread(throwing, true), std::length_error);
    {
        const ServedThread worker(
            [&] { EXPECT_THROW(performOnMainThread(throwing, true), std::length_error); });
    }
    onWorker([&] { EXPECT_NO_THROW(performOnMainThread(throwing, false)); });
    EXPECT_EQ(pollRunLoop(), 1U);
}

TEST_F(RunLoop, FunctionGivesBackWhatItHoldsBeforeItsWaiterGoesOn) {
    uint32_t count = 0;
    {
        const ServedThread worker([&] {
            performOnMainThread([kept = m_recorder] { kept->note(nullptr); }, true);
            count = m_recorder->retainCount();
        });
    }
    EXPECT_EQ(count, 1U);
}

TEST_F(RunLoop, EachTurnDrainsAPoolOfItsOwn) {
    const AutoreleasePool outer;
    const auto word = make<Word>("autoreleased");
    autorelease(CFRetain(word.get()));
    uint32_t duringTurn = 0;
    onWorker([&] {
        performOnMainThread(
            [&] {
                autorelease(CFRetain(word.get()));
                duringTurn = word->retainCount();
            },
            false);
    });
    EXPECT_EQ(pollRunLoop(), 1U);
    EXPECT_EQ(duringTurn, 3U);
    EXPECT_EQ(word->retainCount(), 2U) << "what waits in the outer pool must stay";
}

TEST_F(RunLoop, OutermostTurnDrainsTheImplicitPool) {
    ASSERT_EQ(autoreleasedObjects(), 0U);
    const auto word = make<Word>("autoreleased");
    autorelease(CFRetain(word.get()));
    EXPECT_EQ(word->retainCount(), 2U);
    pollRunLoop();
    EXPECT_EQ(word->retainCount(), 1U);
}

TEST_F(RunLoop, TurnInsideARequestLeavesTheImplicitPoolAlone) {
    const auto word = make<Word>("autoreleased");
    autorelease(CFRetain(word.get()));
    uint32_t afterInnerTurn = 0;
    onWorker([&] {
        performOnMainThread(
            [&] {
                pollRunLoop();
                afterInnerTurn = word->retainCount();
            },
            false);
    });
    pollRunLoop();
    EXPECT_EQ(afterInnerTurn, 2U);
    EXPECT_EQ(word->retainCount(), 1U);
}

TEST_F(RunLoop, PollingAndRunningElsewhereReturnsAtOnce) {
    askFromWorker("mine");
    const auto start = std::chrono::steady_clock::now();
    onWorker([] {
        EXPECT_EQ(pollRunLoop(), 0U);
        EXPECT_EQ(runLoopFor(60), 0U);
        EXPECT_FALSE(runLoopUntil([](void*) { return true; }, nullptr, 60));
    });
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    EXPECT_TRUE(m_recorder->notes().empty());
    EXPECT_EQ(pollRunLoop(), 1U);
}

TEST_F(RunLoop, RunsForTheTimeItWasToldAndCounts) {
    askFromWorker("a");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(runLoopFor(0.05), 1U);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
}

TEST_F(RunLoop, NoTimeOrNonsenseTimeIsOneTurn) {
    for (const double seconds : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        askFromWorker("a");
        EXPECT_EQ(runLoopFor(seconds), 1U);
        askFromWorker("b");
        EXPECT_FALSE(runLoopUntil([](void*) { return false; }, nullptr, seconds));
        EXPECT_EQ(pollRunLoop(), 0U) << "the turn was not made";
    }
}

TEST_F(RunLoop, RunUntilStopsAsSoonAsTheConditionHolds) {
    askFromWorker("a");
    askFromWorker("b");
    EXPECT_TRUE(runLoopUntil([](void*) { return true; }, nullptr, 10));
    EXPECT_TRUE(m_recorder->notes().empty()) << "the condition held before the first turn";
    EXPECT_TRUE(runUntil([&] { return m_recorder->notes().size() == 2; }));
}

TEST_F(RunLoop, RunUntilGivesUpInTime) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(runLoopUntil([](void*) { return false; }, nullptr, 0.03));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
}

TEST_F(RunLoop, WakingHasTheConditionAskedAgainWithoutCountingAsARequest) {
    std::atomic<bool> done{false};
    std::thread worker([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        done = true;
        wakeRunLoop();
    });
    const auto ask = [](void* context) { return static_cast<std::atomic<bool>*>(context)->load(); };
    EXPECT_TRUE(runLoopUntil(ask, &done, std::numeric_limits<double>::infinity()));
    worker.join();
    wakeRunLoop();
    EXPECT_EQ(pollRunLoop(), 0U);
}

}  // namespace

}  // namespace fi::test

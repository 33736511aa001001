// SPDX-License-Identifier: Apache-2.0
// The descriptor by which an application's own event loop learns that something is due.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <chrono>

#include "PlatformKit/RunLoop/LoopSupport.h"
#include "PlatformKit/RunLoop/MainThread.h"

namespace fi::test {

namespace {

class RunLoopHost : public testing::Test {
protected:
    ~RunLoopHost() override { EXPECT_FALSE(isReadable(0)) << "a test left requests behind"; }

    Ref<Recorder> m_recorder = make<Recorder>();

    void askFromWorker() {
        onWorker([&] { performOnMainThread(m_recorder.get(), Recorder::noting(), nullptr, false); });
    }
    void askIn(double seconds) {
        EXPECT_TRUE(performAfterDelay(m_recorder.get(), Recorder::noting(), nullptr, seconds));
    }
};

TEST_F(RunLoopHost, DescriptorIsOneForTheProcessAndClosesOnExec) {
    const int descriptor = runLoopDescriptor();
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(runLoopDescriptor(), descriptor);
    onWorker([&] { EXPECT_EQ(runLoopDescriptor(), descriptor); });
    EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(RunLoopHost, ReadableFromTheRequestToThePoll) {
    EXPECT_FALSE(isReadable(0));
    askFromWorker();
    EXPECT_TRUE(isReadable(0));
    EXPECT_TRUE(isReadable(0)) << "looking must not change it";
    EXPECT_EQ(pollRunLoop(), 1U);
    EXPECT_FALSE(isReadable(0));
}

TEST_F(RunLoopHost, StaysReadableForARequestMadeDuringTheTurn) {
    onWorker([&] { performOnMainThread([&] { askFromWorker(); }, false); });
    EXPECT_EQ(pollRunLoop(), 1U);
    EXPECT_TRUE(isReadable(0));
    EXPECT_EQ(pollRunLoop(), 1U);
    EXPECT_FALSE(isReadable(0));
}

TEST_F(RunLoopHost, BecomesReadableWhenADelayHasPassed) {
    askIn(0.2);
    EXPECT_FALSE(isReadable(0));
    EXPECT_EQ(pollRunLoop(), 0U);
    EXPECT_TRUE(isReadable(5000));
    EXPECT_EQ(pollRunLoop(), 1U);
    EXPECT_FALSE(isReadable(0));
}

TEST_F(RunLoopHost, FollowsTheEarliestOfSeveralDelays) {
    const auto start = std::chrono::steady_clock::now();
    askIn(86400);
    askIn(0.02);
    EXPECT_TRUE(isReadable(5000));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(pollRunLoop(), 1U);
    EXPECT_FALSE(isReadable(20)) << "the other one is far away";
}

TEST_F(RunLoopHost, WakingMakesItReadable) {
    onWorker([] { wakeRunLoop(); });
    EXPECT_TRUE(isReadable(0));
    EXPECT_EQ(pollRunLoop(), 0U);
}

TEST_F(RunLoopHost, ServesALoopThatWatchesDescriptorsOfItsOwn) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(pipe2(pipe.data(), O_CLOEXEC), 0);
    std::atomic<int> stage{0};
    std::thread worker([&] {
        performOnMainThread([&] { stage = 1; }, true);
        performAfterDelay(m_recorder.get(), Recorder::noting(), nullptr, 0.02);
        performOnMainThread([&] { stage = 2; }, true);
        while (m_recorder->notes().empty())
            std::this_thread::yield();
        EXPECT_EQ(write(pipe[1], "q", 1), 1);
    });
    // As a host does it: wait for everything at once and dispatch what is ready, until told to quit.
    bool quit = false;
    size_t performed = 0;
    while (!quit) {
        std::array<pollfd, 2> watched = {pollfd{runLoopDescriptor(), POLLIN, 0},
                                         pollfd{pipe[0], POLLIN, 0}};
        ASSERT_GT(::poll(watched.data(), watched.size(), 10000), 0);
        if ((watched[0].revents & POLLIN) != 0) performed += pollRunLoop();
        quit = (watched[1].revents & POLLIN) != 0;
    }
    worker.join();
    close(pipe[0]);
    close(pipe[1]);
    EXPECT_EQ(stage, 2);
    EXPECT_EQ(performed, 3U);
}

TEST(RunLoopHostLimitsDeathTest, WithoutDescriptorsTheLoopStillRunsAndALaterCallSucceeds) {
    const auto check = [] {
        rlimit before{};
        getrlimit(RLIMIT_NOFILE, &before);
        rlimit none = before;
        none.rlim_cur = 0;
        setrlimit(RLIMIT_NOFILE, &none);
        bool good = runLoopDescriptor() == -1;
        setrlimit(RLIMIT_NOFILE, &before);
        const auto recorder = make<Recorder>();
        performAfterDelay(recorder.get(), Recorder::noting(), nullptr, 0.01);
        good = good && runUntil([&] { return !recorder->notes().empty(); });
        performAfterDelay(recorder.get(), Recorder::noting(), nullptr, 0);
        good = good && runLoopDescriptor() >= 0 && isReadable(1000) && pollRunLoop() == 1;
        std::exit(good ? 0 : 1);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(0), "");
}

}  // namespace

}  // namespace fi::test

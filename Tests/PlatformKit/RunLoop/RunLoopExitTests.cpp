// SPDX-License-Identifier: Apache-2.0
// An application that never runs the loop: requests wait, nothing spins, and the process ends cleanly.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>

#include "PlatformKit/RunLoop/LoopSupport.h"
#include "PlatformKit/RunLoop/MainThread.h"
#include "PlatformKit/RunLoop/Thread.h"

namespace fi::test {

namespace {

/// A worker that waits for the main thread for ever.
void blockAWorker() {
    const int descriptor = runLoopDescriptor();
    if (descriptor < 0 || !detachThread([] { performOnMainThread([] { std::abort(); }, true); }))
        std::exit(1);
    if (!isReadable(10000)) std::exit(2);
}

double processorSeconds() {
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

TEST(RunLoopExitDeathTest, EndsCleanlyWithABlockedWorkerAndPendingDelays) {
    const auto leave = [] {
        blockAWorker();
        const auto recorder = make<Recorder>();
        performAfterDelay(recorder.get(), Recorder::noting(), nullptr, 3600);
        std::exit(0);
    };
    EXPECT_EXIT(leave(), testing::ExitedWithCode(0), "^$");
}

TEST(RunLoopExitDeathTest, BlockedWorkerUsesNoProcessor) {
    const auto measure = [] {
        blockAWorker();
        const double before = processorSeconds();
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        std::exit(processorSeconds() - before < 0.1 ? 0 : 3);
    };
    EXPECT_EXIT(measure(), testing::ExitedWithCode(0), "^$");
}

TEST(RunLoopExitDeathTest, LoopStillWorksWhileTheProcessEnds) {
    const auto leave = [] {
        std::atexit([] {
            onWorker([] { performOnMainThread([] {}, false); });
            if (pollRunLoop() != 1) _exit(4);
        });
        std::exit(0);
    };
    EXPECT_EXIT(leave(), testing::ExitedWithCode(0), "^$");
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Many threads that need the main thread at the same time.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "PlatformKit/RunLoop/LoopSupport.h"
#include "PlatformKit/RunLoop/MainThread.h"

namespace fi::test {

namespace {

constexpr int kWorkers = 8;
constexpr int kRequests = 200;

/// Runs `work(worker)` on several threads and serves the main loop until all have ended.
template <typename Work>
void onWorkers(const Work& work) {
    std::atomic<int> ended{0};
    std::vector<std::thread> threads;
    threads.reserve(kWorkers);
    for (int worker = 0; worker < kWorkers; ++worker) {
        threads.emplace_back([&, worker] {
            work(worker);
            ++ended;
            wakeRunLoop();
        });
    }
    EXPECT_TRUE(runUntil([&] { return ended == kWorkers; }));
    for (auto& thread : threads)
        thread.join();
    pollRunLoop();
}

TEST(RunLoopThreads, EveryThreadKeepsItsOwnOrder) {
    std::map<int, std::vector<int>> seen;  // touched by the main thread only
    onWorkers([&](int worker) {
        for (int i = 0; i < kRequests; ++i)
            performOnMainThread([&seen, worker, i] { seen[worker].push_back(i); }, i % 16 == 0);
        performOnMainThread([] {}, true);
    });
    ASSERT_EQ(seen.size(), static_cast<size_t>(kWorkers));
    for (const auto& [worker, order] : seen) {
        EXPECT_EQ(order.size(), static_cast<size_t>(kRequests)) << worker;
        EXPECT_TRUE(std::is_sorted(order.begin(), order.end())) << worker;
    }
}

TEST(RunLoopThreads, WaitingMakesTheMainThreadsWorkVisible) {
    int plain = 0;  // no lock: the hop itself orders the accesses
    std::vector<int> seen(kWorkers);
    onWorkers([&](int worker) {
        for (int i = 0; i < kRequests; ++i) {
            int mine = 0;
            performOnMainThread([&] { mine = ++plain; }, true);
            EXPECT_GT(mine, seen[static_cast<size_t>(worker)]);
            seen[static_cast<size_t>(worker)] = mine;
        }
    });
    EXPECT_EQ(plain, kWorkers * kRequests);
}

TEST(RunLoopThreads, DelaysOfManyThreadsAreAllPerformedAndReleased) {
    const auto recorder = make<Recorder>();
    onWorkers([&](int worker) {
        for (int i = 0; i < kRequests; ++i)
            performAfterDelay(recorder.get(), Recorder::noting(), nullptr, 0.0001 * ((worker + i) % 7));
    });
    EXPECT_TRUE(
        runUntil([&] { return recorder->notes().size() == static_cast<size_t>(kWorkers) * kRequests; }));
    EXPECT_EQ(recorder->retainCount(), 1U);
    EXPECT_TRUE(recorder->alwaysOnMain());
}

TEST(RunLoopThreads, HostLoopServesAllWorkers) {
    std::atomic<int> ended{0};
    std::atomic<int> performed{0};
    std::vector<std::thread> threads;
    threads.reserve(kWorkers);
    for (int worker = 0; worker < kWorkers; ++worker) {
        threads.emplace_back([&] {
            for (int i = 0; i < kRequests; ++i)
                performOnMainThread([&] { ++performed; }, true);
            ++ended;
            wakeRunLoop();
        });
    }
    while (ended < kWorkers) {
        if (!isReadable(10000)) break;
        pollRunLoop();
    }
    for (auto& thread : threads)
        thread.join();
    pollRunLoop();
    EXPECT_EQ(performed, kWorkers * kRequests);
    EXPECT_FALSE(isReadable(0));
}

}  // namespace

}  // namespace fi::test

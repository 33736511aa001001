// SPDX-License-Identifier: Apache-2.0
// Threads of the library's own: detached, with a pool, and patient.
#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <future>
#include <limits>

#include "PlatformKit/AutoreleasePool.h"
#include "PlatformKit/RunLoop/LoopSupport.h"
#include "PlatformKit/RunLoop/Thread.h"

namespace fi::test {

namespace {

using Clock = std::chrono::steady_clock;

size_t threadsOfProcess() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<size_t>(std::distance(begin(tasks), end(tasks)));
}

/// False when the condition does not come true within ten seconds.
template <typename Condition>
bool waitUntil(const Condition& condition) {
    const auto end = Clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (Clock::now() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

TEST(Thread, DetachedWorkRunsElsewhereUnderItsName) {
    std::promise<std::string> name;
    ASSERT_TRUE(detachThread([&] {
        std::array<char, 16> text{};
        pthread_getname_np(pthread_self(), text.data(), text.size());
        name.set_value(isMainThread() ? "the main thread" : text.data());
    }));
    EXPECT_EQ(name.get_future().get(), "FileImporter");
}

TEST(Thread, DetachedWorkHasAPoolThatDrainsAtItsEnd) {
    const auto word = make<Word>("autoreleased");
    std::atomic<uint32_t> during{0};
    ASSERT_TRUE(detachThread([&during, raw = word.get()] {
        autorelease(CFRetain(raw));
        during = raw->retainCount();
    }));
    EXPECT_TRUE(waitUntil([&] { return during == 2 && word->retainCount() == 1; }));
}

TEST(Thread, ExceptionEndsTheThreadOnly) {
    const auto word = make<Word>("held");
    std::atomic<bool> started{false};
    ASSERT_TRUE(detachThread([&started, held = word] {
        started = true;
        throw 1;
    }));
    EXPECT_TRUE(waitUntil([&] { return started && word->retainCount() == 1; }));
}

TEST(Thread, MayEndItselfInTheMiddle) {
    const auto word = make<Word>("held");
    std::atomic<bool> started{false};
    ASSERT_TRUE(detachThread([&started, held = word] {
        started = true;
        pthread_exit(nullptr);
    }));
    EXPECT_TRUE(waitUntil([&] { return started && word->retainCount() == 1; }));
}

TEST(ThreadDeathTest, NoneExistsBeforeTheFirstUse) {
    const auto count = [] {
        pollRunLoop();
        const bool alone = threadsOfProcess() == 1;
        std::promise<void> go;
        std::promise<void> ended;
        if (!detachThread([&] {
                go.get_future().wait();
                ended.set_value();
            })) {
            std::exit(2);
        }
        const bool two = threadsOfProcess() == 2;
        go.set_value();
        ended.get_future().wait();
        std::exit(alone && two ? 0 : 1);
    };
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "ThreadSanitizer keeps a thread of its own";
#endif
    EXPECT_EXIT(count(), testing::ExitedWithCode(0), "^$");
}

TEST(Thread, YieldingEscalatesToShortSleeps) {
    const auto start = Clock::now();
    yieldToAnyThread(100);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(2));
    const auto afterSleep = Clock::now();
    yieldToAnyThread(16);
    EXPECT_GE(Clock::now() - afterSleep, std::chrono::microseconds(50));
    yieldToAnyThread(std::numeric_limits<unsigned>::max());
}

TEST(Thread, YieldingWaitsForAnotherThreadInReasonableTime) {
    std::atomic<bool> ready{false};
    std::thread worker([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ready = true;
    });
    unsigned attempts = 0;
    while (!ready)
        yieldToAnyThread(attempts++);
    worker.join();
    EXPECT_LT(attempts, 5000U);
}

}  // namespace

}  // namespace fi::test

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
    const auto end = Clock::now() + std::chrono::seconds(10);
    while ((during == 0 || word->retainCount() != 1) && Clock::now() < end)
        std::this_thread::yield();
    EXPECT_EQ(during, 2U);
    EXPECT_EQ(word->retainCount(), 1U);
}

TEST(Thread, ExceptionEndsTheThreadOnly) {
    std::promise<void> thrown;
    ASSERT_TRUE(detachThread([&] {
        thrown.set_value_at_thread_exit();
        throw 1;
    }));
    EXPECT_EQ(thrown.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
}

TEST(Thread, MayEndItselfInTheMiddle) {
    const auto word = make<Word>("held");
    std::promise<void> ended;
    ASSERT_TRUE(detachThread([&ended, held = word] {
        ended.set_value_at_thread_exit();
        pthread_exit(nullptr);
    }));
    EXPECT_EQ(ended.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(word->retainCount(), 1U) << "the thread still holds what its work held";
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

// SPDX-License-Identifier: Apache-2.0
// Detached threads and polite waiting.
#include "PlatformKit/RunLoop/Thread.h"

#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "PlatformKit/AutoreleasePool.h"
#include "PlatformKit/RunLoop/FailureOf.h"

namespace fi {

namespace {

constexpr unsigned kYields = 16;
constexpr std::chrono::microseconds kFirstSleep{50};
constexpr std::chrono::microseconds kLongestSleep{2000};
constexpr unsigned kMostDoublings = 6;  // 50 µs · 2⁶ is beyond the longest sleep

}  // namespace

bool detachThread(std::function<void()> work) {
    try {
        std::thread([work = std::move(work)] {
            pthread_setname_np(pthread_self(), "FileImporter");
            const AutoreleasePool pool;
            (void)failureOf(work);
        }).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void yieldToAnyThread(unsigned attempt) {
    if (attempt < kYields) {
        sched_yield();
        return;
    }
    const unsigned doublings = std::min(attempt - kYields, kMostDoublings);
    std::this_thread::sleep_for(std::min(kFirstSleep * (1U << doublings), kLongestSleep));
}

}  // namespace fi

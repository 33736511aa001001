// SPDX-License-Identifier: Apache-2.0
// The public face of the main loop.
#include "PlatformKit/RunLoop.h"

#include <algorithm>
#include <chrono>
#include <new>

#include "PlatformKit/AutoreleasePool.h"
#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Base/ImplicitPool.h"
#include "PlatformKit/Ref.h"
#include "PlatformKit/RunLoop/FailureOf.h"
#include "PlatformKit/RunLoop/MainQueue.h"
#include "PlatformKit/RunLoop/MainThread.h"

namespace fi {

namespace {

using Clock = MainQueue::Clock;

constexpr double kLongest = 1e9;  // seconds; thirty years, far from the end of the clock

/// Rounded up, so that nothing comes too early.
Clock::time_point momentIn(double seconds) {
    const double wanted = seconds > 0 ? std::min(seconds, kLongest) : 0;  // 0 for not-a-number, too
    return Clock::now() + std::chrono::ceil<Clock::duration>(std::chrono::duration<double>(wanted));
}

/// The work that performs a selector and holds its two objects until then.
MainQueue::Work performing(NSObject* target, SEL selector, NSObject* argument) {
    return [target = retain(target), selector, argument = retain(argument)] {
        (void)failureOf([&] { performSelector(target.get(), selector, argument.get()); });
    };
}

size_t runTurn() {
    size_t performed = 0;
    {
        const AutoreleasePool pool;
        MainQueue& queue = MainQueue::shared();
        const uint64_t mark = queue.beginTurn();
        while (const auto work = queue.next(mark)) {
            if (!*work) continue;
            (void)failureOf(*work);
            ++performed;
        }
    }
    drainImplicitPool();
    return performed;
}

}  // namespace

bool performOnMainThread(NSObject* target, SEL selector, NSObject* argument, bool wait) {
    try {
        performOnMainThread(performing(target, selector, argument), wait);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool performAfterDelay(NSObject* target, SEL selector, NSObject* argument, double seconds) {
    return guarded(
        [&] {
            MainQueue::shared().appendAt(momentIn(seconds), performing(target, selector, argument));
            return true;
        },
        false);
}

int runLoopDescriptor() noexcept {
    return guarded([] { return MainQueue::shared().descriptor(); }, -1);
}

size_t pollRunLoop() {
    return isMainThread() ? runTurn() : 0;
}

size_t runLoopFor(double seconds) {
    if (!isMainThread()) return 0;
    const Clock::time_point end = momentIn(seconds);
    size_t performed = runTurn();
    while (Clock::now() < end) {
        MainQueue::shared().waitUntil(end);
        performed += runTurn();
    }
    return performed;
}

bool runLoopUntil(bool (*done)(void* context), void* context, double seconds) {
    if (!isMainThread()) return false;
    const Clock::time_point end = momentIn(seconds);
    bool isDone = done(context);
    for (bool last = false; !isDone && !last;) {
        last = Clock::now() >= end;
        MainQueue::shared().waitUntil(end);
        runTurn();
        isDone = done(context);
    }
    return isDone;
}

void wakeRunLoop() noexcept {
    guarded([] { MainQueue::shared().append({}); });
}

}  // namespace fi

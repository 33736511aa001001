// SPDX-License-Identifier: Apache-2.0
// The main thread's loop: operations handed to it, and how an application lets it run.
#pragma once

#include <cstddef>

#include "PlatformKit/Selector.h"

namespace fi {

// The main thread is the initial thread of the process. The library starts no loop of its own: requests
// of other threads wait until the main thread polls or runs the loop. In an application that never does,
// they wait for ever, without using the processor and without keeping the process from ending.
//
// Requests are performed in the order in which they came. Each turn of the loop performs the requests
// that were due when it began, inside an autorelease pool of its own; requests may poll or run the loop
// themselves. An exception that leaves an operation ends that operation only.

[[nodiscard]] FI_EXPORT bool isMainThread() noexcept;

/// Performs a selector on the main thread: at once when called there, otherwise from its loop; then
/// `wait` blocks the caller until it has been performed. Target and argument (either may be null) are
/// retained meanwhile. False without memory: it is not performed. Any thread; call it without holding a
/// lock that the main thread may want.
FI_EXPORT bool performOnMainThread(NSObject* target, SEL selector, NSObject* argument, bool wait);

/// Performs a selector from the main loop, `seconds` from now or later, never during the call. Requests
/// for the same moment are performed in the order in which they were made. Target and argument are
/// retained meanwhile. False without memory. Any thread.
FI_EXPORT bool performAfterDelay(NSObject* target, SEL selector, NSObject* argument, double seconds);

/// A descriptor that is readable while a request is due, to be watched by the application's own event
/// loop (GLib, Qt, SDL, poll), which then calls pollRunLoop. One for the process: do not read, write or
/// close it. -1 when the process has no descriptors left. Any thread.
[[nodiscard]] FI_EXPORT int runLoopDescriptor() noexcept;

/// Performs the requests that are due and returns how many. Never waits. Main thread; elsewhere it does
/// nothing and returns 0.
FI_EXPORT size_t pollRunLoop();

/// Performs requests as they become due, for `seconds` (at least one turn), and returns how many. Main
/// thread; elsewhere it returns 0 at once.
FI_EXPORT size_t runLoopFor(double seconds);

/// Performs requests until `done(context)` is true or `seconds` have passed (infinity: no limit), and
/// returns what `done` said last. It is asked before every turn; wakeRunLoop has it asked again. Main
/// thread; elsewhere it returns false at once.
FI_EXPORT bool runLoopUntil(bool (*done)(void* context), void* context, double seconds);

/// Gives a waiting loop one more turn. Any thread.
FI_EXPORT void wakeRunLoop() noexcept;

}  // namespace fi

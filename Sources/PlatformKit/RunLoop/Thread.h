// SPDX-License-Identifier: Apache-2.0
// Threads of the library's own. None exists before the first use.
#pragma once

#include <functional>

namespace fi {

/// Runs `work` on a new thread that nobody joins, inside an autorelease pool. An exception that leaves
/// `work` ends the thread only. False when the system gives no thread; `work` is not run then.
[[nodiscard]] bool detachThread(std::function<void()> work);

/// Lets other threads run while the caller waits for a short-lived condition: gives up the processor at
/// the first attempts, then sleeps, longer with each attempt up to 2 ms.
void yieldToAnyThread(unsigned attempt);

}  // namespace fi

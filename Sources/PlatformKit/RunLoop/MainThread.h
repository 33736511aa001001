// SPDX-License-Identifier: Apache-2.0
// How the library's own code gets to the main thread.
#pragma once

#include <functional>

#include "PlatformKit/RunLoop.h"

namespace fi {

/// Runs `work` on the main thread: at once when called there, otherwise from the main loop; then `wait`
/// blocks until it is done and throws what it threw. What `work` holds is given back before the caller
/// goes on. Call it without holding any lock.
void performOnMainThread(std::function<void()> work, bool wait);

}  // namespace fi

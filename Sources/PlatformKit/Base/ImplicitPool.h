// SPDX-License-Identifier: Apache-2.0
// What the run loop and the tests need to know of a thread's waiting objects.
#pragma once

#include <cstddef>

namespace fi {

/// Releases what waits in the calling thread's implicit pool; nothing while a pool of its own is open.
void drainImplicitPool();

/// Objects that wait on the calling thread, in all of its pools.
[[nodiscard]] size_t autoreleasedObjects();

/// Makes room for one more waiting object on the calling thread, so that the next autorelease cannot fail.
/// Throws std::bad_alloc.
void reserveAutorelease();

}  // namespace fi

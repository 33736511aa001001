// SPDX-License-Identifier: Apache-2.0
// Scopes that give references back later, so that a function can hand out an object nobody owns yet.
#pragma once

#include <cstddef>

#include "PlatformKit/Object.h"

namespace fi {

/// Gives one reference to the innermost pool of the calling thread, which releases it when it drains.
/// A thread without a pool of its own has an implicit one: it drains at each turn of the run loop that
/// is not inside another pool, and when the thread ends. Null is allowed.
FI_EXPORT void autoreleaseObject(const NSObject* object);

template <typename T>
T* autorelease(T* object) {
    autoreleaseObject(object);
    return object;
}

/// A pool for the length of a C++ scope. Pools of a thread nest; draining releases the youngest first.
/// Must end on the thread that began it.
class FI_EXPORT AutoreleasePool {
public:
    AutoreleasePool();
    ~AutoreleasePool();
    AutoreleasePool(const AutoreleasePool&) = delete;
    AutoreleasePool& operator=(const AutoreleasePool&) = delete;

private:
    size_t m_start;
};

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/AutoreleasePool.h"

#include <vector>

#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Base/ImplicitPool.h"

namespace fi {

namespace {

/// The objects that wait on one thread, oldest first; each pool remembers where it began.
struct Waiting {
    std::vector<const NSObject*> objects;
    size_t openPools = 0;

    ~Waiting() { drainTo(0); }

    void drainTo(size_t start) {
        // Releasing may autorelease more; those are younger and go first.
        while (objects.size() > start) {
            const NSObject* object = objects.back();
            objects.pop_back();
            object->release();
        }
    }
};

// After a thread's Waiting is gone (late destructors), objects have nowhere to wait: they are kept, which
// is a leak at thread end rather than a dangling pointer.
thread_local bool t_gone = false;

Waiting* waiting() {
    struct Holder : Waiting {
        ~Holder() {
            drainTo(0);
            t_gone = true;
        }
    };
    if (t_gone) return nullptr;
    thread_local Holder holder;
    return &holder;
}

}  // namespace

void autoreleaseObject(const NSObject* object) {
    if (object == nullptr) return;
    // Without memory for the list the object stays for ever, as after the thread's end.
    if (Waiting* list = waiting()) guarded([&] { list->objects.push_back(object); });
}

void reserveAutorelease() {
    Waiting* list = waiting();
    if (list == nullptr || list->objects.size() < list->objects.capacity()) return;
    list->objects.reserve(list->objects.capacity() * 2 + 16);
}

AutoreleasePool::AutoreleasePool() : m_start(0) {
    if (Waiting* list = waiting()) {
        m_start = list->objects.size();
        ++list->openPools;
    }
}

AutoreleasePool::~AutoreleasePool() {
    if (Waiting* list = waiting()) {
        list->drainTo(m_start);
        --list->openPools;
    }
}

void drainImplicitPool() {
    Waiting* list = waiting();
    if (list != nullptr && list->openPools == 0) list->drainTo(0);
}

size_t autoreleasedObjects() {
    const Waiting* list = waiting();
    return list == nullptr ? 0 : list->objects.size();
}

}  // namespace fi

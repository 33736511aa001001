// SPDX-License-Identifier: Apache-2.0
// The counted base of every object that crosses the library's interface.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "PlatformKit/Export.h"

namespace fi {

/// An object with an intrusive reference count. A new object belongs to whoever made it (count 1);
/// the last release destroys it. Making an object, or adding to a list, throws std::bad_alloc without
/// memory, as `new` does; every other operation of the library answers that with its own failure. Counts
/// are atomic, so immutable objects may be shared by threads.
class FI_EXPORT NSObject {
public:
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;

    void retain() const noexcept {
        if (!isImmortal()) m_count.fetch_add(1, std::memory_order_relaxed);
    }
    void release() const noexcept {
        if (!isImmortal() && m_count.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }
    /// References now held; for tests. Constant objects answer a number of at least 2^31.
    [[nodiscard]] uint32_t retainCount() const noexcept { return m_count.load(std::memory_order_relaxed); }

    /// Value equality; identity unless a class says otherwise. A null `other` is never equal.
    [[nodiscard]] virtual bool isEqual(const NSObject* other) const;
    /// Equal objects have equal hashes.
    [[nodiscard]] virtual size_t hash() const;

protected:
    /// Marks an object in static storage, which counting must never destroy.
    enum class Immortal : uint8_t { Yes };

    constexpr NSObject() noexcept = default;
    constexpr explicit NSObject(Immortal) noexcept : m_count(kImmortal) {}
    virtual ~NSObject();

private:
    static constexpr uint32_t kImmortal = 0x8000'0000U;
    [[nodiscard]] bool isImmortal() const noexcept {
        return m_count.load(std::memory_order_relaxed) >= kImmortal;
    }

    mutable std::atomic<uint32_t> m_count{1};
};

/// Any object.
using id = NSObject*;
using CFTypeRef = const NSObject*;

/// Adds a reference. Null is allowed and answered with null.
template <typename T>
T* CFRetain(T* object) {
    if (object != nullptr) object->retain();
    return object;
}

/// Gives a reference back. Null is allowed.
inline void CFRelease(const NSObject* object) {
    if (object != nullptr) object->release();
}

/// Value equality of two references; two nulls are equal.
[[nodiscard]] inline bool CFEqual(const NSObject* a, const NSObject* b) {
    return a == b || (a != nullptr && b != nullptr && a->isEqual(b));
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// The handle that owns one reference. There is no conversion from a raw pointer: it is adopted (the
// reference is already ours) or retained (a new one is taken), and the code says which.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include "PlatformKit/AutoreleasePool.h"
#include "PlatformKit/Object.h"

namespace fi {

template <typename T>
class [[nodiscard]] Ref {
public:
    constexpr Ref() noexcept = default;
    constexpr Ref(std::nullptr_t) noexcept {}
    Ref(const Ref& other) noexcept : m_object(CFRetain(other.m_object)) {}
    Ref(Ref&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    template <typename U>
    requires std::is_convertible_v<U*, T*> Ref(Ref<U> other)
    noexcept : m_object(other.handOver()) {}
    ~Ref() { CFRelease(m_object); }

    Ref& operator=(Ref other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }

    /// Takes over the reference that the caller holds.
    static Ref adopting(T* object) noexcept {
        Ref result;
        result.m_object = object;
        return result;
    }

    [[nodiscard]] T* get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

    /// OWNED by the caller from now on; this handle is empty afterwards.
    [[nodiscard]] T* handOver() noexcept { return std::exchange(m_object, nullptr); }
    /// AUTORELEASED: valid until the innermost pool of this thread drains.
    [[nodiscard]] T* autoreleased() && noexcept { return autorelease(handOver()); }

    friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.m_object == b.m_object; }

private:
    T* m_object = nullptr;
};

/// A handle on the reference that the caller holds and gives away.
template <typename T>
Ref<T> adopt(T* object) noexcept {
    return Ref<T>::adopting(object);
}

/// A handle with a reference of its own.
template <typename T>
Ref<T> retain(T* object) noexcept {
    return Ref<T>::adopting(CFRetain(object));
}

/// A new object in a handle.
template <typename T, typename... Arguments>
Ref<T> make(Arguments&&... arguments) {
    return Ref<T>::adopting(new T(std::forward<Arguments>(arguments)...));
}

}  // namespace fi

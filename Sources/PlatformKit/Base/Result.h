// SPDX-License-Identifier: Apache-2.0
// A value or the reason why there is none.
#pragma once

#include <cassert>
#include <utility>
#include <variant>

namespace fi {

/// Wraps a reason, so that a value and a reason of the same type can be told apart.
template <typename E>
struct Failure {
    E reason;
};
template <typename E>
Failure(E) -> Failure<E>;

template <typename T, typename E>
class [[nodiscard]] Result {
public:
    Result(T value) : m_state(std::in_place_index<0>, std::move(value)) {}
    Result(Failure<E> failure) : m_state(std::in_place_index<1>, std::move(failure.reason)) {}

    [[nodiscard]] bool ok() const { return m_state.index() == 0; }
    explicit operator bool() const { return ok(); }

    [[nodiscard]] T& value() {
        assert(ok());
        return *std::get_if<0>(&m_state);
    }
    [[nodiscard]] const T& value() const {
        assert(ok());
        return *std::get_if<0>(&m_state);
    }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }
    T& operator*() { return value(); }
    const T& operator*() const { return value(); }

    [[nodiscard]] const E& reason() const {
        assert(!ok());
        return *std::get_if<1>(&m_state);
    }
    /// The reason in the shape that any other Result with the same kind of reason takes.
    [[nodiscard]] Failure<E> failure() const { return Failure<E>{reason()}; }

private:
    std::variant<T, E> m_state;
};

}  // namespace fi

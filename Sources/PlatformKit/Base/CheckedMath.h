// SPDX-License-Identifier: Apache-2.0
// Arithmetic on sizes that come from files: a result that does not fit is told, never wrapped.
#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>

namespace fi {

template <std::unsigned_integral T>
[[nodiscard]] constexpr std::optional<T> checkedAdd(T a, T b) {
    if (a > std::numeric_limits<T>::max() - b) return std::nullopt;
    return static_cast<T>(a + b);
}

template <std::unsigned_integral T>
[[nodiscard]] constexpr std::optional<T> checkedMultiply(T a, T b) {
    if (b != 0 && a > std::numeric_limits<T>::max() / b) return std::nullopt;
    return static_cast<T>(a * b);
}

/// `value` rounded up to a multiple of `unit` (a power of two).
[[nodiscard]] constexpr std::optional<uint64_t> checkedRoundUp(uint64_t value, uint64_t unit) {
    const auto sum = checkedAdd<uint64_t>(value, unit - 1);
    if (!sum) return std::nullopt;
    return *sum & ~(unit - 1);
}

/// Truncates toward zero, then keeps the low 64 bits' worth: not-a-number gives 0, values beyond the
/// range of int64_t are cut to it. (A plain cast of those is undefined.)
[[nodiscard]] constexpr int64_t truncateToInt64(double value) {
    if (!(value == value)) return 0;
    if (value >= 9223372036854775807.0) return std::numeric_limits<int64_t>::max();
    if (value <= -9223372036854775808.0) return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(value);
}

/// Truncation toward zero and reduction modulo 2^16, as a signed 16-bit number.
[[nodiscard]] constexpr int16_t truncateToInt16(double value) {
    return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint64_t>(truncateToInt64(value))));
}

}  // namespace fi

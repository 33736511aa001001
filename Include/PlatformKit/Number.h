// SPDX-License-Identifier: Apache-2.0
// A number as an object: an integer, a floating-point number or a truth value.
#pragma once

#include <cstdint>

#include "PlatformKit/Ref.h"

namespace fi {

class FI_EXPORT CFNumber final : public NSObject {
public:
    enum class Kind : uint8_t { Integer, Real, Boolean };

    /// OWNED.
    static Ref<const CFNumber> create(int64_t value);
    static Ref<const CFNumber> create(double value);
    static Ref<const CFNumber> createBoolean(bool value);

    [[nodiscard]] Kind kind() const noexcept { return m_kind; }

    /// The value in another type. A real number is truncated toward zero; an integer that does not fit
    /// keeps its low bits; any number but zero is true.
    [[nodiscard]] int64_t int64Value() const noexcept;
    [[nodiscard]] int32_t int32Value() const noexcept { return static_cast<int32_t>(int64Value()); }
    [[nodiscard]] uint32_t uint32Value() const noexcept { return static_cast<uint32_t>(int64Value()); }
    [[nodiscard]] int16_t int16Value() const noexcept { return static_cast<int16_t>(int64Value()); }
    [[nodiscard]] uint16_t uint16Value() const noexcept { return static_cast<uint16_t>(int64Value()); }
    [[nodiscard]] double doubleValue() const noexcept;
    [[nodiscard]] bool boolValue() const noexcept;

    /// Numeric equality, whatever the kinds.
    [[nodiscard]] bool isEqual(const NSObject* other) const override;
    [[nodiscard]] size_t hash() const override;

private:
    CFNumber(Kind kind, int64_t integer, double real) noexcept
        : m_kind(kind), m_integer(integer), m_real(real) {}
    ~CFNumber() override = default;
    template <typename T, typename... Arguments>
    friend Ref<T> make(Arguments&&... arguments);

    Kind m_kind;
    int64_t m_integer;
    double m_real;
};

using CFNumberRef = const CFNumber*;
using NSNumber = CFNumber;

}  // namespace fi

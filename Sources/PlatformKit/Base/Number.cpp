// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Number.h"

#include <functional>

#include "PlatformKit/Base/CheckedMath.h"

namespace fi {

namespace {

/// Exact: not every integer has a floating-point number of its value.
bool sameValue(int64_t integer, double real) {
    constexpr double kBeyond = 9223372036854775808.0;  // 2^63
    return real >= -kBeyond && real < kBeyond && static_cast<double>(integer) == real &&
           static_cast<int64_t>(real) == integer;
}

}  // namespace

Ref<const CFNumber> CFNumber::create(int64_t value) {
    return adopt(new CFNumber(Kind::Integer, value, 0));
}

Ref<const CFNumber> CFNumber::create(double value) {
    return adopt(new CFNumber(Kind::Real, 0, value));
}

Ref<const CFNumber> CFNumber::createBoolean(bool value) {
    return adopt(new CFNumber(Kind::Boolean, value ? 1 : 0, 0));
}

int64_t CFNumber::int64Value() const noexcept {
    return m_kind == Kind::Real ? truncateToInt64(m_real) : m_integer;
}

double CFNumber::doubleValue() const noexcept {
    return m_kind == Kind::Real ? m_real : static_cast<double>(m_integer);
}

bool CFNumber::boolValue() const noexcept {
    return m_kind == Kind::Real ? m_real != 0.0 : m_integer != 0;
}

bool CFNumber::isEqual(const NSObject* other) const {
    const auto* number = dynamic_cast<const CFNumber*>(other);
    if (number == nullptr) return false;
    if (m_kind == Kind::Real && number->m_kind == Kind::Real) return m_real == number->m_real;
    if (m_kind == Kind::Real) return sameValue(number->m_integer, m_real);
    if (number->m_kind == Kind::Real) return sameValue(m_integer, number->m_real);
    return m_integer == number->m_integer;
}

size_t CFNumber::hash() const {
    return std::hash<double>{}(doubleValue());
}

}  // namespace fi

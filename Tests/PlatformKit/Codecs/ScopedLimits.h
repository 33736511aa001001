// SPDX-License-Identifier: Apache-2.0
// Other limits for the length of a test.
#pragma once

#include "PlatformKit/Limits.h"

namespace fi::test {

class ScopedLimits {
public:
    template <typename Change>
    explicit ScopedLimits(Change change) : m_before(decodeLimits()) {
        change(decodeLimits());
    }
    ~ScopedLimits() { decodeLimits() = m_before; }
    ScopedLimits(const ScopedLimits&) = delete;
    ScopedLimits& operator=(const ScopedLimits&) = delete;

private:
    DecodeLimits m_before;
};

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// A default time zone for the length of a scope, given as a rule so that no zone files are needed.
#pragma once

#include <time.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace fi::test {

/// Clocks go forward on the last Sunday of March at 02:00 and back on the last Sunday of October at 03:00.
inline constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

class ScopedTimeZone {
public:
    explicit ScopedTimeZone(const char* rule) {
        if (const char* before = std::getenv("TZ")) m_before = before;
        setenv("TZ", rule, 1);
        tzset();
    }
    ~ScopedTimeZone() {
        if (m_before) {
            setenv("TZ", m_before->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }
    ScopedTimeZone(const ScopedTimeZone&) = delete;
    ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

private:
    std::optional<std::string> m_before;
};

}  // namespace fi::test

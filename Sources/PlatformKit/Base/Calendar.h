// SPDX-License-Identifier: Apache-2.0
// Local dates: seconds since 1970 split into their parts, and whether a date exists.
#pragma once

#include <cstdint>

#include "PlatformKit/DateTime.h"

namespace fi {

/// How the seven days of a week are counted; each operation of the interface fixes its own.
enum class WeekDays : uint8_t {
    FromZero,  ///< 0 is Sunday, 6 is Saturday
    FromOne,   ///< 1 is Sunday, 7 is Saturday
};

/// The local date of a moment in the default time zone, fractions of a second dropped. A moment that the
/// zone's calendar cannot tell gives an all-zero record. Any thread.
[[nodiscard]] DateTimeRec localDate(int64_t secondsSince1970, WeekDays days);

/// True when the six parts name a moment of the default time zone: 30 February does not exist, nor does
/// a time that the clock skips in spring.
[[nodiscard]] bool localDateExists(const DateTimeRec& date);

}  // namespace fi

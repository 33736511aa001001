// SPDX-License-Identifier: Apache-2.0
// Dates as texts of the form "2018:09:03 14:05:59". The separators are never looked at.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "PlatformKit/DateTime.h"

namespace fi {

/// The value of one field (0 year to 5 second) of a date text; nothing when the text is too short for it,
/// it holds anything but ASCII digits, or it is out of range. Positions count UTF-16 units.
[[nodiscard]] std::optional<int16_t> dateField(std::string_view text, int32_t field);

/// The date of an ASCII text whose six fields name a local time that exists; day of week 0.
[[nodiscard]] std::optional<DateTimeRec> dateOfText(std::string_view text);

}  // namespace fi

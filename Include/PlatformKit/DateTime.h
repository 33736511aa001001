// SPDX-License-Identifier: Apache-2.0
// Small records of the platform: a date split into its parts, and a rectangle of 16-bit sides.
#pragma once

#include <cstdint>
#include <type_traits>

namespace fi {

/// A local date. All zero means no date. `dayOfWeek` counts as each operation says.
struct DateTimeRec {
    int16_t year;
    int16_t month;
    int16_t day;
    int16_t hour;
    int16_t minute;
    int16_t second;
    int16_t dayOfWeek;

    friend bool operator==(const DateTimeRec&, const DateTimeRec&) = default;
};
static_assert(sizeof(DateTimeRec) == 14 && std::is_trivial_v<DateTimeRec>);

/// Pixels from the top left: width is `right - left`, height is `bottom - top`.
struct Rect {
    int16_t top;
    int16_t left;
    int16_t bottom;
    int16_t right;

    friend bool operator==(const Rect&, const Rect&) = default;
};
static_assert(sizeof(Rect) == 8 && std::is_trivial_v<Rect>);

}  // namespace fi

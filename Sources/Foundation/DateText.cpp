// SPDX-License-Identifier: Apache-2.0
#include "Foundation/DateText.h"

#include <iterator>
#include <string>

#include "PlatformKit/Base/Calendar.h"
#include "PlatformKit/Text/Unicode.h"

namespace fi {

namespace {

struct Field {
    size_t shortest;  ///< length that the text must have
    size_t start;
    size_t digits;
    int lowest;
    int highest;
};

// One character beyond the field is enough, but for the second, which needs the full length.
constexpr Field kFields[] = {
    {5, 0, 4, 1, 9999}, {8, 5, 2, 1, 12},   {11, 8, 2, 1, 31},
    {14, 11, 2, 0, 23}, {17, 14, 2, 0, 59}, {19, 17, 2, 0, 59},
};

std::optional<int16_t> valueOf(std::string_view text, const Field& field) {
    if (text.size() < field.shortest) return std::nullopt;
    int value = 0;
    for (const char c : text.substr(field.start, field.digits)) {
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + (c - '0');
    }
    if (value < field.lowest || value > field.highest) return std::nullopt;
    return static_cast<int16_t>(value);
}

}  // namespace

std::optional<int16_t> dateField(std::string_view text, int32_t field) {
    if (field < 0 || static_cast<size_t>(field) >= std::size(kFields)) return std::nullopt;
    // Beyond ASCII, bytes are not positions: one stand-in for each unit keeps the count.
    return isASCII(text) ? valueOf(text, kFields[field]) : valueOf(asciiUnits(text), kFields[field]);
}

std::optional<DateTimeRec> dateOfText(std::string_view text) {
    if (!isASCII(text)) return std::nullopt;
    DateTimeRec date{};
    int16_t* const parts[] = {&date.year, &date.month, &date.day, &date.hour, &date.minute, &date.second};
    for (size_t field = 0; field < std::size(parts); ++field) {
        const auto value = valueOf(text, kFields[field]);
        if (!value) return std::nullopt;
        *parts[field] = *value;
    }
    if (!localDateExists(date)) return std::nullopt;
    return date;
}

}  // namespace fi

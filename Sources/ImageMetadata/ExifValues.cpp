// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/ExifValues.h"

#include <cstring>

#include "Foundation/DateText.h"
#include "ImageMetadata/TagTypes.h"

namespace fi {

namespace {

/// Bytes that the value's buffer holds, spare ones not counted.
size_t valueBytes(const IMAGETAG_INFO& info) {
    if (info.value == nullptr || info.count < 1) return 0;
    return static_cast<size_t>(info.count) * unitSizeOfType(info.type);
}

/// Bytes of one value as it is handed out: none of a text, half of a signed fraction.
uint8_t unitHandedOut(uint16_t type) {
    if (type == kTagASCII) return 0;
    if (type == kTagSRational) return sizeof(uint32_t);
    return static_cast<uint8_t>(unitSizeOfType(type));
}

}  // namespace

uint8_t valueFromType(void* out, const IMAGETAG_INFO& info) {
    if (info.count < 1) return 0;
    const uint8_t unit = unitHandedOut(info.type);
    if (out == nullptr || info.value == nullptr || unit == 0) return unit;
    const bool isWholeArray = info.type == kTagByte || info.type == kTagRational;
    std::memcpy(out, info.value, isWholeArray ? valueBytes(info) : unit);
    return unit;
}

int16_t turnOfOrientation(int16_t orientation) {
    switch (orientation) {
        case 1:
            return 0;
        case 6:
            return 1;
        case 3:
            return 2;
        case 8:
            return 3;
        default:
            return orientation;
    }
}

std::string_view textOfTag(const IMAGETAG_INFO& info) {
    const size_t size = valueBytes(info);
    return size == 0 ? std::string_view() : std::string_view(info.value, strnlen(info.value, size));
}

int16_t firstShortOfTag(const IMAGETAG_INFO& info) {
    int16_t value = 0;
    if (valueBytes(info) >= sizeof value) std::memcpy(&value, info.value, sizeof value);
    return value;
}

bool readDateText(std::string_view text, DateTimeRec& date) {
    const auto found = dateOfText(text);
    if (found) date = *found;
    return found.has_value();
}

bool isDate(const DateTimeRec& date) {
    return date.year >= 1 && date.month >= 1 && date.day >= 1 && date.hour >= 0 && date.minute >= 0 &&
           date.second >= 0;
}

}  // namespace fi

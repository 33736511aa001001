// SPDX-License-Identifier: Apache-2.0
// Values of Exif tags in the forms that callers want. Any thread.
#pragma once

#include <cstdint>
#include <string_view>

#include "FileImporter/CIMAGETAG.h"
#include "PlatformKit/DateTime.h"

namespace fi {

/// See Exif_GetValueFromType.
uint8_t valueFromType(void* out, const IMAGETAG_INFO& info);

/// The turn of an Exif orientation; what has none stays as it is. See ConvOrientation.
[[nodiscard]] int16_t turnOfOrientation(int16_t orientation);

/// The bytes of a value up to its first NUL, BORROWED from the record's field.
[[nodiscard]] std::string_view textOfTag(const IMAGETAG_INFO& info);

/// The first 16 bits of a value, in host order; 0 for a value of fewer.
[[nodiscard]] int16_t firstShortOfTag(const IMAGETAG_INFO& info);

/// Reads a date text of the form "2018:09:03 14:05:59" of a time that exists. False, `date` untouched, for
/// any other.
[[nodiscard]] bool readDateText(std::string_view text, DateTimeRec& date);

/// True for a year, month and day of at least 1 and a time without negative parts.
[[nodiscard]] bool isDate(const DateTimeRec& date);

}  // namespace fi

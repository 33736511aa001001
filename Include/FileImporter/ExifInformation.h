// SPDX-License-Identifier: Apache-2.0
// What a photo's head says about it, in one record of fixed size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "PlatformKit/DateTime.h"

namespace fi {

/// Plain data: copied byte by byte, without a constructor. Zero it before it is handed out to be filled.
struct ExifInformation {
    uint8_t reserved[16];  ///< never filled
    DateTimeRec date;      ///< of the original, else of the digitizing, else of the file; all zero: none
    int16_t orientation;   ///< 1 to 8 as the file states it, or whatever else it states; 0 when absent
    uint16_t width;        ///< pixels as the Exif data state them, exchanged with the height for 5 to 8
    uint16_t height;
    double xResolution;       ///< numerator of tag 282 of the Exif directory, where it seldom stands
    double yResolution;       ///< likewise of tag 283
    char maker[256];          ///< filled only when tag 271 is no text; ends with a NUL
    uint8_t isSRGB;           ///< 1 when the colour space is stated to be sRGB
    double modificationTime;  ///< seconds since 1970, of a link itself
};
static_assert(std::is_trivial_v<ExifInformation> && sizeof(ExifInformation) == 328);
static_assert(offsetof(ExifInformation, date) == 16 && offsetof(ExifInformation, orientation) == 30 &&
              offsetof(ExifInformation, width) == 32 && offsetof(ExifInformation, height) == 34 &&
              offsetof(ExifInformation, xResolution) == 40 &&
              offsetof(ExifInformation, yResolution) == 48 && offsetof(ExifInformation, maker) == 56 &&
              offsetof(ExifInformation, isSRGB) == 312 &&
              offsetof(ExifInformation, modificationTime) == 320);

}  // namespace fi

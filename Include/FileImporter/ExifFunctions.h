// SPDX-License-Identifier: Apache-2.0
// Exif values and facts by single calls. Nothing is thrown. Any thread, where not said otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "FileImporter/CIMAGETAG.h"
#include "FileImporter/Records.h"
#include "FileImporter/ResultCodes.h"
#include "PlatformKit/DateTime.h"
#include "PlatformKit/URL.h"

namespace fi {

/// Reads an Exif date; see CheckDateForCocoa.
FI_EXPORT bool CheckDate(const char* text, DateTimeRec* out);

/// True for a year, month and day of at least 1 and a time without negative parts; nothing else is asked.
FI_EXPORT bool QuerryDateTime(const DateTimeRec* date);

/// Reverse the order of the bytes in place; the second returns the new value, too.
FI_EXPORT void ConvWORD_LB(uint16_t* value);
FI_EXPORT uint32_t ConvDWORD_LB(uint32_t* value);

/// Turns an Exif orientation into a turn: 1 becomes 0 (none), 6 becomes 1 (a quarter clockwise), 3 becomes
/// 2 (half), 8 becomes 3 (a quarter counter-clockwise). Mirrored ones, and what is no orientation, stay as
/// they are, so that a 2 is ambiguous. Returns the new value.
FI_EXPORT int16_t ConvOrientation(int16_t& orientation);

/// Copies a record's value to `out`, which may be null. A BYTE array is copied whole, of RATIONALs the
/// numerators and denominators as 32-bit words in turn; of every other type only the first value, of an
/// SRATIONAL its numerator. Texts are not copied. Returns the bytes of a unit as written (1, 2, 4, 8); 0
/// for a text, an unknown type, a count below 1 and a null record.
FI_EXPORT uint8_t Exif_GetValueFromType(void* out, const IMAGETAG_INFO* info);

/// Whether the field that stands in gImageTag says that the colours are Adobe RGB, by white point,
/// primaries and gamma. Values are compared in 64-bit slots, of which a RATIONAL fills only one, so this is
/// FALSE for ordinary files. One thread at a time, as gImageTag.
FI_EXPORT bool ExifCheckAdobeRGB();

/// Date, orientation and Exif pixel size of a photo from the cache of such facts (see
/// ZebFileManager::readExifTag), copied into the record when the result is 0. -43 for a null URL, one
/// without a path, and a missing file.
FI_EXPORT OSErr ReadExifTagForZebFileManager(CFURLRef url, tCacheInfo* info);

/// What is found in IFD0 while its size is measured.
struct TIFF_EXIFSUB {
    unsigned char* exifIFD;       ///< BORROWED: where the Exif directory stands in the caller's bytes
    uint32_t exifOffset;          ///< its offset as stored; 0 when there is none
    int32_t ifdSize;              ///< entries x 12 + 2
    uint32_t pointerFieldOffset;  ///< of the pointer's value field, from the directory on
};
static_assert(std::is_trivial_v<TIFF_EXIFSUB> && sizeof(TIFF_EXIFSUB) == 24);
static_assert(offsetof(TIFF_EXIFSUB, exifIFD) == 0 && offsetof(TIFF_EXIFSUB, exifOffset) == 8 &&
              offsetof(TIFF_EXIFSUB, ifdSize) == 12 && offsetof(TIFF_EXIFSUB, pointerFieldOffset) == 16);

/// Works on one directory of a TIFF block, `base` being its offset in the file: all its bytes (entries x 12
/// + 2) must be there. With `measure` returns the bytes from the directory to the end of its last value, at
/// least entries x 12 + 6, and fills `sub` (null is allowed); 0 when a value lies before the directory or
/// begins in it. Without, rewrites every offset to offset - base in the file's byte order and returns
/// entries x 12 + 6, but 0 for a directory without entries.
FI_EXPORT uint32_t GetSizeOrChangeOffsetIFD(unsigned char* ifd, int32_t base, uint8_t littleEndian,
                                            TIFF_EXIFSUB* sub, uint8_t measure);

}  // namespace fi

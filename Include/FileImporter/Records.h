// SPDX-License-Identifier: Apache-2.0
// The small records that callers exchange with the importer. Plain data: nothing is retained or released
// but as each operation says.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "PlatformKit/DateTime.h"
#include "PlatformKit/Geometry.h"
#include "PlatformKit/URL.h"

namespace fi {

class NSImage;

/// One photo as a caller receives it. The caller owns the record and what it refers to.
struct CPhoto {
    uint64_t reserved;     ///< never touched by the importer
    uint16_t orientation;  ///< Exif orientation
    NSImage* image;        ///< OWNED; released before a new one is stored
    CFURLRef url;          ///< retained; the previous one is released first
    DateTimeRec date;
    uint32_t extra;  ///< the cache record's value, as it is
};
static_assert(std::is_trivial_v<CPhoto> && sizeof(CPhoto) == 56);
static_assert(offsetof(CPhoto, orientation) == 8 && offsetof(CPhoto, image) == 16 &&
              offsetof(CPhoto, url) == 24 && offsetof(CPhoto, date) == 32 && offsetof(CPhoto, extra) == 48);

/// What the importer remembers of one photo. References are BORROWED.
struct tCacheInfo {
    int16_t index;          ///< in the file list; its low 16 bits
    CFURLRef fileURL;       ///< the photo's own file
    CFURLRef photoURL;      ///< its copy in the temporary folder, or null
    CFURLRef thumbnailURL;  ///< a cached thumbnail file, or null
    DateTimeRec date;
    uint16_t orientation;
    uint32_t extra;       ///< 0 unless a caller sets it
    uint16_t exifValue1;  ///< Exif pixel width
    uint16_t exifValue2;  ///< Exif pixel height
};
static_assert(std::is_trivial_v<tCacheInfo> && sizeof(tCacheInfo) == 56);
static_assert(offsetof(tCacheInfo, fileURL) == 8 && offsetof(tCacheInfo, photoURL) == 16 &&
              offsetof(tCacheInfo, thumbnailURL) == 24 && offsetof(tCacheInfo, date) == 32 &&
              offsetof(tCacheInfo, orientation) == 46 && offsetof(tCacheInfo, extra) == 48 &&
              offsetof(tCacheInfo, exifValue1) == 52 && offsetof(tCacheInfo, exifValue2) == 54);

/// A part of a photo in fractions of its sides, 0 to 1, from the bottom left: x, y, width, height. The
/// whole (0, 0, 1, 1) and all zero both mean no trim.
using TrimRatio = NSRect;
static_assert(sizeof(TrimRatio) == 32 && std::is_trivially_copyable_v<TrimRatio>);

/// A date with a code, offered to applications; the library makes none itself.
class FI_EXPORT PhotoInfo {
public:
    PhotoInfo() = default;
    virtual ~PhotoInfo();

    DateTimeRec date{};  ///< all zero: none
    int16_t code = -1;   ///< -1: not set
};

/// An uncompressed bitmap as another component supplies it.
struct tagRAWBITMAP {
    uint8_t* bits;       ///< first byte of the top row
    int32_t rowBytes;    ///< bytes from one row to the next
    uint32_t width;      ///< pixels of a row
    int32_t height;      ///< rows
    uint32_t attribute;  ///< passed through unchanged
    uint32_t kind;       ///< 1: 1 bit a pixel, 2: 8-bit grey, 3: 24-bit colour
};
static_assert(std::is_trivial_v<tagRAWBITMAP> && offsetof(tagRAWBITMAP, rowBytes) == 8 &&
              offsetof(tagRAWBITMAP, width) == 12 && offsetof(tagRAWBITMAP, height) == 16 &&
              offsetof(tagRAWBITMAP, attribute) == 20 && offsetof(tagRAWBITMAP, kind) == 24);

/// Pixel formats of PATIMG.
inline constexpr uint32_t kPATIMGFormat1Bit = 33;    ///< most significant bit first; a set bit is black
inline constexpr uint32_t kPATIMGFormatGray = 8;     ///< one byte a pixel
inline constexpr uint32_t kPATIMGFormatColor = 136;  ///< three bytes a pixel

/// A raw image record.
struct PATIMG {
    uint8_t* bits;     ///< first byte of the top row
    int32_t rowBytes;  ///< bytes from one row to the next
    uint32_t width;    ///< pixels of a row
    int32_t height;    ///< rows
    uint32_t attribute1;
    uint32_t attribute2;
    uint32_t format;  ///< kPATIMGFormat…
    uint32_t reserved1;
    uint64_t reserved2;
};
static_assert(std::is_trivial_v<PATIMG> && offsetof(PATIMG, rowBytes) == 8 &&
              offsetof(PATIMG, width) == 12 && offsetof(PATIMG, height) == 16 &&
              offsetof(PATIMG, attribute1) == 20 && offsetof(PATIMG, attribute2) == 24 &&
              offsetof(PATIMG, format) == 28 && offsetof(PATIMG, reserved1) == 32 &&
              offsetof(PATIMG, reserved2) == 40 && sizeof(PATIMG) == 48);

}  // namespace fi

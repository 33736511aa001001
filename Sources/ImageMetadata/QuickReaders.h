// SPDX-License-Identifier: Apache-2.0
// One question about one photo, answered from its file: what CFileImporter asks about its current one. A
// URL that is null or has no path counts as a missing file. Nothing is thrown. One thread at a time where
// a CIMAGETAG is taken, else any.
#pragma once

#include <cstdint>

#include "FileImporter/CIMAGETAG.h"
#include "FileImporter/Records.h"
#include "FileImporter/ResultCodes.h"
#include "PlatformKit/DateTime.h"
#include "PlatformKit/Memory.h"
#include "PlatformKit/URL.h"

namespace fi {

/// The file's head (65567 bytes at most), OWNED, in `*handle`, else null. 0; -43 for an empty file, which a
/// pipe or device counts as; -108 for one that cannot be read (missing, a folder, a Qal file) and without
/// memory.
[[nodiscard]] OSErr readDataHandle(CFURLRef url, Handle* handle);

/// `length` bytes of the file from `offset` on, or those that it has, OWNED, in `*handle`, else null, and
/// their number in `*got`, else 0. At the very end they are none. Offset and length count as unsigned. 0;
/// -50 for a negative offset; -108 for one beyond the end, and as above.
[[nodiscard]] OSErr readDataHandleOffset(CFURLRef url, Handle* handle, int32_t offset, int32_t length,
                                         int32_t* got);

/// The date of the original, else of the digitizing, else the file's modification date (all zero when it
/// has gone meanwhile). `tags` is closed afterwards. 0, or the code of readDataHandle().
[[nodiscard]] OSErr readDateFromExifFast(CFURLRef url, CIMAGETAG& tags, DateTimeRec& date);

/// The Exif orientation as it is stated, 0 when it is not. `tags` is closed afterwards. 0, or the code of
/// readDataHandle().
[[nodiscard]] OSErr readOrientationFromExifFast(CFURLRef url, CIMAGETAG& tags, int16_t& orientation);

/// The importer's mode in which only a file's own date counts.
inline constexpr int32_t kFileDateOnly = 1;

/// The date of a photo: readDateFromExifFast() of a JPEG or TIFF by its name, unless the mode is
/// kFileDateOnly; the file's modification date for all else and when that fails. 0; -43 for a missing file.
[[nodiscard]] OSErr readDate(CFURLRef url, int32_t fileDateMode, CIMAGETAG& tags, DateTimeRec& date);

/// Other pictures have no date of their own: always -43, nothing is touched.
[[nodiscard]] OSErr readPictDate(DateTimeRec& date);

/// The orientation that the platform's image source finds, its low 16 bits, 0 when it finds none.
/// Untouched when there is no picture. Always 0.
OSErr readExifOrientation(CFURLRef url, int16_t* orientation);

/// {0, 0, height, width} of a photo: the Exif size (upright) that `record` remembers, unless one side of it
/// is 0 or `record` is null, else the picture's own (stored) one. False, `*bounds` untouched, when that is
/// empty. Without `bounds`, whether the picture's own size is not empty.
[[nodiscard]] bool checkPhotoSize(const tCacheInfo* record, CFURLRef url, Rect* bounds);

/// Frees a block of Exif data; null is allowed. Always 1.
int16_t disposeExifTagData(char* block);

/// See ReadExifTagForZebFileManager. Any thread.
[[nodiscard]] OSErr readExifTagInto(CFURLRef url, tCacheInfo& info);

}  // namespace fi

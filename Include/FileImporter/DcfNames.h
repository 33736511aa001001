// SPDX-License-Identifier: Apache-2.0
// The rules for names of folders and files on camera cards (DCF), and an order of such names. Paths are
// colon-separated from the card's root ("DCIM:100ABCDE:IMG_0001.JPG"); names are length-prefixed. Any
// thread. No argument but a URL may be null.
#pragma once

#include <cstdint>

#include "PlatformKit/URL.h"

namespace fi {

/// True for a file directly inside a DCF folder: at least 19 characters; a prefix in which any ONE
/// character of "DCIM:" stands in its place (deliberately that lenient); a folder name of 8 characters
/// that begins with a number from 100 to 999; and no further colon.
FI_EXPORT bool IsDCIMFile(const char* path);

/// Writes the sort key of a path: for a DCF file the folder's free characters before its number, for any
/// other "XXXX:XXXXXXXX:" and the text after the last colon. `out` must hold 15 bytes more than the path
/// is long; nothing bounds it.
FI_EXPORT void MakeComparePath(const char* path, char* out);

/// True for a name of 12 characters whose characters 5 to 8 are digits.
FI_EXPORT bool CheckDCFFile(const unsigned char* name);

/// -1, 0 or 1: DCF names before others and equal among themselves; other names by their digit runs
/// (position, number, length of the run), then by bytes. The arguments are not modified.
FI_EXPORT int16_t CheckDCFFilesCompare(const unsigned char* a, const unsigned char* b);

/// 0-based position of the first digit run of `s`, whose digits are APPENDED to `run`; -1 without one.
FI_EXPORT int16_t GetFirstDigitPos(const unsigned char* s, unsigned char (&run)[256]);

/// Deletes `count` characters from the 1-based `start` (0 counts as 1); a count beyond the end is cut.
FI_EXPORT void Remove(unsigned char start, unsigned char count, unsigned char (&s)[256]);

/// True when the first `n` characters are all digits; true for `n` below 1.
FI_EXPORT bool CheckDigitString(const char* s, int16_t n);

/// True when both URLs, their last components removed, are the same OBJECT. URLs of parents are made
/// anew, so two of them never are: the answer is false for any two URLs, equal ones too.
FI_EXPORT bool FileExistSameFolder(CFURLRef a, CFURLRef b);

}  // namespace fi

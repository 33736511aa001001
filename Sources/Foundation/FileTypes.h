// SPDX-License-Identifier: Apache-2.0
// What kind of file a name promises. Nothing is read from the file.
#pragma once

#include <string_view>

#include "FileImporter/FileTypeCodes.h"
#include "PlatformKit/URL.h"

namespace fi {

/// One entry of an extension table: length-prefixed, with its dot, in upper case.
using ExtensionEntry = unsigned char[256];

/// Tables end with an empty entry.
extern const ExtensionEntry kJPEGExtensions[3];
extern const ExtensionEntry kTIFFExtensions[3];
extern const ExtensionEntry kPICTExtensions[4];
extern const ExtensionEntry kPDFExtensions[2];

/// True when an extension (with its dot) equals an entry of the table, ignoring case. Entries that are
/// not UTF-8 are passed over.
[[nodiscard]] bool isExtensionIn(std::string_view extension, const ExtensionEntry* table);
/// The same for a length-prefixed extension; false when it is not UTF-8.
[[nodiscard]] bool isPascalExtensionIn(const unsigned char* extension, const ExtensionEntry* table);

/// The type by the text from the name's last dot on; kUTTypeImage for a null name, one without a dot and
/// any other extension. One of the five constants.
[[nodiscard]] CFStringRef fileTypeOfName(CFStringRef name);
[[nodiscard]] CFStringRef fileTypeOfPascalName(const unsigned char* name);
/// kUTTypeImage for a null URL; null when the URL has no last component.
[[nodiscard]] CFStringRef fileTypeOfURL(CFURLRef url);

/// The first three UTF-8 bytes of a text of at most three as a word in memory order, zero-padded;
/// kUnknownOSType for null and longer texts.
[[nodiscard]] OSType osTypeOfString(CFStringRef text);

/// Families by the end of the lower-cased last path component.
[[nodiscard]] bool isSupportedFile(CFStringRef path);
[[nodiscard]] bool isJpegFile(CFStringRef path);
[[nodiscard]] bool isTiffFile(CFStringRef path);
[[nodiscard]] bool isPictFile(CFStringRef path);
[[nodiscard]] bool isBMPFile(CFStringRef path);
/// Families by the path extension: a name that is only ".pdf" has none.
[[nodiscard]] bool isPDFFile(CFStringRef path);
[[nodiscard]] bool isQALFile(CFStringRef path);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// The Exif facts of a photo from its head.
#pragma once

#include "FileImporter/ExifInformation.h"
#include "FileImporter/ResultCodes.h"
#include "PlatformKit/String.h"

namespace fi {

/// The facts from the cache or else from the file, then remembered; see ZebFileManager::readExifTag.
/// Nothing is thrown: a file that memory does not suffice for counts as one that cannot be read, and facts
/// that it does not suffice for are not remembered. Any thread.
[[nodiscard]] OSErr readExifTag(CFStringRef path, ExifInformation& info) noexcept;

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// The Exif facts of a photo from its head.
#pragma once

#include "FileImporter/ExifInformation.h"
#include "FileImporter/ResultCodes.h"
#include "PlatformKit/String.h"

namespace fi {

/// The facts from the cache or else from the file, then remembered; see ZebFileManager::readExifTag.
[[nodiscard]] OSErr readExifTag(CFStringRef path, ExifInformation& info);

}  // namespace fi

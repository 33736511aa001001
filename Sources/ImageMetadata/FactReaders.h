// SPDX-License-Identifier: Apache-2.0
// The two ways to the Exif facts of a file. They give the same records.
#pragma once

#include "FileImporter/ExifInformation.h"
#include "PlatformKit/String.h"

namespace fi {

/// Any file that exists, through its whole head. When the head cannot be read (or memory does not suffice
/// for it) only the modification time is new in the record, and width and height are exchanged if the
/// orientation in it says so. Throws nothing.
void readFactsPlainly(CFStringRef path, ExifInformation& info);

/// A photo like nearly all are: opened once, read as far as its tags lead (mostly one page of memory),
/// nothing allocated. False, the record untouched, for whatever is out of the ordinary: a link, a file that
/// cannot be opened or read to where its size says, an empty one, one of 4 GiB or more, a project file, a
/// tag of an unusual type. Throws nothing.
[[nodiscard]] bool readFactsQuickly(CFStringRef path, ExifInformation& info);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Writes a picture to a file.
#pragma once

#include "PlatformKit/CGImage.h"
#include "PlatformKit/ImageFailure.h"
#include "PlatformKit/URL.h"

namespace fi {

struct ImageWriteOptions {
    double quality = 1.0;  ///< of JPEG, 0 to 1; the highest keeps the full colour resolution
    NSSize density = {};   ///< dots per inch; zero takes the image's own
};

/// Writes the image as a file of `type`, "public.jpeg" or "public.tiff" (letter case does not matter),
/// replacing a regular file that is there, whose permissions stay. The bytes go to another name in the same
/// folder that becomes the file when they are stored, so that there is never a part of a file. False, and
/// nothing left behind, when that fails: `failure` tells why, in the system's words where it refused. All
/// arguments are BORROWED.
FI_EXPORT bool writeImage(const CGImage& image, CFURLRef url, CFStringRef type,
                          const ImageWriteOptions& options, ImageFailure* failure = nullptr);

}  // namespace fi

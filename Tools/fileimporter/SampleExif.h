// SPDX-License-Identifier: Apache-2.0
// What a made-up camera writes about its photos, and uncompressed TIFF files of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "PlatformKit/CGImage.h"
#include "PlatformKit/DateTime.h"

namespace fi {

struct SampleShot {
    uint16_t orientation = 1;
    DateTimeRec date{};
    uint32_t width = 0;  ///< stored pixels
    uint32_t height = 0;
};

/// The JPEG file with an Exif block in front of everything else.
[[nodiscard]] std::string withExif(const std::string& jpeg, const SampleShot& shot);

/// A TIFF file of a colour picture, with the same facts.
[[nodiscard]] std::string tiffFile(const CGImage& picture, const SampleShot& shot);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Photos whose heads are like a camera's: an Exif block of 8 to 14 KiB with about 60 tags, a maker note and
// a thumbnail, in front of some 60 KiB of picture.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace fi::bench {

/// What is asked of a photo. Plain, so that no reader pays for more than the reading.
struct CameraFacts {
    char date[20] = {};  ///< "2003:10:20 09:01:29"
    uint32_t orientation = 0;
    uint32_t width = 0;  ///< as stored
    uint32_t height = 0;
    bool isSRGB = false;

    friend bool operator==(const CameraFacts&, const CameraFacts&) = default;
};

struct CameraPhoto {
    std::string path;
    CameraFacts facts;
};

/// Writes photos into folders of 250. One in eight is big-endian; one in six has so long a maker note that
/// the thumbnail's directory lies beyond the first 4 KiB, as in a collection of photos of 60 cameras.
[[nodiscard]] std::vector<CameraPhoto> writeCameraPhotos(const std::string& folder, int count);

}  // namespace fi::bench

// SPDX-License-Identifier: Apache-2.0
// Pictures for trying things out: a landscape at some time of the day, with the number of its frame and an
// arrow that points up, so that a wrong turn, a mirrored picture or a wrong order is seen at once.
#pragma once

#include <cstdint>

#include "PlatformKit/CGImage.h"

namespace fi {

/// Stored pixels of every picture; the upright ones of orientation 5 to 8 have them the other way round.
inline constexpr uint32_t kTestPictureWidth = 640;
inline constexpr uint32_t kTestPictureHeight = 480;

struct TestPicture {
    uint32_t frame = 0;        ///< three digits are shown
    double hour = 12;          ///< 0 to 24: the light of the scene
    uint16_t orientation = 1;  ///< Exif orientation that the camera would write
};

/// OWNED. The pixels as the camera stores them; null without memory.
[[nodiscard]] Ref<const CGImage> drawTestPicture(const TestPicture& picture);

}  // namespace fi

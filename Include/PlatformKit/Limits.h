// SPDX-License-Identifier: Apache-2.0
// How much a single photo may ask for. Checked after its header and before any allocation.
#pragma once

#include <cstdint>

#include "PlatformKit/Export.h"

namespace fi {

struct DecodeLimits {
    uint32_t maximumSide = 65535;                 ///< pixels
    uint64_t maximumPixels = 400'000'000;         ///< of one stored picture
    uint64_t maximumBytes = uint64_t{512} << 20;  ///< that one decode may allocate
    uint32_t maximumPages = 10'000;               ///< directories of a TIFF chain that are visited
    uint32_t maximumScans = 500;                  ///< of a progressive JPEG
};

/// BORROWED. The record in force for the process, never destroyed. Not guarded: change it before the first
/// photo is opened, or while no other thread reads one.
[[nodiscard]] FI_EXPORT DecodeLimits& decodeLimits();

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Rows of pictures taken apart into planes of floats, and put together again.
#pragma once

#include <array>
#include <cstdint>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi {

constexpr uint32_t kMostPlanes = 4;

/// One row of each plane; those beyond the layout's count are not used.
using PlaneRows = std::array<float*, kMostPlanes>;

/// A piece of a row.
struct Columns {
    uint32_t left;
    uint32_t right;
};

/// The components with a meaning, a plane each in the order of the pixel; 0 for Gray1, which has no planes.
[[nodiscard]] uint32_t planesOf(PixelLayout layout);

/// Values as stored: 0 to 255, or 0 to 65535.
void spreadRow(const PixelBuffer& picture, uint32_t y, Columns columns, const PlaneRows& planes);

/// Rounds to the nearest value that can be stored. A component without meaning becomes opaque.
void gatherRow(const PlaneRows& planes, Columns columns, PixelBuffer& picture, uint32_t y);

}  // namespace fi

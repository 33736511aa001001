// SPDX-License-Identifier: Apache-2.0
// Looks at an embedded ICC profile before the colour engine does.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/Drawing/ColorTask.h"

namespace fi {

/// The largest profile that is used. Those of presses have 2 to 4 megabytes.
inline constexpr size_t kMaximumProfileBytes = size_t{8} << 20;

/// A copy of the profile for the engine, or nullopt when it is not one of a device or colour space for such
/// samples, or too large. Its pipelines of floating-point elements are hidden: every profile has to be
/// usable without them, and their number of steps is unbounded.
[[nodiscard]] std::optional<std::vector<uint8_t>> acceptedProfile(ByteView profile, ColorSamples samples);

}  // namespace fi

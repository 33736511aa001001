// SPDX-License-Identifier: Apache-2.0
// Answers that higher rooms take from a dictionary of image properties.
#pragma once

#include <cstdint>
#include <optional>

#include "PlatformKit/Dictionary.h"

namespace fi {

/// Bits of a pixel: those of a component, three times for RGB and Lab, four times for CMYK. Nullopt when
/// the properties state no depth.
[[nodiscard]] std::optional<int32_t> pixelDepth(const CFDictionary& properties);

/// The Exif orientation, 1 to 8; 1 when the properties state none.
[[nodiscard]] uint16_t uprightOrientation(const CFDictionary& properties);

}  // namespace fi

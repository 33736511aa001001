// SPDX-License-Identifier: Apache-2.0
// Pictures of any layout in one of the two that everything draws: eight bits of gray, or of three colours.
#pragma once

#include <optional>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi {

/// The picture in Gray8 or RGBX32, itself when it is so already. Words are reduced to bytes, rounded;
/// transparent pixels lie on white. Nullopt when memory is short.
[[nodiscard]] std::optional<PixelBuffer> plainPixels(PixelBuffer picture);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// How every codec paints the rows that no data came for, and tells a picture of nothing else.
#pragma once

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi {

/// Paints `count` rows from `first` in middle gray, as libjpeg does where a file is cut; Gray1 in white.
void markUnread(PixelBuffer& pixels, uint32_t first, uint32_t count);

/// True when every pixel is like the first.
[[nodiscard]] bool isOneColor(const PixelBuffer& pixels);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// How every codec paints the rows that no data came for.
#pragma once

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi {

/// Paints `count` rows from `first` in middle gray, as libjpeg does where a file is cut.
void markUnread(PixelBuffer& pixels, uint32_t first, uint32_t count);

}  // namespace fi

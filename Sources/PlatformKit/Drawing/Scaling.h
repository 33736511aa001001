// SPDX-License-Identifier: Apache-2.0
// High-quality scaling: Lanczos with three lobes, shrinking and enlarging, on the stored values.
#pragma once

#include <cstdint>
#include <optional>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi {

/// The picture in exactly `width` x `height` pixels, in the same layout: the exact value of the filter,
/// rounded once. Alpha is filtered like the colours that it is multiplied into. Pictures of one colour keep
/// it, and the same size gives an exact copy. Beyond its ends the picture is taken to continue as its
/// mirror image. Nullopt when a side of either picture is zero, when memory is short, and for another size
/// of Gray1, which has no levels to filter (see plainPixels). Any thread; what is needed to scale between
/// two sizes is remembered per thread.
[[nodiscard]] std::optional<PixelBuffer> scaled(const PixelBuffer& picture, uint32_t width,
                                                uint32_t height);

}  // namespace fi

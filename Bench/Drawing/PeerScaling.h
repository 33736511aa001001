// SPDX-License-Identifier: Apache-2.0
// Other ways to scale with a Lanczos filter of three lobes.
#pragma once

#include <functional>
#include <vector>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi::bench {

/// What zimg is given planes of.
enum class ZimgSamples : unsigned char {
    Floats,
    Bytes,  ///< with less exact arithmetic
};

/// zimg called directly on three planes of memory that is already there, as large as the picture.
[[nodiscard]] std::function<void()> zimgScaling(const PixelBuffer& picture, uint32_t width, uint32_t height,
                                                ZimgSamples samples);

/// libvips' resize of rows of R, G, B on one thread; `rows` and `result` (R, G, B too) outlive what is
/// returned.
[[nodiscard]] std::function<void()> vipsScaling(const std::vector<uint8_t>& rows, uint32_t fromWidth,
                                                uint32_t fromHeight, uint32_t width, uint32_t height,
                                                std::vector<uint8_t>& result);

}  // namespace fi::bench

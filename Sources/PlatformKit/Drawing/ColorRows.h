// SPDX-License-Identifier: Apache-2.0
// What happens to rows of samples before and after a colour conversion, and how rows are shared out.
#pragma once

#include <cstdint>
#include <functional>

#include "PlatformKit/Base/PixelBuffer.h"
#include "PlatformKit/Drawing/ColorTask.h"

namespace fi {

/// Brings Lab of four samples a pixel to the encoding that a RowConverter takes: in bytes a and b begin at
/// -128; in words L ends at 65535 and 257 steps are one unit of a and b.
void prepareLab(uint8_t* row, uint32_t pixels, ColorSamples samples, bool words);

/// Inks of four samples a pixel, without a profile, to R, G, B, full.
void convertInksPlainly(uint8_t* row, uint32_t pixels, bool inverted, bool words);

/// Colours of RGBA32 or ARGB32 as they are without their alpha, as RGBX32; of what is not to be seen black.
void separateAlpha(const uint8_t* from, uint8_t* to, uint32_t pixels, PixelLayout layout);

/// Puts colours of RGBX32 back, multiplied by the alpha that stands in `to`.
void uniteAlpha(const uint8_t* from, uint8_t* to, uint32_t pixels, PixelLayout layout);

/// Pixels of RGBA32 or ARGB32 on white, as RGBX32.
void layAlphaOnWhite(const uint8_t* from, uint8_t* to, uint32_t pixels, PixelLayout layout);

/// Calls `work` for parts of the rows [first, end), one after the other, that make up `height`: in as many
/// threads as `threads` says at most, the calling one among them; small pictures are not worth a second
/// one. Returns when all is done. `work` may not throw.
void shareRows(uint32_t height, uint64_t pixels, uint32_t threads,
               const std::function<void(uint32_t first, uint32_t end)>& work);

}  // namespace fi

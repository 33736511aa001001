// SPDX-License-Identifier: Apache-2.0
// Reads TIFF pictures, classic and big, of any page.
#pragma once

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/Codecs/CodecTypes.h"

namespace fi {

/// True when a file that begins with `head` is a TIFF file; four bytes are enough.
[[nodiscard]] bool looksLikeTiff(ByteView head);

/// The facts of page `page` (the first is 0); pixels are not touched. `components` counts every sample of
/// a pixel, alpha included. Pages are counted up to the limit.
CodecResult<ImageHeader> readTiffHeader(ByteSource& source, uint32_t page);

/// Decodes the page in full, or reduced by the largest whole factor that keeps to `floor`: each pixel is
/// then the mean of those that it stands for, and memory is that of the reduced picture and of one strip or
/// row of tiles. Gray pictures of any depth give Gray8, all others RGBX32 with X = 255; transparent parts
/// are laid on white, CMYK is converted plainly. Orientation is left as stored: the first row in the file
/// is the first row here. Strips or tiles that cannot be read are gray, with `damaged` set.
CodecResult<DecodedPicture> decodeTiff(ByteSource& source, uint32_t page, SizeFloor floor);

}  // namespace fi

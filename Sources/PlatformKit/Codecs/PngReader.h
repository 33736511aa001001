// SPDX-License-Identifier: Apache-2.0
// Reads PNG pictures of every kind.
#pragma once

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/Codecs/CodecTypes.h"

namespace fi {

/// True when a file that begins with `head` is a PNG file; eight bytes are enough.
[[nodiscard]] bool looksLikePng(ByteView head);

/// The facts of the picture, from the chunks in front of its data: sizes, density, profile and Exif block.
/// `components` and `bitsPerComponent` are those of the stored samples, alpha included: 1 and the index's
/// depth for a palette. A profile that is damaged, or longer than 16 MiB, is left out.
CodecResult<ImageHeader> readPngHeader(ByteSource& source);

/// Decodes the picture: black and white to Gray1, other gray to Gray8 or Gray16, colors and palettes to
/// RGBX32 or RGBX64, whatever has alpha or a transparent color to RGBA32 (16 bits are rounded to 8). Gamma
/// is left as stored. Without interlace, it is reduced by the largest whole factor that keeps to `floor`;
/// black and white and interlaced pictures come in full. A wrong checksum, or an end that is missing, gives
/// what could be read, with `damaged` set; rows that no data came for are gray (white in Gray1), those of
/// an interlaced picture are as coarse as its data.
CodecResult<DecodedPicture> decodePng(ByteSource& source, SizeFloor floor);

}  // namespace fi

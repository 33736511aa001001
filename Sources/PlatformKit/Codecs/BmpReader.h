// SPDX-License-Identifier: Apache-2.0
// Reads BMP pictures of Windows and OS/2: facts from the headers, pixels in full or reduced.
#pragma once

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/Codecs/CodecTypes.h"

namespace fi {

/// True when a file that begins with `head` is a BMP file, or an OS/2 array whose first picture is one;
/// sixteen bytes are enough.
[[nodiscard]] bool looksLikeBmp(ByteView head);

/// The facts of the picture; pixels are not touched. With a palette, `components` is 1 and
/// `bitsPerComponent` the bits of an index; the model is Gray when every color is gray (of one bit: when
/// the two are black and white), RGB otherwise. All other pictures have 3 or, with alpha, 4 components of 8
/// bits: what their fields are reduced or widened to. Kinds that decodeBmp() refuses are described all the
/// same.
CodecResult<ImageHeader> readBmpHeader(ByteSource& source);

/// Decodes one bit of black and white to Gray1, other gray palettes to Gray8, pictures with an alpha mask
/// to RGBA32 and everything else to RGBX32. The fourth byte of plain 32-bit pixels means nothing. Gray8 and
/// RGBX32 that are stored in rows are reduced by the largest whole factor that keeps to `floor`, all others
/// come in full. Pixels that a run-length coded file passes over have the palette's first color. Rows that
/// the file lacks are gray (in Gray1: white), with `damaged` set.
CodecResult<DecodedPicture> decodeBmp(ByteSource& source, SizeFloor floor);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Reads QuickDraw pictures (PICT): bit maps, pixel maps and embedded images. Lines, texts and shapes are
// stepped over.
#pragma once

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/Codecs/CodecTypes.h"

namespace fi {

/// True when a file that begins with `head` is a PICT file, with or without the 512 bytes that stand in
/// front of a picture in a file; 526 bytes are enough. As version 1 is told by little more than two bytes,
/// other formats should be asked first.
[[nodiscard]] bool looksLikePict(ByteView head);

/// The facts of the picture; pixels are stepped over. The frame in points is width (height) times 72 and
/// divided by the density, rounded; without a density a point is a pixel. Pictures without pixels are
/// described all the same.
CodecResult<ImageHeader> readPictHeader(ByteSource& source);

/// Draws the picture in full on white, whatever the floor. Bit maps of black and white give Gray1, parts
/// that are all gray Gray8, others RGBX32. `partial` is set when lines, texts, shapes or images of a
/// compression that is not read were left out; `damaged` when rows are missing, which are gray.
/// Unsupported when nothing else is there.
CodecResult<DecodedPicture> decodePict(ByteSource& source, SizeFloor floor);

}  // namespace fi

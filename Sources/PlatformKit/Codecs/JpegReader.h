// SPDX-License-Identifier: Apache-2.0
// Reads JPEG pictures: facts from the head alone, pixels at the smallest scale that will do.
#pragma once

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/Codecs/CodecTypes.h"

namespace fi {

/// True when a file that begins with `head` is a JPEG file; three bytes are enough.
[[nodiscard]] bool looksLikeJpeg(ByteView head);

/// The facts of the picture. Reads the segments in front of the first scan, stepping over those that
/// are not needed; pixels are not touched. Kinds that decodeJpeg() refuses are described all the same.
CodecResult<ImageHeader> readJpegHeader(ByteSource& source);

/// Decodes at one of the eight scales n/8 so that neither side falls below `floor` (a floor beyond the
/// stored size gives the stored size). Gray pictures give Gray8, all others RGBX32 with X = 255; CMYK is
/// converted plainly, without a profile. Orientation is left as stored. A file that is cut or harmed
/// gives what could be read, with `damaged` set. Beside the result, a sequential picture takes memory
/// for a few rows only, a progressive one for its coefficients.
CodecResult<DecodedPicture> decodeJpeg(ByteSource& source, SizeFloor floor);

}  // namespace fi

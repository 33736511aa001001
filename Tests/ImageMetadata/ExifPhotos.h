// SPDX-License-Identifier: Apache-2.0
// Photos of a few bytes: an Exif block with the tags that a test chooses, and no picture.
#pragma once

#include <sys/stat.h>
#include <time.h>

#include <string>
#include <utility>
#include <vector>

#include "Support/MakePictures.h"
#include "Support/TiffBlock.h"

namespace fi::test {

inline constexpr uint16_t kTagByteType = 1;
inline constexpr uint16_t kTagUndefinedType = 7;

/// An Exif directory with a version, to which a test adds.
inline TiffDirectory exifWithVersion() {
    return TiffDirectory().bytes(0x9000, kTagUndefinedType, {'0', '2', '3', '0'});
}

/// The directories of one photo; IFD0 leads to the Exif directory.
inline Bytes photoOf(TiffDirectory ifd0, TiffDirectory exif, ByteOrder order = ByteOrder::Little) {
    const Bytes endsAtOnce = {0xFF, 0xD8, 0xFF, 0xD9};
    return withExif(endsAtOnce, tiffBlock({std::move(ifd0.directory(0x8769, std::move(exif)))}, order));
}

/// The same as a TIFF file, which may be of any size, with a second directory for the thumbnail.
inline Bytes tiffPhotoOf(TiffDirectory ifd0, TiffDirectory exif, TiffDirectory ifd1,
                         ByteOrder order = ByteOrder::Little) {
    return tiffBlock({std::move(ifd0.directory(0x8769, std::move(exif))), std::move(ifd1)}, order);
}

/// A value of `size` bytes that pushes what follows away from the beginning of the file.
inline std::vector<uint8_t> padding(size_t size) {
    return std::vector<uint8_t>(size, 0x20);
}

/// Sets a file's modification time, a link's own.
void setModified(const std::string& path, time_t seconds, long nanoseconds = 0);

}  // namespace fi::test

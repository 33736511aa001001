// SPDX-License-Identifier: Apache-2.0
// The Exif segment of a file: a JPEG's own, or one made from the directories of a TIFF file. Any thread.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/URL.h"

namespace fi {

/// Where a directory says that the Exif directory is.
struct ExifPointer {
    uint32_t offset;         ///< as stored
    uint32_t fieldPosition;  ///< of the pointer's value, from its directory's start
};

/// The extent of a directory.
struct DirectoryExtent {
    uint32_t size = 0;  ///< entries x 12 + 2; 0 for a directory that is cut
    /// Bytes from its start to the end of its last value, at least to that of the next one's offset;
    /// UINT32_MAX for more. 0 for a directory that is cut, and one with a value that lies before it or
    /// begins in it.
    uint32_t span = 0;
    std::optional<ExifPointer> exif;  ///< the last one; also when there is no span
};

/// Measures the directory at the start of the bytes, which is `offset` in the file. Values need not be in
/// hand.
[[nodiscard]] DirectoryExtent measureDirectory(ByteView directory, int64_t offset);

/// Takes `distance` off the offset of each value that does not stand in its entry. Returns the bytes of
/// the directory with the offset of the next one, 0 for a directory without entries or one that is cut,
/// which is not changed.
uint32_t moveDirectory(std::span<uint8_t> directory, ByteOrder order, int64_t distance);

/// The first APP1 segment of a JPEG file, marker included, when nothing but one APP0 stands before it and
/// at least four bytes follow. Empty otherwise.
[[nodiscard]] std::vector<uint8_t> exifSegmentOfJpeg(ByteView file);

/// An APP1 segment with IFD0 of a TIFF file and its Exif directory. Offsets in it count from behind its
/// first ten bytes. What lies behind other pointers, and the second page, do not come along. Empty when
/// there is no directory, one cannot be moved (see measureDirectory), or both are too large.
[[nodiscard]] std::vector<uint8_t> exifSegmentOfTiff(ByteView file);

struct FreeBlock {
    void operator()(char* block) const { std::free(block); }
};

/// Result codes of the reading of a segment.
inline constexpr int32_t kExifSegmentRead = 0;    ///< also when there is none
inline constexpr int32_t kExifSegmentFailed = 1;  ///< no memory, or a TIFF file that is empty or unreadable
inline constexpr int32_t kExifSegmentNoPhoto = 3;  ///< neither JPEG nor TIFF

struct ExifSegment {
    int32_t code = kExifSegmentRead;
    /// One block of the C allocator that starts with the segment's marker; null when there is none.
    std::unique_ptr<char, FreeBlock> block;
    uint32_t size = 0;  ///< bytes of the block
};

/// Reads the segment of the file, whole, JPEG or TIFF by its NAME. A caller that keeps a segment frees it
/// before. A JPEG file gives code 0 in every case. Nothing is thrown.
[[nodiscard]] ExifSegment readExifSegment(CFURLRef url);

}  // namespace fi

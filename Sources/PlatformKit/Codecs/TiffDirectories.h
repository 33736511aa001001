// SPDX-License-Identifier: Apache-2.0
// Reads the directories of an Exif block or of a TIFF file's first picture, values and all.
#pragma once

#include <optional>
#include <vector>

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/TiffField.h"

namespace fi {

/// Each directory in the order of the file; empty when it is not there or cannot be read.
struct TiffDirectorySet {
    ByteOrder order = ByteOrder::Little;
    std::vector<TiffField> ifd0;
    std::vector<TiffField> exif;
    std::vector<TiffField> gps;
    std::vector<TiffField> interop;
    std::vector<TiffField> ifd1;  ///< of the thumbnail in an Exif block, of the second page in a file
};

/// Reads the TIFF structure (classic or big) that begins at `base`. nullopt when there is none.
/// Maker notes are left out. A value is cut to 64 KiB, blocks of metadata (XMP, IPTC, ICC, Photoshop) to
/// 16 MiB; all values together hold at most as many bytes as the source plus 64 KiB. An entry of an
/// unknown type, or whose value lies outside, is left out; directories that lead back to one another are
/// read once.
[[nodiscard]] std::optional<TiffDirectorySet> readTiffDirectories(ByteSource& source, uint64_t base = 0);

/// The first field with the tag, or null. Borrowed from the directory.
[[nodiscard]] const TiffField* findField(const std::vector<TiffField>& directory, uint16_t tag);

/// The orientation of the first picture, 1 to 8; nullopt when absent or something else.
[[nodiscard]] std::optional<uint16_t> orientation(const TiffDirectorySet& set);

/// Dots per inch of the first picture; nullopt when absent, without a unit, or not positive.
[[nodiscard]] std::optional<Density> density(const TiffDirectorySet& set);

}  // namespace fi

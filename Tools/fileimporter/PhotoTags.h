// SPDX-License-Identifier: Apache-2.0
// Every tag of a JPEG or TIFF file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "FileImporter/CIMAGETAG.h"
#include "PhotoFacts.h"
#include "TagNames.h"

namespace fi {

struct PhotoTag {
    uint16_t number = 0;
    uint16_t type = 0;  ///< of TIFF, 1 to 12
    std::string value;  ///< its units one after the other, in the order of this machine's bytes

    friend bool operator==(const PhotoTag&, const PhotoTag&) = default;
};

struct TagDirectory {
    std::string_view name;  ///< static text: "IFD0", "Exif", ...
    TagFamily family = TagFamily::Image;
    std::vector<PhotoTag> tags;  ///< in the order of the file, at least one
};

struct PhotoTags {
    std::vector<TagDirectory> directories;
    bool incomplete = false;  ///< there may be more: something among them could not be read
};

/// "SHORT"; empty for what is no type.
[[nodiscard]] std::string_view tagTypeName(uint16_t type);
/// Bytes of one unit; 0 for what is no type.
[[nodiscard]] size_t tagUnitSize(uint16_t type);

/// A copy of a record that owns its value.
[[nodiscard]] PhotoTag photoTag(const IMAGETAG_INFO& record);

/// The tags of a file whose facts are known: none for one that is neither JPEG nor TIFF; nothing when its
/// bytes cannot be had, as those of an empty file and a Qal file. Reads its head, and all of a TIFF file
/// where the head does not do.
[[nodiscard]] std::optional<PhotoTags> readPhotoTags(const PhotoFacts& facts);

}  // namespace fi

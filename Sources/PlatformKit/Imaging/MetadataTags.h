// SPDX-License-Identifier: Apache-2.0
// The standard tags that image properties show, in one table for each directory.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace fi {

/// What a tag's value becomes in a dictionary. Several values of a number become an array.
enum class MetadataKind : uint8_t {
    Text,
    Integer,
    Real,
    Bytes,
    Degrees,    ///< degrees, minutes and seconds, as one number
    ClockTime,  ///< hours, minutes and seconds, as text
};

struct MetadataTag {
    uint16_t tag;
    std::string_view key;
    MetadataKind kind;
};

// Each sorted by tag.
[[nodiscard]] std::span<const MetadataTag> tiffTags();
[[nodiscard]] std::span<const MetadataTag> exifTags();
[[nodiscard]] std::span<const MetadataTag> gpsTags();

}  // namespace fi

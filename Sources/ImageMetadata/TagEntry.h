// SPDX-License-Identifier: Apache-2.0
// The 12 bytes of a directory entry, and how data of the other byte order become the host's.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "ImageMetadata/TagTypes.h"

namespace fi {

static_assert(std::endian::native == std::endian::little,
              "files of either byte order are read on little-endian hosts");

[[nodiscard]] constexpr uint16_t swapped16(uint16_t value) {
    return static_cast<uint16_t>(value << 8 | value >> 8);
}
[[nodiscard]] constexpr uint32_t swapped32(uint32_t value) {
    return value << 24 | (value & 0xFF00) << 8 | (value >> 8 & 0xFF00) | value >> 24;
}

/// A number of the file at a place that was checked.
[[nodiscard]] inline uint16_t readU16(const uint8_t* at, bool bigEndian) {
    uint16_t value;
    std::memcpy(&value, at, sizeof(value));
    return bigEndian ? swapped16(value) : value;
}
[[nodiscard]] inline uint32_t readU32(const uint8_t* at, bool bigEndian) {
    uint32_t value;
    std::memcpy(&value, at, sizeof(value));
    return bigEndian ? swapped32(value) : value;
}

struct TagEntry {
    uint16_t tag;
    uint16_t type;
    uint32_t count;
    uint32_t value;  ///< its bytes are the value itself, or the number is the value's offset
};
inline constexpr uint32_t kTagEntrySize = 12;
static_assert(sizeof(TagEntry) == kTagEntrySize);

/// The value field of an entry of big-endian data in host order; tag, type and count are in it already.
[[nodiscard]] constexpr uint32_t fixedUpValue(const TagEntry& entry) {
    const uint32_t value = entry.value;
    switch (entry.type) {
        case kTagByte:
        case kTagASCII:
        case kTagSByte:
        case kTagUndefined:
            return entry.count >= 5 ? swapped32(value) : value;
        case kTagShort:
            if (entry.count >= 3) return swapped32(value);
            // Two values swap their bytes and keep their places.
            return entry.count == 2 ? (value & 0x00FF00FF) << 8 | (value >> 8 & 0x00FF00FF)
                                    : swapped32(value) >> 16;
        default:
            // A single SSHORT, too: it comes to stand in the upper half.
            return swapped32(value);
    }
}

/// The entry at a place that was checked, in host order. The file's bytes stay as they are: a directory
/// that is reached twice reads the same both times.
[[nodiscard]] inline TagEntry readEntry(const uint8_t* at, bool bigEndian) {
    TagEntry entry{readU16(at, bigEndian), readU16(at + 2, bigEndian), readU32(at + 4, bigEndian),
                   readU32(at + 8, false)};
    if (bigEndian) entry.value = fixedUpValue(entry);
    return entry;
}

}  // namespace fi

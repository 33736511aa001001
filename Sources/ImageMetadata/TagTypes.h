// SPDX-License-Identifier: Apache-2.0
// The value types of TIFF, and the tags that lead from one directory to another.
#pragma once

#include <cstdint>

namespace fi {

enum TagType : uint16_t {
    kTagByte = 1,
    kTagASCII = 2,
    kTagShort = 3,
    kTagLong = 4,
    kTagRational = 5,
    kTagSByte = 6,
    kTagUndefined = 7,
    kTagSShort = 8,
    kTagSLong = 9,
    kTagSRational = 10,
    kTagFloat = 11,
    kTagDouble = 12,
};

inline constexpr uint16_t kExifPointer = 0x8769;
inline constexpr uint16_t kGPSPointer = 0x8825;
inline constexpr uint16_t kInteropPointer = 0xA005;

inline constexpr uint8_t kUnitSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};

/// Bytes of one value of a type, 0 when it is none.
[[nodiscard]] constexpr uint32_t unitSizeOfType(uint16_t type) {
    return type < sizeof(kUnitSizes) ? kUnitSizes[type] : 0;
}

}  // namespace fi

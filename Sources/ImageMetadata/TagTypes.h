// SPDX-License-Identifier: Apache-2.0
// The value types of TIFF.
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

/// Bytes of one value of a type, 0 when it is none.
[[nodiscard]] uint32_t unitSizeOfType(uint16_t type);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// One entry of a TIFF directory with its value bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "PlatformKit/Base/ByteView.h"

namespace fi {

enum TiffType : uint16_t {
    kTiffByte = 1,
    kTiffAscii = 2,
    kTiffShort = 3,
    kTiffLong = 4,
    kTiffRational = 5,
    kTiffSByte = 6,
    kTiffUndefined = 7,
    kTiffSShort = 8,
    kTiffSLong = 9,
    kTiffSRational = 10,
    kTiffFloat = 11,
    kTiffDouble = 12,
    kTiffIfd = 13,
    kTiffLong8 = 16,
    kTiffSLong8 = 17,
    kTiffIfd8 = 18,
};

/// Bytes of one value of the type; 0 for a type that is not known.
[[nodiscard]] uint32_t tiffTypeBytes(uint16_t type);

struct TiffField {
    uint16_t tag = 0;
    uint16_t type = 0;
    uint32_t count = 0;                   ///< values that the entry declares; `data` may hold fewer
    ByteOrder order = ByteOrder::Little;  ///< of `data`
    std::vector<uint8_t> data;            ///< value bytes as they stand in the file

    /// The bytes up to the first NUL, whatever the type.
    [[nodiscard]] std::string asText() const;

    /// Value `index` of an integer type; nullopt when there is none or it does not fit.
    [[nodiscard]] std::optional<uint64_t> asUnsigned(size_t index = 0) const;
    [[nodiscard]] std::optional<int64_t> asSigned(size_t index = 0) const;

    /// Value `index` of any number type; nullopt when there is none, or it divides by zero.
    [[nodiscard]] std::optional<double> asRational(size_t index = 0) const;
};

}  // namespace fi

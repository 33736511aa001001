// SPDX-License-Identifier: Apache-2.0
// The first bytes of a TIFF structure: byte order, classic or big, and where its directories begin.
#pragma once

#include <cstdint>
#include <optional>

#include "PlatformKit/Base/ByteView.h"

namespace fi {

struct TiffLayout {
    static constexpr size_t kHeadBytes = 16;

    ByteOrder order = ByteOrder::Little;
    bool big = false;  ///< 64-bit offsets
    uint64_t firstDirectory = 0;

    [[nodiscard]] constexpr uint32_t countBytes() const { return big ? 8 : 2; }
    [[nodiscard]] constexpr uint32_t entryBytes() const { return big ? 20 : 12; }
    [[nodiscard]] constexpr uint32_t offsetBytes() const { return big ? 8 : 4; }

    /// Entries of the directory that begins with `view`.
    [[nodiscard]] std::optional<uint64_t> readCount(ByteView view) const;
    /// An offset, or the count of an entry, at `at`.
    [[nodiscard]] std::optional<uint64_t> readOffset(ByteView view, uint64_t at) const;

    /// nullopt when `head` (kHeadBytes of them are enough) does not begin a TIFF structure.
    [[nodiscard]] static std::optional<TiffLayout> parse(ByteView head);
};

}  // namespace fi

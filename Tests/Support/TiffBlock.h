// SPDX-License-Identifier: Apache-2.0
// Builds TIFF structures byte by byte, for Exif blocks and whole files, right or wrong as a test wants.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "PlatformKit/Base/ByteView.h"

namespace fi::test {

/// A fraction of an Exif value.
using Fraction = std::pair<uint32_t, uint32_t>;

class TiffDirectory {
public:
    TiffDirectory& text(uint16_t tag, std::string_view value);
    TiffDirectory& shorts(uint16_t tag, const std::vector<uint16_t>& values);
    TiffDirectory& longs(uint16_t tag, const std::vector<uint32_t>& values);
    TiffDirectory& fractions(uint16_t tag, const std::vector<Fraction>& values);
    /// Single bytes of any type: 1 numbers, 7 without a meaning.
    TiffDirectory& bytes(uint16_t tag, uint16_t type, std::vector<uint8_t> values);
    /// A block elsewhere in the file; the value is its offset.
    TiffDirectory& block(uint16_t tag, std::vector<uint8_t> bytes);
    /// A directory of its own; the value is its offset.
    TiffDirectory& directory(uint16_t tag, TiffDirectory inner);

private:
    friend class TiffBlockWriter;
    struct Entry {
        uint16_t tag;
        uint16_t type;
        uint32_t unit;  ///< bytes of one number
        std::vector<uint32_t> numbers;
        std::vector<uint8_t> elsewhere;
        std::vector<TiffDirectory> inner;
        uint32_t count;
    };
    std::vector<Entry> m_entries;
};

/// A classic TIFF structure whose pages are these directories.
[[nodiscard]] std::vector<uint8_t> tiffBlock(const std::vector<TiffDirectory>& pages, ByteOrder order);

}  // namespace fi::test

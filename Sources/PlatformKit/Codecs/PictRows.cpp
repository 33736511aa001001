// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictRows.h"

#include <algorithm>

#include "PlatformKit/Codecs/PictPackBits.h"

namespace fi {

namespace {

constexpr uint32_t kLongestByteCounted = 250;  // longer rows have a word for their packed length
constexpr uint32_t kSurelyByteCounted = 200;   // some writers begin with the word here

bool isPacked(const PictPixelMap& map) {
    return map.packing != PictPacking::None && map.packing != PictPacking::DropAlpha;
}

/// True when the first row, with a length of `countBytes`, unpacks to what a row must have.
bool firstRowFits(PictInput& input, const PictPixelMap& map, uint32_t countBytes) {
    const uint64_t start = input.position();
    const uint32_t count = countBytes == 1 ? input.u8() : input.u16();
    std::vector<uint8_t> packed(std::min<uint64_t>(count, input.left()));
    input.read(packed);
    input.seek(start);
    std::vector<uint8_t> row(map.rowBytes + 1);
    const size_t unit = map.packing == PictPacking::Words ? 2 : 1;
    const size_t full = map.packing == PictPacking::Planes ? map.rowBytes / 4 * map.planes : map.rowBytes;
    return packed.size() == count && unpackPictBits(packed, unit, row) == full;
}

uint32_t countBytesOf(PictInput& input, const PictPixelMap& map) {
    if (!isPacked(map)) return 0;
    if (map.rowBytes > kLongestByteCounted) return 2;
    if (map.rowBytes <= kSurelyByteCounted || map.bounds.isEmpty() || input.left() < 2) return 1;
    return !firstRowFits(input, map, 1) && firstRowFits(input, map, 2) ? 2 : 1;
}

/// Five bits as eight.
uint32_t widened(uint32_t five) {
    return five << 3 | five >> 2;
}

}  // namespace

PictRows::PictRows(PictInput& input, const PictPixelMap& map, std::span<const PictColor> colors)
    : m_input(input), m_map(map), m_colors(colors), m_countBytes(countBytesOf(input, map)) {}

uint32_t PictRows::storedRowBytes() const {
    return m_map.packing == PictPacking::DropAlpha ? m_map.rowBytes / 4 * 3 : m_map.rowBytes;
}

uint32_t PictRows::packedRowBytes() {
    return m_countBytes == 1 ? m_input.u8() : m_input.u16();
}

void PictRows::skip(uint32_t count) {
    if (m_countBytes == 0) {
        m_input.skip(uint64_t{storedRowBytes()} * count);
        return;
    }
    for (uint32_t i = 0; i < count && !m_input.isCut(); ++i)
        m_input.skip(packedRowBytes());
}

bool PictRows::unpackRow() {
    if (m_countBytes == 0) {
        m_row.resize(storedRowBytes());
        m_filled = m_row.size();
        return m_input.read(m_row);
    }
    m_packed.resize(packedRowBytes());
    const bool complete = m_input.read(m_packed);
    m_row.resize(size_t{m_map.rowBytes} / 4 * std::max(m_map.planes, 4U) + 4);
    if (m_map.packing != PictPacking::Planes) m_row.resize(m_map.rowBytes);
    m_filled = unpackPictBits(m_packed, m_map.packing == PictPacking::Words ? 2 : 1, m_row);
    return complete && m_filled > 0;
}

size_t PictRows::heldPixels() const {
    if (m_map.packing == PictPacking::Planes) return SIZE_MAX;  // what is missing is black
    if (m_map.packing == PictPacking::DropAlpha) return m_row.size() / 3;
    return m_row.size() * 8 / m_map.bits;
}

bool PictRows::read(std::span<PictColor> row) {
    if (!unpackRow()) {
        std::fill(row.begin(), row.end(), kPictWhite);
        return false;
    }
    // A row may be shorter than the bounds say.
    const auto known = row.first(std::min(row.size(), heldPixels()));
    std::fill(row.begin() + static_cast<std::ptrdiff_t>(known.size()), row.end(), kPictWhite);
    if (m_map.bits <= 8) {
        expandIndices(known);
    } else if (m_map.packing == PictPacking::Planes) {
        expandPlanes(known);
    } else {
        expandDirect(known);
    }
    return true;
}

void PictRows::expandIndices(std::span<PictColor> row) const {
    if (m_map.bits == 8) {
        for (size_t i = 0; i < row.size(); ++i)
            row[i] = m_colors[m_row[i]];
        return;
    }
    const uint32_t bits = m_map.bits;
    const uint32_t perByte = 8 / bits;
    const uint32_t mask = (1U << bits) - 1;
    for (size_t i = 0; i < row.size(); ++i) {
        const uint32_t shift = 8 - bits * (static_cast<uint32_t>(i % perByte) + 1);
        row[i] = m_colors[m_row[i / perByte] >> shift & mask];
    }
}

void PictRows::expandDirect(std::span<PictColor> row) const {
    if (m_map.bits == 16) {
        for (size_t i = 0; i < row.size(); ++i) {
            const uint32_t word = static_cast<uint32_t>(m_row[2 * i] << 8 | m_row[2 * i + 1]);
            row[i] = pictColor(widened(word >> 10 & 31), widened(word >> 5 & 31), widened(word & 31));
        }
        return;
    }
    const bool dropped = m_map.packing == PictPacking::DropAlpha;
    const size_t step = dropped ? 3 : 4;
    const size_t first = dropped ? 0 : 1;
    for (size_t i = 0; i < row.size(); ++i) {
        const uint8_t* pixel = m_row.data() + i * step + first;
        row[i] = pictColor(pixel[0], pixel[1], pixel[2]);
    }
}

void PictRows::expandPlanes(std::span<PictColor> row) const {
    const size_t padded = m_map.rowBytes / 4;
    // A plane is as wide as the bounds, or as the row with its padding.
    const size_t plane = m_filled == padded * m_map.planes ? padded : row.size();
    const size_t first = m_map.planes == 4 ? plane : 0;
    const auto at = [this](size_t i) { return i < m_row.size() ? m_row[i] : uint8_t{0}; };
    for (size_t i = 0; i < row.size(); ++i)
        row[i] = pictColor(at(first + i), at(first + plane + i), at(first + 2 * plane + i));
}

}  // namespace fi

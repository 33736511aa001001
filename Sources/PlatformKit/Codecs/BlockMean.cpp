// SPDX-License-Identifier: Apache-2.0
// One sum for each color of each block; a row of blocks is divided when its last row of pixels came.
#include "PlatformKit/Codecs/BlockMean.h"

#include <algorithm>

namespace fi {

namespace {

/// Where block `index` of `count` begins on a side of `length` pixels.
uint32_t edge(uint32_t length, uint32_t count, uint32_t index) {
    return static_cast<uint32_t>(uint64_t{length} * index / count);
}

}  // namespace

BlockMean::BlockMean(uint32_t width, uint32_t height, PixelBuffer result)
    : m_result(std::move(result)), m_height(height) {
    const uint32_t columns = m_result.width();
    m_edges.reserve(size_t{columns} + 1);
    for (uint32_t i = 0; i <= columns; ++i)
        m_edges.push_back(edge(width, columns, i));
    m_sums.resize(size_t{columns} * (m_result.layout() == PixelLayout::Gray8 ? 1 : 3));
}

uint32_t BlockMean::rowBehind(uint32_t resultRow) const {
    return edge(m_height, m_result.height(), resultRow + 1);
}

void BlockMean::takeRow(const uint8_t* row) {
    const bool gray = m_result.layout() == PixelLayout::Gray8;
    gray ? addRow<1, 1>(row) : addRow<4, 3>(row);
    if (++m_taken < rowBehind(m_done)) return;
    gray ? putRow<1, 1>() : putRow<4, 3>();
    std::fill(m_sums.begin(), m_sums.end(), uint64_t{0});
    ++m_done;
}

template <uint32_t kPixelBytes, uint32_t kColors>
void BlockMean::addRow(const uint8_t* row) {
    uint64_t* sums = m_sums.data();
    for (uint32_t block = 0; block < m_result.width(); ++block, sums += kColors) {
        // A sum is at most 255 times the pixels of the picture, whose bytes fit 64 bits.
        uint64_t rowSums[kColors] = {};
        const uint8_t* end = row + size_t{m_edges[block + 1]} * kPixelBytes;
        for (const uint8_t* at = row + size_t{m_edges[block]} * kPixelBytes; at < end; at += kPixelBytes) {
            for (uint32_t color = 0; color < kColors; ++color)
                rowSums[color] += at[color];
        }
        for (uint32_t color = 0; color < kColors; ++color)
            sums[color] += rowSums[color];
    }
}

template <uint32_t kPixelBytes, uint32_t kColors>
void BlockMean::putRow() {
    const uint64_t rows = rowBehind(m_done) - edge(m_height, m_result.height(), m_done);
    const uint64_t* sums = m_sums.data();
    uint8_t* out = m_result.row(m_done);
    for (uint32_t block = 0; block < m_result.width(); ++block, sums += kColors, out += kPixelBytes) {
        const uint64_t pixels = (m_edges[block + 1] - m_edges[block]) * rows;
        for (uint32_t color = 0; color < kColors; ++color)
            out[color] = static_cast<uint8_t>((sums[color] + pixels / 2) / pixels);
        if (kPixelBytes == 4) out[3] = 255;
    }
}

}  // namespace fi

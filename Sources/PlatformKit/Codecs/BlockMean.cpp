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

/// What a pixel consists of, and how many of its samples have a mean.
template <typename SampleType, uint32_t kSamplesOfPixel, uint32_t kMeansOfPixel>
struct PixelKind {
    using Sample = SampleType;
    static constexpr uint32_t kSamples = kSamplesOfPixel;
    static constexpr uint32_t kMeans = kMeansOfPixel;
};

/// Answers `use(PixelKind)` for the layout.
template <typename Use>
auto withKind(PixelLayout layout, Use use) {
    switch (layout) {
        case PixelLayout::Gray1:
        case PixelLayout::Gray8:
            break;
        case PixelLayout::Gray16:
            return use(PixelKind<uint16_t, 1, 1>{});
        case PixelLayout::RGBX32:
            return use(PixelKind<uint8_t, 4, 3>{});
        case PixelLayout::RGBA32:
        case PixelLayout::ARGB32:
            return use(PixelKind<uint8_t, 4, 4>{});
        case PixelLayout::RGBX64:
            return use(PixelKind<uint16_t, 4, 3>{});
    }
    return use(PixelKind<uint8_t, 1, 1>{});
}

}  // namespace

BlockMean::BlockMean(uint32_t width, uint32_t height, PixelBuffer result)
    : m_result(std::move(result)), m_height(height) {
    const uint32_t columns = m_result.width();
    m_edges.reserve(size_t{columns} + 1);
    for (uint32_t i = 0; i <= columns; ++i)
        m_edges.push_back(edge(width, columns, i));
    const uint32_t means = withKind(m_result.layout(), [](auto kind) { return decltype(kind)::kMeans; });
    m_sums.resize(size_t{columns} * means);
}

uint32_t BlockMean::rowBehind(uint32_t resultRow) const {
    return edge(m_height, m_result.height(), resultRow + 1);
}

void BlockMean::takeRow(const uint8_t* row) {
    withKind(m_result.layout(), [&](auto kind) { addRow<decltype(kind)>(row); });
    if (++m_taken < rowBehind(m_done)) return;
    withKind(m_result.layout(), [&](auto kind) { putRow<decltype(kind)>(); });
    std::fill(m_sums.begin(), m_sums.end(), uint64_t{0});
    ++m_done;
}

template <typename Kind>
void BlockMean::addRow(const uint8_t* row) {
    using Sample = typename Kind::Sample;
    uint64_t* sums = m_sums.data();
    // Rows of a picture are aligned for every sample.
    const auto* at = reinterpret_cast<const Sample*>(row);
    for (uint32_t block = 0; block < m_result.width(); ++block, sums += Kind::kMeans) {
        // A sum is at most 65,535 times the pixels of the picture, whose bytes fit 48 bits.
        uint64_t rowSums[Kind::kMeans] = {};
        const uint32_t pixels = m_edges[block + 1] - m_edges[block];
        for (const Sample* end = at + size_t{pixels} * Kind::kSamples; at < end; at += Kind::kSamples) {
            for (uint32_t i = 0; i < Kind::kMeans; ++i)
                rowSums[i] += at[i];
        }
        for (uint32_t i = 0; i < Kind::kMeans; ++i)
            sums[i] += rowSums[i];
    }
}

template <typename Kind>
void BlockMean::putRow() {
    using Sample = typename Kind::Sample;
    const uint64_t rows = rowBehind(m_done) - edge(m_height, m_result.height(), m_done);
    const uint64_t* sums = m_sums.data();
    auto* out = reinterpret_cast<Sample*>(m_result.row(m_done));
    for (uint32_t block = 0; block < m_result.width();
         ++block, sums += Kind::kMeans, out += Kind::kSamples) {
        const uint64_t pixels = (m_edges[block + 1] - m_edges[block]) * rows;
        for (uint32_t i = 0; i < Kind::kMeans; ++i)
            out[i] = static_cast<Sample>((sums[i] + pixels / 2) / pixels);
        for (uint32_t i = Kind::kMeans; i < Kind::kSamples; ++i)
            out[i] = static_cast<Sample>(-1);
    }
}

}  // namespace fi

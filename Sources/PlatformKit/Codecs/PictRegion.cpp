// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictRegion.h"

#include <algorithm>
#include <iterator>

namespace fi {

namespace {
constexpr int16_t kEndOfRow = 0x7FFF;
constexpr uint32_t kRectangleBytes = 10;
}  // namespace

std::optional<PictRegion> PictRegion::read(PictInput& input) {
    const uint32_t size = input.u16();
    if (size < kRectangleBytes) return std::nullopt;
    PictRegion region;
    region.m_bounds = input.rect();
    if (input.left() < size - kRectangleBytes) {
        input.skip(size - kRectangleBytes);
        return std::nullopt;
    }
    region.m_words.resize((size - kRectangleBytes) / 2);
    for (int16_t& word : region.m_words)
        word = input.s16();
    input.skip(size % 2);
    if (input.isCut()) return std::nullopt;
    return region;
}

PictRegion PictRegion::moved(int32_t dx, int32_t dy) const {
    PictRegion region = *this;
    region.m_dx += dx;
    region.m_dy += dy;
    return region;
}

const std::vector<int32_t>& PictRegionRows::edgesAt(int32_t y) {
    const std::vector<int16_t>& words = m_region.m_words;
    while (m_next < words.size() && words[m_next] != kEndOfRow && words[m_next] + m_region.m_dy <= y)
        applyRow();
    return m_edges;
}

void PictRegionRows::applyRow() {
    const std::vector<int16_t>& words = m_region.m_words;
    m_changes.clear();
    for (++m_next; m_next < words.size() && words[m_next] != kEndOfRow; ++m_next)
        m_changes.push_back(words[m_next] + m_region.m_dx);
    if (m_next < words.size()) ++m_next;
    std::sort(m_changes.begin(), m_changes.end());
    m_merged.clear();
    // A place that is named again stops being an edge.
    std::set_symmetric_difference(m_edges.begin(), m_edges.end(), m_changes.begin(), m_changes.end(),
                                  std::back_inserter(m_merged));
    m_edges.swap(m_merged);
}

}  // namespace fi

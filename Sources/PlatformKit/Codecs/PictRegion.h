// SPDX-License-Identifier: Apache-2.0
// Regions of a QuickDraw picture: what is clipped and masked to, as a rectangle or row by row.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "PlatformKit/Codecs/PictGeometry.h"
#include "PlatformKit/Codecs/PictInput.h"

namespace fi {

/// At most 64 KB, as its length is a word.
class PictRegion {
public:
    /// Everything.
    PictRegion() = default;

    /// Reads a region, its length included. Nullopt when the length makes no sense or bytes are missing.
    [[nodiscard]] static std::optional<PictRegion> read(PictInput& input);

    [[nodiscard]] PictRegion moved(int32_t dx, int32_t dy) const;
    [[nodiscard]] PictRect bounds() const { return m_bounds.moved(m_dx, m_dy); }
    [[nodiscard]] bool isRectangle() const { return m_words.empty(); }

private:
    friend class PictRegionRows;

    PictRect m_bounds{-32767, -32767, 32767, 32767};
    int32_t m_dx = 0;
    int32_t m_dy = 0;
    std::vector<int16_t> m_words;  // rows, each with the places where inside and outside change
};

/// The rows of a region that is no rectangle.
class PictRegionRows {
public:
    /// The region is BORROWED.
    explicit PictRegionRows(const PictRegion& region) : m_region(region) {}

    /// Coordinates in ascending order where the region begins and ends in turn. Rows that are asked for
    /// downwards cost nothing twice. Valid until the next call.
    [[nodiscard]] const std::vector<int32_t>& edgesAt(int32_t y);

private:
    void applyRow();

    const PictRegion& m_region;
    size_t m_next = 0;  // the word where the next row of changes begins
    std::vector<int32_t> m_edges;
    std::vector<int32_t> m_changes;
    std::vector<int32_t> m_merged;
};

}  // namespace fi

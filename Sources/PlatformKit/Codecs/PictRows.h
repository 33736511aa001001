// SPDX-License-Identifier: Apache-2.0
// The rows behind the description of a pixel map: unpacked to colors, or stepped over.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "PlatformKit/Codecs/PictInput.h"
#include "PlatformKit/Codecs/PictPixelMap.h"

namespace fi {

/// Reads the rows in order from the place where the input stands.
class PictRows {
public:
    /// Both are BORROWED. `colors` are those of the indices, as many as `map.bits` can tell; they may be
    /// empty for direct pixels.
    PictRows(PictInput& input, const PictPixelMap& map, std::span<const PictColor> colors);

    /// The colors of the next row, one for each column of the map's bounds. False when its bytes are
    /// missing: what did not come is white.
    bool read(std::span<PictColor> row);

    /// Steps over the `count` next rows.
    void skip(uint32_t count);

private:
    [[nodiscard]] uint32_t storedRowBytes() const;
    [[nodiscard]] uint32_t packedRowBytes();
    bool unpackRow();
    [[nodiscard]] size_t heldPixels() const;
    void expandIndices(std::span<PictColor> row) const;
    void expandDirect(std::span<PictColor> row) const;
    void expandPlanes(std::span<PictColor> row) const;

    PictInput& m_input;
    const PictPixelMap& m_map;
    std::span<const PictColor> m_colors;
    uint32_t m_countBytes;  // of the length in front of a packed row; 0 when there is none
    std::vector<uint8_t> m_packed;
    std::vector<uint8_t> m_row;  // unpacked
    size_t m_filled = 0;         // bytes of it that the data stood for
};

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Makes a picture smaller while its rows come in, so that the large one never has to exist.
#pragma once

#include <optional>
#include <vector>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi {

/// Each pixel of the result is the exact mean, rounded once, of the block of pixels that it covers. Blocks
/// lie side by side over the whole picture; their sides differ by at most one pixel. Of RGBX32 and RGBX64
/// the byte or word without meaning is set in full. Gray1 has no means.
class BlockMean {
public:
    /// For a picture of `width` x `height` pixels that becomes `result`, whose sides are neither zero nor
    /// longer.
    BlockMean(uint32_t width, uint32_t height, PixelBuffer result);

    /// Takes the next row from the top, in the layout of the result. At most `height` of them.
    void takeRow(const uint8_t* row);

    /// Complete when every row was taken.
    [[nodiscard]] const PixelBuffer& result() const { return m_result; }
    [[nodiscard]] PixelBuffer takeResult() { return std::move(m_result); }

private:
    template <typename Kind>
    void addRow(const uint8_t* row);
    template <typename Kind>
    void putRow();
    [[nodiscard]] uint32_t rowBehind(uint32_t resultRow) const;

    PixelBuffer m_result;
    uint32_t m_height;
    uint32_t m_taken = 0;           // rows of the picture
    uint32_t m_done = 0;            // rows of the result
    std::vector<uint32_t> m_edges;  // columns where blocks begin, and the width
    std::vector<uint64_t> m_sums;   // of each block of this row, color by color
};

}  // namespace fi

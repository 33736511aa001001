// SPDX-License-Identifier: Apache-2.0
// The picture that a decoder makes band by band: kept as it is, or reduced on the way.
#pragma once

#include <optional>

#include "PlatformKit/Codecs/BlockMean.h"
#include "PlatformKit/Codecs/CodecTypes.h"

namespace fi {

class BandedPicture {
public:
    struct Shape {
        uint32_t width = 0;  ///< of the stored picture, as is the height; neither is zero
        uint32_t height = 0;
        PixelLayout layout = PixelLayout::RGBX32;
        uint32_t bandRows = 1;  ///< the most rows of one band
    };
    /// Rows to be filled in, BORROWED from the picture.
    struct Band {
        PixelBuffer& pixels;
        uint32_t first;  ///< the row of `pixels` that the band begins with
        uint32_t rows;

        [[nodiscard]] uint8_t* row(uint32_t index) const { return pixels.row(first + index); }
    };

    /// Bytes of memory for the bands and the result; nullopt when they are beyond counting.
    [[nodiscard]] static std::optional<uint64_t> bytesNeeded(const Shape& shape, SizeFloor floor);

    /// The result is the picture in full, or reduced by the largest whole factor that leaves both sides at
    /// the floor or above. Gray1 is kept in full: it has no
    /// means. Nullopt without memory.
    [[nodiscard]] static std::optional<BandedPicture> create(const Shape& shape, SizeFloor floor);

    /// The next band from the top, at most `bandRows` rows; the last one has fewer when fewer are left.
    [[nodiscard]] Band begin();
    /// Must follow each begin(), when its rows are filled in.
    void finish(const Band& band);
    /// True when no row is left.
    [[nodiscard]] bool isComplete() const { return m_done == m_shape.height; }

    [[nodiscard]] const PixelBuffer& result() const { return m_mean ? m_mean->result() : m_pixels; }
    [[nodiscard]] PixelBuffer takeResult() { return m_mean ? m_mean->takeResult() : std::move(m_pixels); }

private:
    BandedPicture(const Shape& shape, PixelBuffer pixels) : m_shape(shape), m_pixels(std::move(pixels)) {}

    Shape m_shape;
    PixelBuffer m_pixels;             // the whole picture or, when it is reduced, one band
    std::optional<BlockMean> m_mean;  // when it is reduced
    uint32_t m_done = 0;              // rows of finished bands
};

}  // namespace fi

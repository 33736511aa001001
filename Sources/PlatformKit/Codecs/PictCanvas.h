// SPDX-License-Identifier: Apache-2.0
// The pixels that a picture is drawn on, and the drawing of one image on them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "PlatformKit/Base/PixelBuffer.h"
#include "PlatformKit/Codecs/PictModes.h"
#include "PlatformKit/Codecs/PictRegion.h"

namespace fi {

/// White at first. Gray1, Gray8 or RGBX32.
class PictCanvas {
public:
    /// Nullopt without memory.
    [[nodiscard]] static std::optional<PictCanvas> create(const PictPlane& plane, uint32_t width,
                                                          uint32_t height, PixelLayout layout);

    [[nodiscard]] const PictPlane& plane() const { return m_plane; }
    [[nodiscard]] PixelBuffer& pixels() { return m_pixels; }

    /// Takes from the work that may be spent on the picture, in pixels. False when it is used up: a file
    /// of a few bytes could go on drawing for hours.
    [[nodiscard]] bool spend(uint64_t pixels);
    [[nodiscard]] bool isSpent() const { return m_workLeft == 0; }

    /// Draws `columns[i]` of `source` at column `first + i` of the row.
    void paint(uint32_t row, uint32_t first, std::span<const uint32_t> columns,
               std::span<const PictColor> source, const PictMixing& mixing);

private:
    PictCanvas(const PictPlane& plane, PixelBuffer pixels);

    PictPlane m_plane;
    PixelBuffer m_pixels;
    uint64_t m_workLeft;
};

/// Where and how an image is drawn.
struct PictPlacement {
    PictRect source;  ///< the part that is drawn, in pixels of the image
    PictRect target;  ///< where to, in coordinates of the drawing
    PictMixing mixing;
    const PictRegion* clip = nullptr;  ///< BORROWED
    const PictRegion* mask = nullptr;  ///< BORROWED; null for none
};

/// Draws the rows of one image in order; each pixel of the target shows the nearest one of the source.
class PictStroke {
public:
    /// The canvas is BORROWED.
    PictStroke(PictCanvas& canvas, const PictPlacement& placement, uint32_t imageWidth);

    /// True when rows from `row` on are still drawn somewhere.
    [[nodiscard]] bool wants(uint32_t row) const;
    /// Draws a row of the image, which must lie below those before. False when the work is used up.
    [[nodiscard]] bool take(uint32_t row, std::span<const PictColor> pixels);

private:
    struct Span {
        int32_t first;
        int32_t end;
    };
    [[nodiscard]] int64_t sourceRow(int32_t row) const;
    void chooseColumns(uint32_t imageWidth);
    void cutToRegion(const PictRegion& region, PictRegionRows& rows, int32_t y);
    [[nodiscard]] bool paintRow(int32_t row, std::span<const PictColor> pixels);

    PictCanvas& m_canvas;
    PictPlacement m_placement;
    PictRect m_target;                // in pixels
    PictRect m_visible;               // of it, what lies on the canvas and shows pixels of the image
    int32_t m_next;                   // row of the canvas
    std::vector<uint32_t> m_columns;  // of the image, for each visible column
    PictRegionRows m_clipRows;
    std::optional<PictRegionRows> m_maskRows;
    std::vector<Span> m_spans;
    std::vector<Span> m_cutSpans;
    size_t m_edgesSeen = 0;  // in the row that is painted
};

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictCanvas.h"

#include <cstring>

namespace fi {

namespace {

constexpr uint64_t kLayers = 64;  // how often every pixel may be drawn
constexpr uint64_t kLeastWork = uint64_t{1} << 24;

/// Rounded; grays stay as they are.
uint8_t grayOf(PictColor color) {
    return static_cast<uint8_t>(
        ((color & 0xFF) * 77 + (color >> 8 & 0xFF) * 151 + (color >> 16 & 0xFF) * 28 + 128) >> 8);
}

struct ColorRow {
    uint8_t* bytes;
    [[nodiscard]] PictColor get(uint32_t x) const {
        PictColor color;
        std::memcpy(&color, bytes + size_t{x} * 4, 4);
        return color;
    }
    void set(uint32_t x, PictColor color) const { std::memcpy(bytes + size_t{x} * 4, &color, 4); }
};

struct GrayRow {
    uint8_t* bytes;
    [[nodiscard]] PictColor get(uint32_t x) const { return pictColor(bytes[x], bytes[x], bytes[x]); }
    void set(uint32_t x, PictColor color) const { bytes[x] = grayOf(color); }
};

struct BitRow {
    uint8_t* bytes;
    [[nodiscard]] PictColor get(uint32_t x) const {
        return (bytes[x / 8] >> (7 - x % 8) & 1) != 0 ? kPictWhite : kPictBlack;
    }
    void set(uint32_t x, PictColor color) const {
        const uint8_t bit = static_cast<uint8_t>(0x80U >> x % 8);
        const uint8_t others = static_cast<uint8_t>(bytes[x / 8] & ~bit);
        bytes[x / 8] = grayOf(color) >= 128 ? static_cast<uint8_t>(others | bit) : others;
    }
};

template <typename Row>
void paintSpan(Row row, uint32_t first, std::span<const uint32_t> columns,
               std::span<const PictColor> source, const PictMixing& mixing) {
    if (mixing.isCopy()) {
        for (uint32_t i = 0; i < columns.size(); ++i)
            row.set(first + i, source[columns[i]]);
        return;
    }
    for (uint32_t i = 0; i < columns.size(); ++i)
        row.set(first + i, mixing.mix(source[columns[i]], row.get(first + i)));
}

}  // namespace

PictCanvas::PictCanvas(const PictPlane& plane, PixelBuffer pixels)
    : m_plane(plane),
      m_pixels(std::move(pixels)),
      m_workLeft(uint64_t{m_pixels.width()} * m_pixels.height() * kLayers + kLeastWork) {}

std::optional<PictCanvas> PictCanvas::create(const PictPlane& plane, uint32_t width, uint32_t height,
                                             PixelLayout layout) {
    auto pixels = PixelBuffer::create(width, height, layout);
    if (!pixels) return std::nullopt;
    for (uint32_t y = 0; y < height; ++y)
        std::memset(pixels->row(y), 0xFF, static_cast<size_t>(bytesOfRow(width, layout)));
    return PictCanvas(plane, std::move(*pixels));
}

bool PictCanvas::spend(uint64_t pixels) {
    if (pixels > m_workLeft) {
        m_workLeft = 0;
        return false;
    }
    m_workLeft -= pixels;
    return true;
}

void PictCanvas::paint(uint32_t row, uint32_t first, std::span<const uint32_t> columns,
                       std::span<const PictColor> source, const PictMixing& mixing) {
    uint8_t* const bytes = m_pixels.row(row);
    switch (m_pixels.layout()) {
        case PixelLayout::Gray1:
            return paintSpan(BitRow{bytes}, first, columns, source, mixing);
        case PixelLayout::Gray8:
            return paintSpan(GrayRow{bytes}, first, columns, source, mixing);
        default:
            return paintSpan(ColorRow{bytes}, first, columns, source, mixing);
    }
}

PictStroke::PictStroke(PictCanvas& canvas, const PictPlacement& placement, uint32_t imageWidth)
    : m_canvas(canvas),
      m_placement(placement),
      m_target(canvas.plane().pixels(placement.target)),
      m_clipRows(*placement.clip) {
    if (placement.mask != nullptr) m_maskRows.emplace(*placement.mask);
    const PictRect all{0, 0, static_cast<int32_t>(canvas.pixels().height()),
                       static_cast<int32_t>(canvas.pixels().width())};
    m_visible = m_target.cutTo(all);
    if (m_placement.source.isEmpty()) m_visible = {};
    // An image without a row to show has its price as well.
    if (!canvas.spend(m_visible.width())) m_visible = {};
    if (!m_visible.isEmpty()) chooseColumns(imageWidth);
    m_next = m_visible.top;
}

void PictStroke::chooseColumns(uint32_t imageWidth) {
    const int64_t width = m_target.width();
    int32_t first = m_visible.right;
    int32_t end = m_visible.left;
    for (int32_t x = m_visible.left; x < m_visible.right; ++x) {
        const int64_t middle = (2 * (int64_t{x} - m_target.left) + 1) * m_placement.source.width();
        const int64_t column = m_placement.source.left + middle / (2 * width);
        if (column < 0 || column >= imageWidth) continue;
        first = std::min(first, x);
        end = x + 1;
        m_columns.push_back(static_cast<uint32_t>(column));
    }
    m_visible.left = first;
    m_visible.right = end;
}

int64_t PictStroke::sourceRow(int32_t row) const {
    const int64_t middle = (2 * (int64_t{row} - m_target.top) + 1) * m_placement.source.height();
    return m_placement.source.top + middle / (2 * int64_t{m_target.height()});
}

bool PictStroke::wants(uint32_t row) const {
    if (m_visible.isEmpty() || m_next >= m_visible.bottom) return false;
    return sourceRow(m_visible.bottom - 1) >= row;
}

bool PictStroke::take(uint32_t row, std::span<const PictColor> pixels) {
    if (!wants(row)) return true;
    for (; m_next < m_visible.bottom && sourceRow(m_next) <= row; ++m_next) {
        if (sourceRow(m_next) == row && !paintRow(m_next, pixels)) return false;
    }
    return true;
}

void PictStroke::cutToRegion(const PictRegion& region, PictRegionRows& rows, int32_t y) {
    const PictRect bounds = region.bounds();
    const PictPlane& plane = m_canvas.plane();
    if (y < bounds.top || y >= bounds.bottom) {
        m_spans.clear();
        return;
    }
    const int32_t sides[] = {bounds.left, bounds.right};
    const auto edges = region.isRectangle() ? std::span<const int32_t>(sides) : std::span(rows.edgesAt(y));
    m_edgesSeen += edges.size();
    m_cutSpans.clear();
    size_t next = 0;
    for (const Span& span : m_spans) {
        // Spans and edges ascend, so that edges in front of this span are none for the next one.
        while (next + 1 < edges.size() && plane.column(edges[next + 1]) <= span.first)
            next += 2;
        for (size_t i = next; i + 1 < edges.size() && plane.column(edges[i]) < span.end; i += 2) {
            const int32_t first = std::max(span.first, plane.column(edges[i]));
            const int32_t end = std::min(span.end, plane.column(edges[i + 1]));
            if (first < end) m_cutSpans.push_back({first, end});
        }
    }
    m_spans.swap(m_cutSpans);
}

bool PictStroke::paintRow(int32_t row, std::span<const PictColor> pixels) {
    const int32_t y = m_canvas.plane().coordinateOfRow(row);
    m_spans.assign(1, {m_visible.left, m_visible.right});
    m_edgesSeen = 0;
    cutToRegion(*m_placement.clip, m_clipRows, y);
    if (m_maskRows) cutToRegion(*m_placement.mask, *m_maskRows, y);
    const std::span<const uint32_t> columns(m_columns);
    for (const Span& span : m_spans) {
        const uint32_t count = static_cast<uint32_t>(span.end - span.first);
        const auto part = columns.subspan(static_cast<size_t>(span.first - m_visible.left), count);
        m_canvas.paint(static_cast<uint32_t>(row), static_cast<uint32_t>(span.first), part, pixels,
                       m_placement.mixing);
    }
    return m_canvas.spend(m_visible.width() + m_edgesSeen);
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// The coordinates of a QuickDraw picture: rectangles, and how they lie on the pixels of the result.
#pragma once

#include <algorithm>
#include <cstdint>

namespace fi {

/// Half open: `right` and `bottom` lie behind the last column and row.
struct PictRect {
    int32_t top = 0;
    int32_t left = 0;
    int32_t bottom = 0;
    int32_t right = 0;

    bool operator==(const PictRect&) const = default;

    [[nodiscard]] uint32_t width() const { return right > left ? static_cast<uint32_t>(right - left) : 0; }
    [[nodiscard]] uint32_t height() const { return bottom > top ? static_cast<uint32_t>(bottom - top) : 0; }
    [[nodiscard]] bool isEmpty() const { return width() == 0 || height() == 0; }
    [[nodiscard]] PictRect moved(int32_t dx, int32_t dy) const {
        return {top + dy, left + dx, bottom + dy, right + dx};
    }
    [[nodiscard]] PictRect cutTo(const PictRect& other) const {
        return {std::max(top, other.top), std::max(left, other.left), std::min(bottom, other.bottom),
                std::min(right, other.right)};
    }
};

/// Places a space of drawing (not empty) on `width` by `height` pixels.
class PictPlane {
public:
    PictPlane(const PictRect& space, uint32_t width, uint32_t height)
        : m_space(space), m_width(width), m_height(height) {}

    /// The edge of a column (row) that lies nearest to the coordinate; outside of the pixels as well.
    [[nodiscard]] int32_t column(int32_t x) const {
        return scaled(x - m_space.left, m_space.width(), m_width);
    }
    [[nodiscard]] int32_t row(int32_t y) const {
        return scaled(y - m_space.top, m_space.height(), m_height);
    }
    [[nodiscard]] PictRect pixels(const PictRect& rect) const {
        return {row(rect.top), column(rect.left), row(rect.bottom), column(rect.right)};
    }
    /// The coordinate of the drawing that the middle of a row of pixels lies in.
    [[nodiscard]] int32_t coordinateOfRow(int32_t row) const {
        return m_space.top +
               static_cast<int32_t>((2 * int64_t{row} + 1) * m_space.height() / (2 * int64_t{m_height}));
    }

private:
    static int32_t scaled(int32_t distance, uint32_t from, uint32_t to) {
        if (from == to) return distance;
        const int64_t doubled = 2 * int64_t{distance} * to + from;
        const int64_t unit = 2 * int64_t{from};
        // Rounds down for distances on both sides of the origin.
        const int64_t quotient = doubled / unit - (doubled % unit < 0 ? 1 : 0);
        return static_cast<int32_t>(std::clamp<int64_t>(quotient, INT32_MIN / 2, INT32_MAX / 2));
    }

    PictRect m_space;
    uint32_t m_width;
    uint32_t m_height;
};

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/Turns.h"

#include <algorithm>
#include <cstring>

namespace fi {

namespace {

/// A turn is: perhaps exchange the axes, with the source read backwards in either direction.
struct Steps {
    bool swap;
    bool flipX;  ///< of the source's columns
    bool flipY;  ///< of the source's rows
};

Steps stepsOf(Turn turn) {
    switch (turn) {
        case Turn::None:
            return {false, false, false};
        case Turn::MirrorHorizontal:
            return {false, true, false};
        case Turn::Half:
            return {false, true, true};
        case Turn::MirrorVertical:
            return {false, false, true};
        case Turn::Transpose:
            return {true, false, false};
        case Turn::Clockwise:
            return {true, false, true};
        case Turn::Transverse:
            return {true, true, true};
        case Turn::CounterClockwise:
            return {true, true, false};
    }
    return {false, false, false};
}

template <typename Pixel>
void copyRow(const uint8_t* from, uint8_t* to, uint32_t width, bool backwards) {
    if (!backwards) {
        std::memcpy(to, from, size_t{width} * sizeof(Pixel));
        return;
    }
    const uint8_t* end = from + size_t{width} * sizeof(Pixel);
    for (uint32_t x = 0; x < width; ++x) {
        std::memcpy(to + x * sizeof(Pixel), end - (x + size_t{1}) * sizeof(Pixel), sizeof(Pixel));
    }
}

template <typename Pixel>
void copyRows(const PixelBuffer& source, PixelBuffer& target, Steps steps) {
    for (uint32_t y = 0; y < target.height(); ++y) {
        const uint32_t from = steps.flipY ? source.height() - 1 - y : y;
        copyRow<Pixel>(source.row(from), target.row(y), target.width(), steps.flipX);
    }
}

/// A square of pixels one cache line wide. Going through it touches every line of the source and of
/// the target once, whatever their strides; direct copying falls into one cache set when a stride is
/// a power of two.
template <typename Pixel>
class Tile {
public:
    static constexpr uint32_t kSide = 64 / sizeof(Pixel);

    Tile(const PixelBuffer& source, uint32_t left, uint32_t top)
        : m_left(left),
          m_top(top),
          m_width(std::min(kSide, source.width() - left)),
          m_height(std::min(kSide, source.height() - top)) {
        for (uint32_t y = 0; y < m_height; ++y) {
            std::memcpy(m_pixels[y], source.row(top + y) + size_t{left} * sizeof(Pixel),
                        m_width * sizeof(Pixel));
        }
    }

    /// Writes each column of the tile as a piece of a row of the target.
    void storeColumns(PixelBuffer& target, Steps steps) const {
        const uint32_t x = steps.flipY ? target.width() - m_top - m_height : m_top;
        for (uint32_t column = 0; column < m_width; ++column) {
            Pixel piece[kSide];
            for (uint32_t i = 0; i < m_height; ++i) {
                piece[i] = m_pixels[steps.flipY ? m_height - 1 - i : i][column];
            }
            const uint32_t y = steps.flipX ? target.height() - 1 - (m_left + column) : m_left + column;
            std::memcpy(target.row(y) + size_t{x} * sizeof(Pixel), piece, m_height * sizeof(Pixel));
        }
    }

private:
    uint32_t m_left;
    uint32_t m_top;
    uint32_t m_width;
    uint32_t m_height;
    Pixel m_pixels[kSide][kSide];
};

template <typename Pixel>
void swapAxes(const PixelBuffer& source, PixelBuffer& target, Steps steps) {
    for (uint32_t top = 0; top < source.height(); top += Tile<Pixel>::kSide) {
        for (uint32_t left = 0; left < source.width(); left += Tile<Pixel>::kSide) {
            Tile<Pixel>(source, left, top).storeColumns(target, steps);
        }
    }
}

template <typename Pixel>
void turnInto(const PixelBuffer& source, PixelBuffer& target, Turn turn) {
    const Steps steps = stepsOf(turn);
    if (steps.swap) {
        swapAxes<Pixel>(source, target, steps);
    } else {
        copyRows<Pixel>(source, target, steps);
    }
}

}  // namespace

Turn turnForOrientation(uint16_t exifOrientation) {
    if (exifOrientation < 1 || exifOrientation > 8) return Turn::None;
    return static_cast<Turn>(exifOrientation - 1);
}

std::optional<PixelBuffer> turned(const PixelBuffer& picture, Turn turn) {
    const bool swap = swapsSides(turn);
    auto result = PixelBuffer::create(swap ? picture.height() : picture.width(),
                                      swap ? picture.width() : picture.height(), picture.layout());
    if (!result) return std::nullopt;
    switch (picture.layout()) {
        case PixelLayout::Gray8:
            turnInto<uint8_t>(picture, *result, turn);
            break;
        case PixelLayout::Gray16:
            turnInto<uint16_t>(picture, *result, turn);
            break;
        case PixelLayout::RGBX32:
        case PixelLayout::RGBA32:
        case PixelLayout::ARGB32:
            turnInto<uint32_t>(picture, *result, turn);
            break;
        case PixelLayout::RGBX64:
            turnInto<uint64_t>(picture, *result, turn);
            break;
        case PixelLayout::Gray1:
            return std::nullopt;
    }
    return result;
}

}  // namespace fi

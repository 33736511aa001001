// SPDX-License-Identifier: Apache-2.0
#include "SheetLayout.h"

#include <algorithm>
#include <cmath>

namespace fi {

namespace {

constexpr double kBestShape = 4.0 / 3.0;
constexpr size_t kMostPhotos = 1'000'000;  // more never fit; keeps all sums far inside 32 bits
constexpr uint32_t kCaptionLines = 2;
constexpr uint32_t kCaptionSpace = 5;  // between a picture and its caption

uint32_t rowsFor(size_t photos, uint32_t columns) {
    return static_cast<uint32_t>((photos + columns - 1) / columns);
}

}  // namespace

SheetLayout::SheetLayout(size_t photos, uint32_t columns, uint32_t side)
    : m_photos(photos), m_columns(columns), m_rows(rowsFor(photos, columns)), m_side(side) {}

uint32_t SheetLayout::gap() const {
    return std::max(m_side / 8, 4U);
}

uint32_t SheetLayout::lineHeight() const {
    if (!hasCaptions()) return 0;
    return m_side >= 128 ? 15 : 13;
}

uint32_t SheetLayout::cellHeight() const {
    const uint32_t caption = hasCaptions() ? kCaptionSpace + kCaptionLines * lineHeight() : 0;
    return m_side + caption + gap();
}

uint64_t SheetLayout::width() const {
    return uint64_t{m_columns} * cellWidth() - gap() + 2 * margin();
}

uint64_t SheetLayout::height() const {
    return uint64_t{m_rows} * cellHeight() - gap() + 2 * margin();
}

double SheetLayout::misshape() const {
    constexpr double kEmptyWeight = 1;  // a last row that is nearly empty looks like a mistake
    const double shape = static_cast<double>(width()) / static_cast<double>(height());
    const double cells = static_cast<double>(m_columns) * m_rows;
    const double empty = (cells - static_cast<double>(m_photos)) / cells;
    return std::abs(std::log(shape / kBestShape)) + kEmptyWeight * empty;
}

SheetLayout SheetLayout::shapedLikeAPage(size_t photos, uint32_t side) {
    const SheetLayout single(1, 1, side);
    const double shape = kBestShape * single.cellHeight() / single.cellWidth();
    const auto estimate = static_cast<uint32_t>(std::sqrt(static_cast<double>(photos) * shape));
    SheetLayout best(photos, std::max(estimate, 1U), side);
    for (uint32_t columns = std::max(estimate, 2U) - 1; columns <= std::min<size_t>(estimate + 2, photos);
         ++columns) {
        const SheetLayout candidate(photos, columns, side);
        if (candidate.misshape() < best.misshape()) best = candidate;
    }
    return best;
}

std::optional<SheetLayout> SheetLayout::ofSmallest(size_t photos, uint32_t columns) {
    SheetLayout layout = columns > 0 ? SheetLayout(photos, columns, kSmallestPicture)
                                     : shapedLikeAPage(photos, kSmallestPicture);
    if (layout.height() > kLongestSide) {
        const uint32_t edges = 2 * layout.margin() - layout.gap();
        const uint32_t mostRows = (kLongestSide - edges) / layout.cellHeight();
        layout = SheetLayout(photos, rowsFor(photos, mostRows), kSmallestPicture);
    }
    if (layout.isTooLong()) return std::nullopt;
    return layout;
}

std::optional<SheetLayout> SheetLayout::forPhotos(size_t photos, uint32_t columns) {
    if (photos == 0 || photos > kMostPhotos) return std::nullopt;
    for (uint32_t side = kLargestPicture; side > kSmallestPicture; --side) {
        const SheetLayout layout =
            columns > 0 ? SheetLayout(photos, columns, side) : shapedLikeAPage(photos, side);
        if (!layout.isTooLong() && !layout.hasTooManyPixels()) return layout;
    }
    return ofSmallest(photos, columns);
}

bool SheetLayout::isPageSize(int64_t width, int64_t height) {
    for (uint32_t side = kSmallestPicture; side <= kLargestPicture; ++side) {
        const SheetLayout single(1, 1, side);
        const int64_t furtherWidth = width - single.pageWidth();
        const int64_t furtherHeight = height - single.pageHeight();
        if (furtherWidth >= 0 && furtherWidth % single.cellWidth() == 0 && furtherHeight >= 0 &&
            furtherHeight % single.cellHeight() == 0)
            return true;
    }
    return false;
}

SheetLayout::Place SheetLayout::picture(size_t index) const {
    const auto column = static_cast<uint32_t>(index % m_columns);
    const auto row = static_cast<uint32_t>(index / m_columns);
    return {margin() + column * cellWidth(), margin() + row * cellHeight()};
}

SheetLayout::Place SheetLayout::captionLine(size_t index, uint32_t line) const {
    const Place top = picture(index);
    return {top.x, top.y + m_side + kCaptionSpace + line * lineHeight()};
}

}  // namespace fi

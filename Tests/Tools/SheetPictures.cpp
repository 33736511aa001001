// SPDX-License-Identifier: Apache-2.0
#include "Tools/SheetPictures.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "PlatformKit/ImageSource.h"

namespace fi::test {

namespace {

constexpr uint32_t kBlocks = 12;  // on either side of a picture

using Color = std::array<double, 3>;

/// Stored pixel that is seen at (x, y) of an upright picture of `width` by `height`: the Exif standard's
/// words for the eight orientations, one by one.
SheetLayout::Place storedPlace(uint16_t orientation, uint32_t x, uint32_t y, uint32_t width,
                               uint32_t height) {
    const uint32_t right = width - 1 - x;
    const uint32_t below = height - 1 - y;
    switch (orientation) {
        case 2:
            return {right, y};  // mirrored
        case 3:
            return {right, below};  // upside down
        case 4:
            return {x, below};
        case 5:
            return {y, x};  // row 0 is the left side, column 0 the top
        case 6:
            return {y, right};  // row 0 is the right side, column 0 the top
        case 7:
            return {below, right};  // row 0 is the right side, column 0 the bottom
        case 8:
            return {below, x};  // row 0 is the left side, column 0 the bottom
        default:
            return {x, y};
    }
}

Color pixel(const CGImage& image, SheetLayout::Place place) {
    const uint8_t* bytes = image.data() + size_t{place.y} * image.bytesPerRow() + size_t{place.x} * 4;
    return {double{1} * bytes[0], double{1} * bytes[1], double{1} * bytes[2]};
}

/// The mean colour of one block of a picture of `width` by `height`, whose pixels `at(x, y)` gives.
template <typename At>
Color blockMean(uint32_t column, uint32_t row, uint32_t width, uint32_t height, At at) {
    Color sum{};
    uint32_t count = 0;
    for (uint32_t y = row * height / kBlocks; y < (row + 1) * height / kBlocks; ++y) {
        for (uint32_t x = column * width / kBlocks; x < (column + 1) * width / kBlocks; ++x, ++count) {
            const Color color = at(x, y);
            for (size_t i = 0; i < 3; ++i)
                sum[i] += color[i];
        }
    }
    for (double& part : sum)
        part /= count;
    return sum;
}

}  // namespace

SheetPictures::SheetPictures(const std::string& path, const SheetLayout& layout) : m_layout(layout) {
    const auto source = ImageSource::open(CFURL::createFromPath(path).get());
    if (source) m_page = source->createImage(0);
    if (!m_page) {
        ADD_FAILURE() << path << " cannot be read";
        return;
    }
    EXPECT_EQ(m_page->width(), layout.pageWidth());
    EXPECT_EQ(m_page->height(), layout.pageHeight());
    EXPECT_EQ(m_page->bitsPerPixel(), 32U);
}

double SheetPictures::differenceFrom(size_t index, const TestPicture& picture, uint16_t seenAs) const {
    const auto stored = drawTestPicture(picture);
    const bool turned = seenAs >= 5;
    const uint32_t fullWidth = turned ? stored->height() : stored->width();
    const uint32_t fullHeight = turned ? stored->width() : stored->height();
    const uint32_t side = m_layout.pictureSide();
    const uint32_t longer = std::max(fullWidth, fullHeight);
    const uint32_t width = fullWidth * side / longer;
    const uint32_t height = fullHeight * side / longer;
    const auto corner = m_layout.picture(index);
    const uint32_t left = corner.x + (side - width) / 2;
    const uint32_t top = corner.y + (side - height) / 2;
    double sum = 0;
    for (uint32_t block = 0; block < kBlocks * kBlocks; ++block) {
        const uint32_t column = block % kBlocks;
        const uint32_t row = block / kBlocks;
        const Color seen = blockMean(column, row, width, height, [&](uint32_t x, uint32_t y) {
            return pixel(*m_page, {left + x, top + y});
        });
        const Color expected = blockMean(column, row, fullWidth, fullHeight, [&](uint32_t x, uint32_t y) {
            return pixel(*stored, storedPlace(seenAs, x, y, fullWidth, fullHeight));
        });
        for (size_t i = 0; i < 3; ++i)
            sum += std::abs(seen[i] - expected[i]);
    }
    return sum / (3 * kBlocks * kBlocks);
}

double SheetPictures::inkInCell(size_t index) const {
    const uint32_t side = m_layout.pictureSide();
    const auto corner = m_layout.picture(index);
    uint32_t count = 0;
    for (uint32_t y = 0; y < side; ++y) {
        for (uint32_t x = 0; x < side; ++x) {
            const Color color = pixel(*m_page, {corner.x + x, corner.y + y});
            if (color[0] + color[1] + color[2] < 3 * 253) ++count;
        }
    }
    return double{1} * count / (side * side);
}

}  // namespace fi::test

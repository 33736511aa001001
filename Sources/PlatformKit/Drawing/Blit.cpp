// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/Blit.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace fi {

namespace {

constexpr uint8_t kOpaque = 255;

/// The part of one side that lies inside: where it starts on either picture, and how long it is.
struct Stretch {
    uint32_t destination;
    uint32_t source;
    uint32_t length;
};

std::optional<Stretch> overlap(int64_t position, uint32_t length, uint32_t room) {
    // The early exits leave |position| <= 2^32, so that no sum below can overflow.
    if (position >= int64_t{room} || position <= -int64_t{length}) return std::nullopt;
    const int64_t start = std::max<int64_t>(position, 0);
    const int64_t end = std::min<int64_t>(position + int64_t{length}, room);
    return Stretch{static_cast<uint32_t>(start), static_cast<uint32_t>(start - position),
                   static_cast<uint32_t>(end - start)};
}

struct Overlap {
    Stretch columns;
    Stretch rows;
};

std::optional<Overlap> overlap(const PixelBuffer& destination, const PixelRect& rect) {
    const auto columns = overlap(rect.x, rect.width, destination.width());
    const auto rows = overlap(rect.y, rect.height, destination.height());
    if (!columns || !rows) return std::nullopt;
    return Overlap{*columns, *rows};
}

uint8_t* pixelAt(PixelBuffer& picture, const Overlap& part, uint32_t row) {
    return picture.row(part.rows.destination + row) +
           size_t{part.columns.destination} * bytesPerPixel(picture.layout());
}

void replicateGray(const uint8_t* gray, uint8_t* color, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        uint8_t* pixel = color + size_t{i} * 4;
        pixel[0] = pixel[1] = pixel[2] = gray[i];
        pixel[3] = kOpaque;
    }
}

/// Exact for 0 and 255, rounded to nearest between.
uint8_t blend(uint8_t below, uint8_t above, uint8_t coverage) {
    const uint32_t sum = uint32_t{below} * (255u - coverage) + uint32_t{above} * coverage;
    return static_cast<uint8_t>((sum + 127) / 255);
}

void blendRow(uint8_t* at, PixelLayout layout, std::span<const uint8_t> coverage, PixelColor color) {
    for (const uint8_t covered : coverage) {
        if (layout == PixelLayout::Gray8) {
            at[0] = blend(at[0], color.green, covered);
        } else {
            at[0] = blend(at[0], color.red, covered);
            at[1] = blend(at[1], color.green, covered);
            at[2] = blend(at[2], color.blue, covered);
            at[3] = kOpaque;
        }
        at += bytesPerPixel(layout);
    }
}

bool isComplete(const CoverageMask& mask) {
    if (mask.width == 0 || mask.height == 0) return true;
    if (mask.rowBytes < mask.width || mask.bytes.size() < mask.width) return false;
    return (mask.bytes.size() - mask.width) / mask.rowBytes >= mask.height - 1;
}

}  // namespace

bool copyInto(PixelBuffer& destination, int64_t x, int64_t y, const PixelBuffer& source) {
    const bool replicate = source.layout() != destination.layout();
    if (replicate && destination.layout() == PixelLayout::Gray8) return false;
    const auto part = overlap(destination, {x, y, source.width(), source.height()});
    if (!part) return true;
    const size_t sourcePixel = bytesPerPixel(source.layout());
    for (uint32_t row = 0; row < part->rows.length; ++row) {
        const uint8_t* from = source.row(part->rows.source + row) + part->columns.source * sourcePixel;
        uint8_t* to = pixelAt(destination, *part, row);
        if (replicate) {
            replicateGray(from, to, part->columns.length);
        } else {
            std::memcpy(to, from, part->columns.length * sourcePixel);
        }
    }
    return true;
}

void fill(PixelBuffer& destination, const PixelRect& rect, PixelColor color) {
    const auto part = overlap(destination, rect);
    if (!part) return;
    const size_t pixelBytes = bytesPerPixel(destination.layout());
    const uint8_t pattern[4] = {color.red, color.green, color.blue, kOpaque};
    const uint8_t* pixel = destination.layout() == PixelLayout::Gray8 ? pattern + 1 : pattern;
    uint8_t* first = pixelAt(destination, *part, 0);
    for (uint32_t i = 0; i < part->columns.length; ++i) {
        std::memcpy(first + i * pixelBytes, pixel, pixelBytes);
    }
    for (uint32_t row = 1; row < part->rows.length; ++row) {
        std::memcpy(pixelAt(destination, *part, row), first, part->columns.length * pixelBytes);
    }
}

bool drawMask(PixelBuffer& destination, int64_t x, int64_t y, const CoverageMask& mask, PixelColor color) {
    if (!isComplete(mask)) return false;
    const auto part = overlap(destination, {x, y, mask.width, mask.height});
    if (!part) return true;
    for (uint32_t row = 0; row < part->rows.length; ++row) {
        const size_t start = (size_t{part->rows.source} + row) * mask.rowBytes + part->columns.source;
        blendRow(pixelAt(destination, *part, row), destination.layout(),
                 mask.bytes.subspan(start, part->columns.length), color);
    }
    return true;
}

}  // namespace fi

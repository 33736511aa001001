// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/UprightImage.h"

#include <algorithm>
#include <utility>

#include "PlatformKit/Drawing/Scaling.h"
#include "PlatformKit/Drawing/Turns.h"
#include "PlatformKit/Imaging/Failures.h"
#include "PlatformKit/Imaging/SourceReader.h"

namespace fi {

namespace {

struct Sides {
    uint32_t width;
    uint32_t height;

    [[nodiscard]] Sides swapped() const { return {height, width}; }
};

/// `side` in proportion to the other side's way from `from` to `to`, rounded, at least 1.
uint32_t inProportion(uint32_t side, uint32_t from, uint32_t to) {
    // to <= from, so the result is at most `side`; the products of 32-bit numbers fit.
    return static_cast<uint32_t>(std::max<uint64_t>((uint64_t{side} * to + from / 2) / from, 1));
}

/// The largest size with the same shape that fits into the box, and is not larger than `full`.
Sides fitting(Sides full, Sides box) {
    const Sides bound = {box.width == 0 ? full.width : std::min(box.width, full.width),
                         box.height == 0 ? full.height : std::min(box.height, full.height)};
    if (uint64_t{full.width} * bound.height >= uint64_t{full.height} * bound.width) {
        return {bound.width, inProportion(full.height, full.width, bound.width)};
    }
    return {inProportion(full.width, full.height, bound.height), bound.height};
}

void reportNoMemory(ImageFailure* failure) {
    report(failure, ImageError::NoMemory, "There is not enough memory.");
}

/// Scales before it turns: the small picture is turned, not the large one.
std::optional<PixelBuffer> scaledAndTurned(PixelBuffer pixels, Sides target, Turn turn) {
    if (pixels.width() != target.width || pixels.height() != target.height) {
        auto small = scaled(pixels, target.width, target.height);
        if (!small) return std::nullopt;
        pixels = std::move(*small);
    }
    if (turn == Turn::None) return pixels;
    return turned(pixels, turn);
}

Ref<const CGImage> makeUpright(ReadPicture picture, Sides target, Turn turn, ImageFailure* failure) {
    auto upright = scaledAndTurned(std::move(picture.pixels), target, turn);
    if (!upright) {
        reportNoMemory(failure);
        return nullptr;
    }
    if (swapsSides(turn)) std::swap(picture.traits.density.width, picture.traits.density.height);
    return ImagePixels::makeImage(std::move(*upright), std::move(picture.traits));
}

Ref<const CGImage> readUpright(ImageReader& reader, uint32_t index, Sides box, ImageFailure* failure) {
    if (!reader.has(index, failure)) return nullptr;
    const auto& header = reader.header(index);
    if (!header) {
        report(failure, header.reason());
        return nullptr;
    }
    const Turn turn = turnForOrientation(reader.orientation(index).value_or(1));
    if (reader.lostMetadata()) {
        report(failure, readFailure());
        return nullptr;
    }
    const Sides target = fitting({header->width, header->height}, swapsSides(turn) ? box.swapped() : box);
    auto picture = reader.decode(index, {target.width, target.height});
    if (!picture) {
        report(failure, picture.reason());
        return nullptr;
    }
    return makeUpright(std::move(*picture), target, turn, failure);
}

}  // namespace

Ref<const CGImage> createUprightImage(const ImageSource& source, uint32_t index, uint32_t boxWidth,
                                      uint32_t boxHeight, ImageFailure* failure) {
    return withoutExceptions(failure, [&]() -> Ref<const CGImage> {
        return readUpright(SourceReader::of(source), index, {boxWidth, boxHeight}, failure);
    });
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/Turns.h"

#include "PlatformKit/Drawing/TurnBits.h"
#include "PlatformKit/Drawing/TurnBlocks.h"

namespace fi {

namespace {

/// Results from this size on would only drive everything else out of the caches.
constexpr size_t kPastCachesBytes = size_t{8} << 20;

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

/// The rows of `picture` from the top, or from the bottom.
SourceRows rowsOf(const PixelBuffer& picture, bool fromBottom) {
    const auto stride = static_cast<ptrdiff_t>(picture.rowBytes());
    return fromBottom ? SourceRows{picture.row(picture.height() - 1), -stride}
                      : SourceRows{picture.row(0), stride};
}

TargetRows rowsOf(PixelBuffer& picture, bool fromBottom) {
    const auto stride = static_cast<ptrdiff_t>(picture.rowBytes());
    return fromBottom ? TargetRows{picture.row(picture.height() - 1), -stride}
                      : TargetRows{picture.row(0), stride};
}

void turnBits(const BitCopy& copy, Steps steps) {
    if (steps.swap) {
        exchangeBitAxes(copy);
    } else if (steps.flipX) {
        mirrorBitRows(copy);
    } else {
        copyBitRows(copy);
    }
}

void turnPixels(const PixelCopy& copy, Steps steps) {
    if (steps.swap) {
        exchangeAxes(copy, kFastestForm);
    } else if (steps.flipX) {
        mirrorRows(copy, kFastestForm);
    } else {
        copyRows(copy);
    }
}

bool fits(const PixelBuffer& picture, const PixelBuffer& target, bool swap) {
    const uint32_t width = swap ? picture.height() : picture.width();
    const uint32_t height = swap ? picture.width() : picture.height();
    return target.layout() == picture.layout() && target.width() == width && target.height() == height &&
           &target != &picture;
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
    if (!result || !turnInto(picture, *result, turn)) return std::nullopt;
    return result;
}

bool turnInto(const PixelBuffer& picture, PixelBuffer& target, Turn turn) {
    const Steps steps = stepsOf(turn);
    if (!fits(picture, target, steps.swap)) return false;
    if (picture.width() == 0 || picture.height() == 0) return true;
    // When the axes change places, the source's columns are the target's rows.
    const SourceRows from = rowsOf(picture, steps.flipY);
    const TargetRows to = rowsOf(target, steps.swap && steps.flipX);
    if (picture.layout() == PixelLayout::Gray1) {
        turnBits({from, to, picture.width(), picture.height()}, steps);
    } else {
        turnPixels({from, to, picture.width(), picture.height(), bytesPerPixel(picture.layout()),
                    target.rowBytes() >= kPastCachesBytes / target.height()},
                   steps);
    }
    return true;
}

}  // namespace fi

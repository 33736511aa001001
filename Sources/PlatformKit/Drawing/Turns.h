// SPDX-License-Identifier: Apache-2.0
// Exact whole-pixel turns and mirrors: what makes a stored picture upright.
#pragma once

#include <cstdint>
#include <optional>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi {

/// The eight ways to lay a picture on the pixel grid, in the order of the Exif orientations 1 to 8.
enum class Turn : uint8_t {
    None,
    MirrorHorizontal,  ///< left and right change places
    Half,              ///< by 180 degrees
    MirrorVertical,    ///< top and bottom change places
    Transpose,         ///< mirrored at the diagonal from top left to bottom right
    Clockwise,         ///< by 90 degrees
    Transverse,        ///< mirrored at the other diagonal
    CounterClockwise,  ///< by 90 degrees
};

/// What makes a picture with this Exif orientation upright; None for values outside 1 to 8.
[[nodiscard]] Turn turnForOrientation(uint16_t exifOrientation);

/// True when width and height change places.
[[nodiscard]] constexpr bool swapsSides(Turn turn) {
    return turn >= Turn::Transpose;
}

/// A turned copy; nullopt when memory is short. Any thread.
[[nodiscard]] std::optional<PixelBuffer> turned(const PixelBuffer& picture, Turn turn);

/// Turns the picture into memory that is already there: all pixels of `target` are replaced; in the last
/// byte of a row of bits, what lies beyond the width becomes 0. False, with nothing changed, when the
/// target has another layout or other sides than the turned picture, or is the picture itself. Any thread.
[[nodiscard]] bool turnInto(const PixelBuffer& picture, PixelBuffer& target, Turn turn);

}  // namespace fi

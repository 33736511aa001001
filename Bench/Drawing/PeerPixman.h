// SPDX-License-Identifier: Apache-2.0
// pixman's way to turn a picture by a quarter.
#pragma once

#include <functional>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi::bench {

/// What pixman is told that the four bytes of a pixel are.
enum class PixmanOrder : unsigned char {
    AsStored,  ///< R, G, B and a byte without meaning
    Swapped,   ///< B, G, R: wrong, but for these it has a routine of its own, and a turn moves them alike
};

/// Turns `picture` clockwise into `target`, which is as wide as the picture is high. Both outlive the
/// result.
[[nodiscard]] std::function<void()> pixmanQuarterTurn(PixelBuffer& picture, PixelBuffer& target,
                                                      PixmanOrder order);

}  // namespace fi::bench

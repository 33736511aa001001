// SPDX-License-Identifier: Apache-2.0
// How pixels that are drawn combine with those that are there.
#pragma once

#include "PlatformKit/Codecs/PictPixelMap.h"

namespace fi {

enum PictMode : uint16_t {
    kPictCopy = 0,
    kPictOr = 1,
    kPictXor = 2,
    kPictBic = 3,
    kPictBlend = 32,
    kPictAddPin = 33,
    kPictAddOver = 34,
    kPictSubtractPin = 35,
    kPictTransparent = 36,
    kPictAddMaximum = 37,
    kPictSubtractOver = 38,
    kPictAddMinimum = 39,
};

/// A stored mode without the request to dither, and copying in place of what is not defined for pixels.
/// The four "not" modes, which invert first, are those of bit 2.
[[nodiscard]] uint16_t plainPictMode(uint16_t stored);

struct PictMixing {
    uint16_t mode = kPictCopy;          ///< of plainPictMode()
    PictColor operand = kPictBlack;     ///< weight of blending, bound of the pinned modes
    PictColor background = kPictWhite;  ///< what transparent drawing leaves out

    [[nodiscard]] bool isCopy() const { return mode == kPictCopy; }
    /// True when black and white mixed give nothing else.
    [[nodiscard]] bool keepsBlackAndWhite() const;
    /// The color to leave where `source` is drawn over `target`. Black stands for a set bit of the
    /// Boolean modes, as on a screen of one bit.
    [[nodiscard]] PictColor mix(PictColor source, PictColor target) const;
};

}  // namespace fi

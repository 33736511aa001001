// SPDX-License-Identifier: Apache-2.0
// What a picture holds, found without unpacking pixels.
#pragma once

#include "PlatformKit/Codecs/PictModes.h"
#include "PlatformKit/Codecs/PictWalk.h"

namespace fi {

/// The colors of the indices of a map; empty for direct pixels. Those of a bit map come from the state.
[[nodiscard]] std::vector<PictColor> pictColors(const PictBits& bits, const PictState& state);

[[nodiscard]] PictMixing pictMixing(uint16_t storedMode, const PictState& state);

struct PictContents {
    bool hasPixels = false;                    ///< anything that is drawn
    bool hasShapes = false;                    ///< lines, texts or shapes
    bool hasOtherImages = false;               ///< images that are not read
    PixelLayout layout = PixelLayout::RGBX32;  ///< the simplest that shows all pixels
    PictWalk::Ending ending = PictWalk::Ending::Complete;
};

/// Looks no further than to the first part with colors, as the layout is certain there.
[[nodiscard]] PictContents surveyPict(ByteSource& source, const PictHead& head);

}  // namespace fi

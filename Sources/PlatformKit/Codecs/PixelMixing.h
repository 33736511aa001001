// SPDX-License-Identifier: Apache-2.0
// What codecs do with a row of four-byte pixels before it is plain R, G, B, 255.
#pragma once

#include <cstdint>

namespace fi {

/// Cyan, magenta, yellow and black, 255 being full ink (none when `inverted`), to R, G, B, 255.
void convertInks(uint8_t* row, uint32_t pixels, bool inverted);

/// R, G, B, alpha, the colors already multiplied with the alpha, laid on white.
void layOnWhite(uint8_t* row, uint32_t pixels);

/// R, G, B, alpha, the colors then multiplied with the alpha.
void multiplyWithAlpha(uint8_t* row, uint32_t pixels);

}  // namespace fi

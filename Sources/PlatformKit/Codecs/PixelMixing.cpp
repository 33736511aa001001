// SPDX-License-Identifier: Apache-2.0
// Plain arithmetic, without profiles.
#include "PlatformKit/Codecs/PixelMixing.h"

#include <algorithm>

namespace fi {

void convertInks(uint8_t* row, uint32_t pixels, bool inverted) {
    const auto mask = static_cast<uint8_t>(inverted ? 0x00 : 0xFF);
    for (; pixels > 0; --pixels, row += 4) {
        const auto light = static_cast<unsigned>(row[3] ^ mask);
        for (int i = 0; i < 3; ++i) {
            const unsigned product = static_cast<unsigned>(row[i] ^ mask) * light;
            row[i] = static_cast<uint8_t>((product + 127) / 255);
        }
        row[3] = 255;
    }
}

void layOnWhite(uint8_t* row, uint32_t pixels) {
    for (; pixels > 0; --pixels, row += 4) {
        const int white = 255 - row[3];
        for (int i = 0; i < 3; ++i) {
            row[i] = static_cast<uint8_t>(std::min(row[i] + white, 255));
        }
        row[3] = 255;
    }
}

void multiplyWithAlpha(uint8_t* row, uint32_t pixels) {
    for (; pixels > 0; --pixels, row += 4) {
        for (int i = 0; i < 3; ++i) {
            row[i] = static_cast<uint8_t>((row[i] * row[3] + 127) / 255);
        }
    }
}

}  // namespace fi

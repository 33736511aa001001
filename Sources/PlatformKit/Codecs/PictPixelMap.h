// SPDX-License-Identifier: Apache-2.0
// The description in front of the pixels of a bit map or a pixel map.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "PlatformKit/Codecs/PictInput.h"
#include "PlatformKit/Codecs/PictRegion.h"

namespace fi {

/// R, G, B and 255 in the order of memory.
using PictColor = uint32_t;
inline constexpr PictColor kPictBlack = 0xFF000000;
inline constexpr PictColor kPictWhite = 0xFFFFFFFF;

[[nodiscard]] constexpr PictColor pictColor(uint32_t red, uint32_t green, uint32_t blue) {
    return red | green << 8 | blue << 16 | 0xFF000000;
}
[[nodiscard]] constexpr bool isGray(PictColor color) {
    return (color & 0xFF) == (color >> 8 & 0xFF) && (color & 0xFF) == (color >> 16 & 0xFF);
}
/// Reads three words, of which the high bytes count.
[[nodiscard]] PictColor readPictColor(PictInput& input);

enum class PictPacking : uint8_t {
    None,       ///< rows as they are
    DropAlpha,  ///< 32 bits without the first byte
    Bytes,      ///< PackBits
    Words,      ///< PackBits with words in place of bytes
    Planes,     ///< PackBits of all reds of a row, all greens, all blues, perhaps behind all alphas
};

struct PictPixelMap {
    uint32_t rowBytes = 0;  ///< of an unpacked row
    PictRect bounds;        ///< the coordinates of the pixels
    uint32_t bits = 1;      ///< of a pixel: 1, 2, 4, 8, 16 or 32
    uint32_t planes = 3;    ///< components of 32 bits, an alpha included
    bool isBitMap = false;  ///< without colors of its own
    PictPacking packing = PictPacking::None;
    std::vector<PictColor> colors;  ///< 2^bits of up to 8 bits; empty for direct pixels and bit maps
};

struct PictBits {
    PictPixelMap map;
    PictRect source;  ///< the part that is drawn, in coordinates of the map
    PictRect target;  ///< where it is drawn to
    uint16_t mode = 0;
    std::optional<PictRegion> mask;
};

/// Reads what stands between one of the six opcodes (see isBits()) and its pixels. Nullopt when it makes no
/// sense: the length of the pixels is unknown then.
[[nodiscard]] std::optional<PictBits> readPictBits(PictInput& input, uint16_t opcode);

/// Reads the map and the colors inside of a pattern of pixels.
[[nodiscard]] std::optional<PictPixelMap> readPatternMap(PictInput& input);

}  // namespace fi

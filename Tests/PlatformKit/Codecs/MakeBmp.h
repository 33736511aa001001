// SPDX-License-Identifier: Apache-2.0
// Makes BMP files field by field, sound ones and others.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace fi::test {

/// A color of a palette as it is stored.
struct StoredColor {
    uint8_t blue = 0;
    uint8_t green = 0;
    uint8_t red = 0;
};

struct BmpRecipe {
    uint32_t headerBytes = 40;  ///< 12 makes OS/2's first kind; fields that do not fit are left out
    int32_t width = 1;
    int32_t height = 1;
    uint16_t planes = 1;
    uint16_t bits = 24;
    uint32_t compression = 0;
    int32_t perMetreX = 0;
    int32_t perMetreY = 0;
    std::optional<uint32_t> colorsUsed;  ///< otherwise the colors of the palette
    std::vector<uint32_t> masks;  ///< red, green, blue, alpha: in the header, or behind 40 bytes of it
    std::vector<StoredColor> palette;
    std::optional<uint32_t> pixelOffset;  ///< otherwise the right one
    std::optional<uint32_t> fileBytes;    ///< otherwise the right number
    std::vector<uint8_t> pixels;          ///< with the bytes that fill up rows
    std::vector<uint8_t> profile;         ///< behind the pixels, for 124 bytes of header
    bool array = false;                   ///< the first picture of an OS/2 bitmap array
};

[[nodiscard]] std::vector<uint8_t> makeBmp(const BmpRecipe& recipe);

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// What the headers of a BMP file say: the OS/2 ones of 12 and of 16 to 64 bytes, the Windows ones of 40 to
// 124.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/SourceWindow.h"

namespace fi {

enum class BmpPacking : uint8_t {
    Plain,   ///< rows of indices or colors
    Fields,  ///< rows of words whose colors lie under masks
    Runs8,
    Runs4,
    Runs24,   ///< OS/2 only; not decoded
    Huffman,  ///< OS/2 only; not decoded
    Jpeg,     ///< a whole JPEG file stands for the pixels; not decoded
    Png,      ///< the same with a PNG file; not decoded
};

struct BmpColor {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;
};

/// The bits of a pixel's word that hold each color; none for a color that is missing.
struct BmpMasks {
    uint32_t red = 0;
    uint32_t green = 0;
    uint32_t blue = 0;
    uint32_t alpha = 0;
};

struct BmpHeader {
    uint32_t width = 0;  ///< neither side is zero
    uint32_t height = 0;
    uint32_t bits = 0;  ///< of a stored pixel: 1, 2, 4, 8, 16, 24 or 32; 0 where a JPEG or PNG says it
    BmpPacking packing = BmpPacking::Plain;
    bool topDown = false;            ///< the first stored row is the highest
    BmpMasks masks;                  ///< for 16 and 32 bits
    std::vector<BmpColor> palette;   ///< for up to 8 bits: what the file has of it
    uint64_t pixelStart = 0;         ///< where the pixels begin in the file
    std::optional<Density> density;  ///< dots per inch
    uint64_t profileStart = 0;       ///< of an embedded profile in the file
    uint32_t profileBytes = 0;       ///< 0 when there is none

    [[nodiscard]] bool hasPalette() const { return bits != 0 && bits <= 8; }
    /// The color of an index; black for one that the file's palette lacks.
    [[nodiscard]] BmpColor color(uint32_t index) const {
        return index < palette.size() ? palette[index] : BmpColor{};
    }
    /// True when every color of the palette is gray.
    [[nodiscard]] bool isGray() const;
    /// True for one bit of which one value is black and the other white.
    [[nodiscard]] bool isBlackAndWhite() const;
    /// The layout that the pixels decode to.
    [[nodiscard]] PixelLayout layout() const;
};

/// Reads the headers and the palette of the file, or of the first picture of an OS/2 bitmap array.
CodecResult<BmpHeader> parseBmpHeader(SourceWindow& window);

}  // namespace fi

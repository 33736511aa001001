// SPDX-License-Identifier: Apache-2.0
// Turns stored rows of a BMP file into rows of pixels.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "PlatformKit/Codecs/BmpHeader.h"

namespace fi {

class BmpPixels {
public:
    explicit BmpPixels(const BmpHeader& header);

    /// Bytes of a stored row that hold pixels. In the file, rows begin at multiples of four bytes.
    [[nodiscard]] uint64_t rowBytes() const { return (uint64_t{m_width} * m_bits + 7) / 8; }

    /// Makes a row of the header's layout from `stored`, which has rowBytes() or more. For Plain and
    /// Fields.
    void convert(std::span<const uint8_t> stored, uint8_t* out) const;

    /// Puts `count` pixels of one index at pixel `x` of a row of Gray8 or RGBX32.
    void putIndex(uint8_t index, uint32_t count, uint8_t* row, uint32_t x) const;

private:
    /// One color of a masked word. Levels of up to twelve bits are looked up.
    struct Field {
        uint32_t shift = 0;
        uint32_t most = 0;  ///< the largest value; 0 when the field is missing
        std::vector<uint8_t> levels;

        explicit Field(uint32_t mask);
        [[nodiscard]] uint8_t level(uint32_t word, uint32_t mask) const;
    };
    using Converter = void (BmpPixels::*)(const uint8_t* in, uint8_t* out) const;

    [[nodiscard]] Converter converterFor(const BmpHeader& header) const;
    void takeBits(const uint8_t* in, uint8_t* out) const;
    template <uint32_t kBits>
    void takeGray(const uint8_t* in, uint8_t* out) const;
    template <uint32_t kBits>
    void takeColors(const uint8_t* in, uint8_t* out) const;
    template <uint32_t kBytes>
    void takeBytes(const uint8_t* in, uint8_t* out) const;
    template <uint32_t kBytes, bool kAlpha>
    void takeFields(const uint8_t* in, uint8_t* out) const;

    uint32_t m_width;
    uint32_t m_bits;
    PixelLayout m_layout;
    bool m_inverted;                                     // of Gray1: a set bit is black
    std::array<uint8_t, 256> m_grays{};                  // by index
    std::array<std::array<uint8_t, 4>, 256> m_colors{};  // R, G, B, 255, by index
    BmpMasks m_masks;
    Field m_red;
    Field m_green;
    Field m_blue;
    Field m_alpha;
    Converter m_converter;
};

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// A loop for each way to store a row; what differs from pixel to pixel is looked up.
#include "PlatformKit/Codecs/BmpPixels.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace fi {

namespace {

constexpr uint32_t kMaximumLookUp = 4095;

/// The nearest of 256 levels for `value` of `most`.
uint8_t nearestLevel(uint32_t value, uint32_t most) {
    return static_cast<uint8_t>((uint64_t{value} * 255 + most / 2) / most);
}

uint8_t multiplied(uint32_t color, uint32_t alpha) {
    return static_cast<uint8_t>((color * alpha + 127) / 255);
}

template <uint32_t kBytes>
uint32_t wordAt(const uint8_t* in) {
    uint32_t word = 0;
    std::memcpy(&word, in, kBytes);  // little-endian, as the file
    return word;
}

}  // namespace

BmpPixels::Field::Field(uint32_t mask) {
    if (mask == 0) return;
    shift = static_cast<uint32_t>(std::countr_zero(mask));
    most = mask >> shift;
    if (most > kMaximumLookUp) return;
    for (uint32_t value = 0; value <= most; ++value)
        levels.push_back(nearestLevel(value, most));
}

inline uint8_t BmpPixels::Field::level(uint32_t word, uint32_t mask) const {
    const uint32_t value = (word & mask) >> shift;
    if (!levels.empty()) return levels[value];
    return most == 0 ? uint8_t{0} : nearestLevel(value, most);
}

BmpPixels::BmpPixels(const BmpHeader& header)
    : m_width(header.width),
      m_bits(header.bits),
      m_layout(header.layout()),
      m_inverted(header.color(0).red != 0),
      m_masks(header.masks),
      m_red(m_masks.red),
      m_green(m_masks.green),
      m_blue(m_masks.blue),
      m_alpha(m_masks.alpha),
      m_converter(converterFor(header)) {
    for (uint32_t i = 0; i < 256; ++i) {
        const BmpColor color = header.color(i);
        m_grays[i] = color.red;
        m_colors[i] = {color.red, color.green, color.blue, 255};
    }
}

BmpPixels::Converter BmpPixels::converterFor(const BmpHeader& header) const {
    const bool gray = m_layout == PixelLayout::Gray8;
    const bool alpha = m_layout == PixelLayout::RGBA32;
    switch (m_bits) {
        case 1:
            return m_layout == PixelLayout::Gray1 ? &BmpPixels::takeBits : &BmpPixels::takeColors<1>;
        case 2:
            return gray ? &BmpPixels::takeGray<2> : &BmpPixels::takeColors<2>;
        case 4:
            return gray ? &BmpPixels::takeGray<4> : &BmpPixels::takeColors<4>;
        case 8:
            return gray ? &BmpPixels::takeGray<8> : &BmpPixels::takeColors<8>;
        case 16:
            return alpha ? &BmpPixels::takeFields<2, true> : &BmpPixels::takeFields<2, false>;
        case 24:
            return &BmpPixels::takeBytes<3>;
        default:
            break;
    }
    if (alpha) return &BmpPixels::takeFields<4, true>;
    const bool bytes =
        header.masks.red == 0xFF0000 && header.masks.green == 0x00FF00 && header.masks.blue == 0x0000FF;
    return bytes ? &BmpPixels::takeBytes<4> : &BmpPixels::takeFields<4, false>;
}

void BmpPixels::convert(std::span<const uint8_t> stored, uint8_t* out) const {
    if (stored.size() < rowBytes()) return;
    (this->*m_converter)(stored.data(), out);
}

void BmpPixels::putIndex(uint8_t index, uint32_t count, uint8_t* row, uint32_t x) const {
    if (m_layout == PixelLayout::Gray8) {
        std::memset(row + x, m_grays[index], count);
        return;
    }
    uint8_t* out = row + size_t{x} * 4;
    for (uint32_t i = 0; i < count; ++i, out += 4)
        std::memcpy(out, m_colors[index].data(), 4);
}

void BmpPixels::takeBits(const uint8_t* in, uint8_t* out) const {
    const auto bytes = static_cast<size_t>(rowBytes());
    const uint8_t flip = m_inverted ? 0xFF : 0;
    for (size_t i = 0; i < bytes; ++i)
        out[i] = static_cast<uint8_t>(in[i] ^ flip);
    // Bits behind the last pixel stay clear.
    if (m_width % 8 != 0) out[bytes - 1] &= static_cast<uint8_t>(0xFF << (8 - m_width % 8));
}

template <uint32_t kBits>
void BmpPixels::takeGray(const uint8_t* in, uint8_t* out) const {
    constexpr uint32_t kPixels = 8 / kBits;
    for (uint32_t x = 0; x < m_width; ++x) {
        const uint32_t shift = 8 - kBits - x % kPixels * kBits;
        out[x] = m_grays[(in[x / kPixels] >> shift) & ((1U << kBits) - 1)];
    }
}

template <uint32_t kBits>
void BmpPixels::takeColors(const uint8_t* in, uint8_t* out) const {
    constexpr uint32_t kPixels = 8 / kBits;
    for (uint32_t x = 0; x < m_width; ++x) {
        const uint32_t shift = 8 - kBits - x % kPixels * kBits;
        const uint32_t index = (in[x / kPixels] >> shift) & ((1U << kBits) - 1);
        std::memcpy(out + size_t{x} * 4, m_colors[index].data(), 4);
    }
}

template <uint32_t kBytes>
void BmpPixels::takeBytes(const uint8_t* in, uint8_t* out) const {
    for (uint32_t x = 0; x < m_width; ++x, in += kBytes, out += 4) {
        const uint8_t pixel[4] = {in[2], in[1], in[0], 255};
        std::memcpy(out, pixel, 4);
    }
}

template <uint32_t kBytes, bool kAlpha>
void BmpPixels::takeFields(const uint8_t* in, uint8_t* out) const {
    for (uint32_t x = 0; x < m_width; ++x, in += kBytes, out += 4) {
        const uint32_t word = wordAt<kBytes>(in);
        out[0] = m_red.level(word, m_masks.red);
        out[1] = m_green.level(word, m_masks.green);
        out[2] = m_blue.level(word, m_masks.blue);
        out[3] = kAlpha ? m_alpha.level(word, m_masks.alpha) : uint8_t{255};
        if (!kAlpha) continue;
        for (int color = 0; color < 3; ++color)
            out[color] = multiplied(out[color], out[3]);
    }
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// One sample at a time: these depths are rare, so plainness comes before speed.
#include "PlatformKit/Codecs/TiffSamples.h"

#include <bit>
#include <cmath>

#include "PlatformKit/Base/ByteView.h"

namespace fi {

namespace {

constexpr ByteOrder kNative =
    std::endian::native == std::endian::little ? ByteOrder::Little : ByteOrder::Big;

bool isWord(uint32_t bits) {
    return bits == 8 || bits == 16 || bits == 32 || bits == 64;
}

uint64_t wordAt(ByteView row, uint32_t bits, uint64_t index) {
    switch (bits) {
        case 8:
            return row.u8(index).value_or(0);
        case 16:
            return row.u16(index * 2).value_or(0);
        case 32:
            return row.u32(index * 4).value_or(0);
        default:
            return row.u64(index * 8).value_or(0);
    }
}

/// libtiff puts three-byte samples into this machine's order as well.
uint64_t threeBytesAt(ByteView row, uint64_t index) {
    const uint64_t a = row.u8(index * 3).value_or(0);
    const uint64_t b = row.u8(index * 3 + 1).value_or(0);
    const uint64_t c = row.u8(index * 3 + 2).value_or(0);
    return kNative == ByteOrder::Little ? a | b << 8 | c << 16 : a << 16 | b << 8 | c;
}

uint64_t packedAt(ByteView row, uint32_t bits, uint64_t index) {
    const uint64_t start = index * bits;
    const uint64_t lastByte = (start + bits - 1) / 8;
    uint64_t value = 0;
    for (uint64_t at = start / 8; at <= lastByte; ++at) {
        value = value << 8 | row.u8(at).value_or(0);  // at most five bytes for 32 bits
    }
    const uint64_t behind = (lastByte + 1) * 8 - (start + bits);
    return (value >> behind) & ((uint64_t{1} << bits) - 1);
}

double halfToDouble(uint16_t half) {
    const int exponent = (half >> 10) & 0x1F;
    const int fraction = half & 0x3FF;
    const double sign = (half & 0x8000) != 0 ? -1.0 : 1.0;
    if (exponent == 0) return sign * std::ldexp(fraction, -24);
    if (exponent == 31) return fraction == 0 ? sign * HUGE_VAL : std::nan("");
    return sign * std::ldexp(fraction + 1024, exponent - 25);
}

double floatingAt(ByteView row, uint32_t bits, uint64_t index) {
    const uint64_t word = wordAt(row, bits, index);
    if (bits == 16) return halfToDouble(static_cast<uint16_t>(word));
    if (bits == 32) return double{std::bit_cast<float>(static_cast<uint32_t>(word))};
    return std::bit_cast<double>(word);
}

uint8_t fromUnit(double value) {
    if (!(value > 0)) return 0;  // not-a-number as well
    return value >= 1 ? uint8_t{255} : static_cast<uint8_t>(value * 255 + 0.5);
}

uint8_t fromInteger(uint64_t value, uint32_t bits) {
    if (bits == 8) return static_cast<uint8_t>(value);
    // Below 32 bits exact; beyond, the lower bits could not change the result by more than rounding.
    const uint32_t kept = bits > 32 ? 32 : bits;
    const uint64_t most = (uint64_t{1} << kept) - 1;
    return static_cast<uint8_t>(((value >> (bits - kept)) * 255 + most / 2) / most);
}

uint8_t sampleAt(ByteView row, SampleFormat format, uint64_t index) {
    if (format.floating) return fromUnit(floatingAt(row, format.bits, index));
    if (isWord(format.bits)) return fromInteger(wordAt(row, format.bits, index), format.bits);
    if (format.bits == 24) return fromInteger(threeBytesAt(row, index), 24);
    return fromInteger(packedAt(row, format.bits, index), format.bits);
}

}  // namespace

bool SampleFormat::isKnown() const {
    if (floating) return bits == 16 || bits == 32 || bits == 64;
    return (bits >= 1 && bits <= 32) || bits == 64;
}

void takeSamples(std::span<const uint8_t> row, SampleFormat format, uint64_t first, uint64_t step,
                 uint32_t count, uint8_t* out, uint32_t outStep) {
    const ByteView view(row, kNative);
    for (uint32_t i = 0; i < count; ++i, out += outStep) {
        *out = sampleAt(view, format, first + i * step);
    }
}

}  // namespace fi

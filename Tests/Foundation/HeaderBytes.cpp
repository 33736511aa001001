// SPDX-License-Identifier: Apache-2.0
#include "Foundation/HeaderBytes.h"

#include <initializer_list>

namespace fi::test {

namespace {

using Bytes = std::vector<uint8_t>;

enum TiffType : uint16_t { kShort = 3, kLong = 4, kRational = 5 };

void put16(Bytes& out, uint32_t value) {
    out.push_back(static_cast<uint8_t>(value));
    out.push_back(static_cast<uint8_t>(value >> 8U));
}

void put32(Bytes& out, uint32_t value) {
    put16(out, value);
    put16(out, value >> 16U);
}

void putEntry(Bytes& out, uint16_t tag, TiffType type, uint32_t count, uint32_t value) {
    put16(out, tag);
    put16(out, type);
    put32(out, count);
    put32(out, value);
}

void putBytes(Bytes& out, std::initializer_list<uint8_t> bytes) {
    out.insert(out.end(), bytes);
}

void putBig16(Bytes& out, uint16_t value) {
    putBytes(out, {static_cast<uint8_t>(value >> 8U), static_cast<uint8_t>(value)});
}

uint16_t photometricOf(const HeaderFacts& facts) {
    constexpr uint16_t kBlackIsZero = 1;
    constexpr uint16_t kRGB = 2;
    constexpr uint16_t kSeparated = 5;
    if (facts.components == 1) return kBlackIsZero;
    return facts.components == 3 ? kRGB : kSeparated;
}

}  // namespace

std::vector<uint8_t> tiffWith(const HeaderFacts& facts) {
    constexpr uint32_t kEntries = 12;
    constexpr uint32_t kDirectory = 8;
    constexpr uint32_t kBits = kDirectory + 2 + kEntries * 12 + 4;
    constexpr uint32_t kDensity = kBits + 8;
    constexpr uint32_t kPixels = kDensity + 8;
    const uint32_t rowBytes = (uint32_t{facts.width} * facts.components * facts.bitsPerComponent + 7) / 8;
    const uint32_t size = rowBytes * facts.height;
    // A list of more than two 16-bit values does not fit into the entry itself.
    const bool bitsOutside = facts.components > 2;

    Bytes out = {'I', 'I', 42, 0};
    put32(out, kDirectory);
    put16(out, kEntries);
    putEntry(out, 256, kShort, 1, facts.width);
    putEntry(out, 257, kShort, 1, facts.height);
    putEntry(out, 258, kShort, facts.components, bitsOutside ? kBits : facts.bitsPerComponent);
    putEntry(out, 259, kShort, 1, 1);
    putEntry(out, 262, kShort, 1, photometricOf(facts));
    putEntry(out, 273, kLong, 1, kPixels);
    putEntry(out, 277, kShort, 1, facts.components);
    putEntry(out, 278, kLong, 1, facts.height);
    putEntry(out, 279, kLong, 1, size);
    putEntry(out, 282, kRational, 1, kDensity);
    putEntry(out, 283, kRational, 1, kDensity);
    putEntry(out, 296, kShort, 1, facts.dotsPerInch == 0 ? 1 : 2);
    put32(out, 0);
    for (int i = 0; i < 4; ++i)
        put16(out, facts.bitsPerComponent);
    put32(out, facts.dotsPerInch == 0 ? 1 : facts.dotsPerInch);
    put32(out, 1);
    out.resize(kPixels + size);
    return out;
}

std::vector<uint8_t> jpegWith(const HeaderFacts& facts) {
    const auto components = static_cast<uint8_t>(facts.components);
    Bytes out = {0xFF, 0xD8};
    if (facts.components < 4) {
        putBytes(out, {0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0, 1, 2});
        out.push_back(facts.dotsPerInch == 0 ? 0 : 1);
        putBig16(out, facts.dotsPerInch == 0 ? uint16_t{1} : facts.dotsPerInch);
        putBig16(out, facts.dotsPerInch == 0 ? uint16_t{1} : facts.dotsPerInch);
        putBytes(out, {0, 0});
    }
    putBytes(out, {0xFF, 0xC0, 0, static_cast<uint8_t>(8 + 3 * components), 8});
    putBig16(out, facts.height);
    putBig16(out, facts.width);
    out.push_back(components);
    for (uint8_t i = 1; i <= components; ++i)
        putBytes(out, {i, 0x11, 0});
    putBytes(out, {0xFF, 0xDA, 0, static_cast<uint8_t>(6 + 2 * components), components});
    for (uint8_t i = 1; i <= components; ++i)
        putBytes(out, {i, 0});
    putBytes(out, {0, 63, 0, 0xFF, 0xD9});
    return out;
}

}  // namespace fi::test

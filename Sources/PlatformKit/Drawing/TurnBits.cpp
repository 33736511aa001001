// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/TurnBits.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace fi {

namespace {

/// Bytes of a source row that are gone through at a time: their 512 rows of the target, a cache line of
/// each, stay near.
constexpr uint32_t kStripBytes = 64;

constexpr uint32_t bytesOf(uint32_t bits) {
    return bits / 8 + (bits % 8 != 0 ? 1 : 0);
}

/// The bits of a row's last byte that are pixels.
constexpr uint8_t lastByteMask(uint32_t width) {
    return width % 8 == 0 ? 0xFF : static_cast<uint8_t>(0xFF00U >> (width % 8));
}

constexpr std::array<uint8_t, 256> makeMirroredBytes() {
    std::array<uint8_t, 256> mirrored = {};
    for (uint32_t byte = 0; byte < 256; ++byte) {
        for (uint32_t bit = 0; bit < 8; ++bit) {
            if ((byte >> bit & 1) != 0) mirrored[byte] |= static_cast<uint8_t>(0x80U >> bit);
        }
    }
    return mirrored;
}
constexpr std::array<uint8_t, 256> kMirroredBytes = makeMirroredBytes();

void mirrorBits(const uint8_t* from, uint8_t* to, uint32_t width) {
    const uint32_t count = bytesOf(width);
    const uint32_t unused = count * 8 - width;
    for (uint32_t i = 0; i < count; ++i) {
        // The eight pixels that end where this byte of the target begins, seen from the right end.
        const uint32_t last = from[count - 1 - i];
        const uint32_t before = i + 1 < count ? from[count - 2 - i] : 0;
        to[i] = kMirroredBytes[(before << 8 | last) >> unused & 0xFF];
    }
}

/// Exchanges the two sets of bits that lie `distance` apart, the lower of them under `mask`.
constexpr uint64_t exchangeBits(uint64_t bits, uint64_t mask, unsigned distance) {
    const uint64_t differing = (bits ^ (bits >> distance)) & mask;
    return bits ^ differing ^ (differing << distance);
}

/// Eight rows of eight pixels, the first row in the highest byte: rows become columns.
constexpr uint64_t transposeSquare(uint64_t square) {
    square = exchangeBits(square, 0x00AA00AA00AA00AA, 7);
    square = exchangeBits(square, 0x0000CCCC0000CCCC, 14);
    return exchangeBits(square, 0x00000000F0F0F0F0, 28);
}

/// Eight pixels of each of `rows` rows; rows that are not there are 0.
uint64_t loadSquare(SourceRows from, uint32_t rows) {
    uint64_t square = 0;
    for (uint32_t y = 0; y < rows; ++y)
        square |= uint64_t{*from.row(y)} << (56 - 8 * y);
    return square;
}

void storeSquare(uint64_t square, TargetRows to, uint32_t rows) {
    for (uint32_t y = 0; y < rows; ++y)
        *to.row(y) = static_cast<uint8_t>(square >> (56 - 8 * y));
}

/// The columns in the bytes from `left` to `right` of the source's rows.
void exchangeStrip(const BitCopy& copy, uint32_t left, uint32_t right) {
    for (uint32_t top = 0, rows = 0; top < copy.height; top += rows) {
        rows = std::min(8U, copy.height - top);
        for (uint32_t i = left; i < right; ++i) {
            const uint64_t square = loadSquare({copy.from.row(top) + i, copy.from.stride}, rows);
            storeSquare(transposeSquare(square), {copy.to.row(i * 8) + top / 8, copy.to.stride},
                        std::min(8U, copy.width - i * 8));
        }
    }
}

}  // namespace

void copyBitRows(const BitCopy& copy) {
    const uint32_t count = bytesOf(copy.width);
    if (count == 0) return;
    for (uint32_t y = 0; y < copy.height; ++y) {
        std::memcpy(copy.to.row(y), copy.from.row(y), count);
        copy.to.row(y)[count - 1] &= lastByteMask(copy.width);
    }
}

void mirrorBitRows(const BitCopy& copy) {
    for (uint32_t y = 0; y < copy.height; ++y)
        mirrorBits(copy.from.row(y), copy.to.row(y), copy.width);
}

void exchangeBitAxes(const BitCopy& copy) {
    const uint32_t count = bytesOf(copy.width);
    for (uint32_t left = 0; left < count; left += kStripBytes)
        exchangeStrip(copy, left, std::min(left + kStripBytes, count));
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Lays out QuickDraw pictures opcode by opcode, right or wrong as a test wants them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "PlatformKit/Codecs/PictGeometry.h"

namespace fi::test {

/// The description and the rows of a map; `rows` are unpacked.
struct PictMapRecipe {
    PictRect bounds;
    uint16_t bits = 0;  ///< 0: a bit map
    uint16_t packType = 0;
    uint16_t planes = 3;
    uint16_t colorFlags = 0;
    std::vector<uint16_t> colors;    ///< number, red, green and blue of each
    std::optional<PictRect> source;  ///< the bounds when it is not said
    std::optional<PictRect> target;  ///< the bounds when it is not said
    uint16_t mode = 0;
    std::vector<int16_t> mask;  ///< words of a region behind its length; makes it an opcode with one
    std::vector<std::vector<uint8_t>> rows;
    bool packed = true;
    unsigned countBytes = 0;  ///< of a packed row's length; 0: as the format wants it
};

class PictBytes {
public:
    explicit PictBytes(uint32_t version, const PictRect& frame, bool fileHeader = true);

    [[nodiscard]] const std::vector<uint8_t>& bytes() const { return m_bytes; }

    PictBytes& byte(uint32_t value);
    PictBytes& word(uint32_t value);
    PictBytes& longWord(uint32_t value);
    PictBytes& rect(const PictRect& rect);
    PictBytes& data(std::span<const uint8_t> bytes);
    /// Aligned as the version wants it.
    PictBytes& opcode(uint16_t opcode);

    /// The header of version 2: resolutions in 1/65536 per inch.
    PictBytes& extendedHeader(uint32_t x, uint32_t y, const PictRect& space);
    PictBytes& plainHeader();
    /// The opcode that suits the recipe, and all that belongs to it.
    PictBytes& map(const PictMapRecipe& recipe);
    /// What follows the opcode.
    PictBytes& mapData(const PictMapRecipe& recipe);
    [[nodiscard]] static uint16_t mapOpcode(const PictMapRecipe& recipe);
    PictBytes& end() { return opcode(0xFF); }

private:
    void putDescription(const PictMapRecipe& recipe);
    void putRows(const PictMapRecipe& recipe);

    uint32_t m_version;
    size_t m_start;
    std::vector<uint8_t> m_bytes;
};

/// PackBits with units of one byte or two.
[[nodiscard]] std::vector<uint8_t> packBits(std::span<const uint8_t> bytes, size_t unit);

/// A one-bit map at the origin of the frame whose rows are given bit by bit.
[[nodiscard]] PictMapRecipe bitMap(uint16_t width, const std::vector<std::vector<uint8_t>>& rows);

}  // namespace fi::test

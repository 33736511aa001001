// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictBytes.h"

#include <cstring>

namespace fi::test {

namespace {

bool isDirect(const PictMapRecipe& recipe) {
    return recipe.bits == 16 || recipe.bits == 32;
}

size_t rowBytesOf(const PictMapRecipe& recipe) {
    const size_t stored = recipe.rows.empty() ? 2 : recipe.rows.front().size();
    const bool planes = recipe.bits == 32 && (recipe.packType == 0 || recipe.packType == 4);
    // The rows of packed planes stand in the recipe plane by plane, without padding.
    if (planes && recipe.packed && recipe.bounds.width() >= 2) return size_t{recipe.bounds.width()} * 4;
    if (recipe.bits == 32 && recipe.packType == 2) return stored / 3 * 4;
    return stored;
}

bool isPacked(const PictMapRecipe& recipe) {
    if (!recipe.packed || rowBytesOf(recipe) < 8) return false;
    return recipe.packType != 1 && !(recipe.bits == 32 && recipe.packType == 2);
}

}  // namespace

PictBytes::PictBytes(uint32_t version, const PictRect& frame, bool fileHeader)
    : m_version(version), m_start(fileHeader ? 512 : 0), m_bytes(m_start) {
    word(0).rect(frame);
    if (version == 2) {
        word(0x11).word(0x02FF);
    } else {
        byte(0x11).byte(1);
    }
}

PictBytes& PictBytes::byte(uint32_t value) {
    m_bytes.push_back(static_cast<uint8_t>(value));
    return *this;
}

PictBytes& PictBytes::word(uint32_t value) {
    return byte(value >> 8 & 0xFF).byte(value & 0xFF);
}

PictBytes& PictBytes::longWord(uint32_t value) {
    return word(value >> 16).word(value & 0xFFFF);
}

PictBytes& PictBytes::rect(const PictRect& rect) {
    for (const int32_t side : {rect.top, rect.left, rect.bottom, rect.right})
        word(static_cast<uint16_t>(side));
    return *this;
}

PictBytes& PictBytes::data(std::span<const uint8_t> bytes) {
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    return *this;
}

PictBytes& PictBytes::opcode(uint16_t opcode) {
    if (m_version == 1) return byte(opcode);
    if ((m_bytes.size() - m_start) % 2 != 0) byte(0);
    return word(opcode);
}

PictBytes& PictBytes::extendedHeader(uint32_t x, uint32_t y, const PictRect& space) {
    return opcode(0x0C00).word(0xFFFE).word(0).longWord(x).longWord(y).rect(space).longWord(0);
}

PictBytes& PictBytes::plainHeader() {
    opcode(0x0C00).longWord(0xFFFFFFFF);
    for (int i = 0; i < 5; ++i)
        longWord(static_cast<uint32_t>(i) << 20);
    return *this;
}

uint16_t PictBytes::mapOpcode(const PictMapRecipe& recipe) {
    const uint16_t plain = isDirect(recipe) ? 0x9A : recipe.packed ? 0x98 : 0x90;
    return static_cast<uint16_t>(plain + (recipe.mask.empty() ? 0 : 1));
}

PictBytes& PictBytes::map(const PictMapRecipe& recipe) {
    return opcode(mapOpcode(recipe)).mapData(recipe);
}

PictBytes& PictBytes::mapData(const PictMapRecipe& recipe) {
    putDescription(recipe);
    rect(recipe.source.value_or(recipe.bounds)).rect(recipe.target.value_or(recipe.bounds));
    word(recipe.mode);
    if (!recipe.mask.empty()) {
        word(static_cast<uint32_t>(recipe.mask.size() * 2 + 2));
        for (const int16_t value : recipe.mask)
            word(static_cast<uint16_t>(value));
    }
    putRows(recipe);
    return *this;
}

void PictBytes::putDescription(const PictMapRecipe& recipe) {
    const uint32_t rowBytes = static_cast<uint32_t>(rowBytesOf(recipe));
    if (isDirect(recipe)) longWord(0xFF);
    word(recipe.bits == 0 ? rowBytes : rowBytes | 0x8000).rect(recipe.bounds);
    if (recipe.bits == 0) return;
    word(0).word(recipe.packType).longWord(0).longWord(72 << 16).longWord(72 << 16);
    word(isDirect(recipe) ? 16 : 0).word(recipe.bits).word(isDirect(recipe) ? recipe.planes : 1);
    word(recipe.bits == 16 ? 5 : 8).longWord(0).longWord(0).longWord(0);
    if (isDirect(recipe)) return;
    longWord(0).word(recipe.colorFlags).word(static_cast<uint32_t>(recipe.colors.size() / 4 - 1));
    for (const uint16_t value : recipe.colors)
        word(value);
}

void PictBytes::putRows(const PictMapRecipe& recipe) {
    for (const auto& row : recipe.rows) {
        if (!isPacked(recipe)) {
            data(row);
            continue;
        }
        const auto packed = packBits(row, recipe.bits == 16 ? 2 : 1);
        const bool isWord = recipe.countBytes == 2 || (recipe.countBytes == 0 && rowBytesOf(recipe) > 250);
        if (isWord) byte(static_cast<uint32_t>(packed.size() >> 8));
        byte(packed.size() & 0xFF).data(packed);
    }
}

std::vector<uint8_t> packBits(std::span<const uint8_t> bytes, size_t unit) {
    const size_t units = bytes.size() / unit;
    const auto equal = [&](size_t a, size_t b) {
        return std::memcmp(bytes.data() + a * unit, bytes.data() + b * unit, unit) == 0;
    };
    const auto runAt = [&](size_t at) {
        size_t end = at + 1;
        while (end < units && end - at < 128 && equal(at, end))
            ++end;
        return end - at;
    };
    std::vector<uint8_t> packed;
    for (size_t at = 0; at < units;) {
        size_t count = runAt(at);
        const bool isRun = count >= 3;
        if (!isRun) {
            while (at + count < units && count < 128 && runAt(at + count) < 3)
                ++count;
        }
        packed.push_back(static_cast<uint8_t>(isRun ? 257 - count : count - 1));
        const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at * unit);
        packed.insert(packed.end(), from, from + static_cast<std::ptrdiff_t>((isRun ? 1 : count) * unit));
        at += count;
    }
    return packed;
}

PictMapRecipe bitMap(uint16_t width, const std::vector<std::vector<uint8_t>>& rows) {
    PictMapRecipe recipe;
    recipe.bounds = {0, 0, static_cast<int32_t>(rows.size()), width};
    recipe.rows = rows;
    return recipe;
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Lengths as "Imaging With QuickDraw", appendix A, lists them, reserved opcodes included.
#include "PlatformKit/Codecs/PictOpcodes.h"

#include <array>

namespace fi {

namespace {

/// How the length of the data is found when it is not fixed.
enum Length : uint8_t {
    kSized = 200,      ///< a word that counts itself: regions and polygons
    kShortBlock,       ///< a word, and as many bytes
    kLongBlock,        ///< a long, and as many bytes
    kComment,          ///< a kind, a word, and as many bytes
    kLongText,         ///< a point, a byte, and as many bytes
    kOffsetText,       ///< one distance, a byte, and as many bytes
    kTwiceOffsetText,  ///< two distances, a byte, and as many bytes
    kPixels,           ///< of another room
};

constexpr void fill(std::array<uint8_t, 256>& table, int first, int last, uint8_t length) {
    for (int i = first; i <= last; ++i)
        table[static_cast<size_t>(i)] = length;
}

/// Opcodes below 256; what is not set has no data.
constexpr std::array<uint8_t, 256> makeLengths() {
    std::array<uint8_t, 256> table{};
    constexpr uint8_t kState[] = {0, kSized, 8, 2, 1, 2, 4, 4, 2, 8, 8, 4, 4, 2, 4, 4,
                                  8, 1,      0, 0, 0, 2, 2, 0, 0, 0, 6, 6, 0, 6, 0, 6};
    for (size_t i = 0; i < std::size(kState); ++i)
        table[i] = kState[i];
    fill(table, 0x12, 0x14, kPixels);
    table[0x20] = 8;
    table[0x21] = 4;
    table[0x22] = 6;
    table[0x23] = 2;
    fill(table, 0x24, 0x27, kShortBlock);
    table[0x28] = kLongText;
    fill(table, 0x29, 0x2A, kOffsetText);
    table[0x2B] = kTwiceOffsetText;
    fill(table, 0x2C, 0x2F, kShortBlock);
    // Rectangles, rounded ones and ovals; the second half of each row repeats the last shape.
    for (const int row : {0x30, 0x40, 0x50})
        fill(table, row, row + 7, 8);
    fill(table, 0x60, 0x67, 12);
    fill(table, 0x68, 0x6F, 4);
    fill(table, 0x70, 0x77, kSized);
    fill(table, 0x80, 0x87, kSized);
    fill(table, 0x90, 0x91, kPixels);
    fill(table, 0x92, 0x97, kShortBlock);
    fill(table, 0x98, 0x9B, kPixels);
    fill(table, 0x9C, 0x9F, kShortBlock);
    table[0xA0] = 2;
    table[0xA1] = kComment;
    fill(table, 0xA2, 0xAF, kShortBlock);
    fill(table, 0xD0, 0xFE, kLongBlock);
    return table;
}

constexpr std::array<uint8_t, 256> kLengths = makeLengths();

void skipText(PictInput& input, uint32_t distances) {
    input.skip(distances);
    const uint8_t count = input.u8();
    input.skip(count);
}

bool skipVariable(PictInput& input, uint8_t length) {
    switch (length) {
        case kSized: {
            const uint16_t size = input.u16();
            if (size < 2) return false;
            input.skip(size - 2U);
            return true;
        }
        case kComment:
            input.skip(2);
            [[fallthrough]];
        case kShortBlock:
            input.skip(input.u16());
            return true;
        case kLongBlock:
            input.skip(input.u32());
            return true;
        case kLongText:
            skipText(input, 4);
            return true;
        case kOffsetText:
            skipText(input, 1);
            return true;
        case kTwiceOffsetText:
            skipText(input, 2);
            return true;
        default:
            return false;
    }
}

}  // namespace

bool isBits(uint16_t opcode) {
    return opcode <= 0xFF && opcode >= kOpcodeBitsRect && kLengths[opcode] == kPixels;
}

bool isShape(uint16_t opcode) {
    if (opcode >= 0x30 && opcode < 0x90) return (opcode & 7) < 5;
    return (opcode >= 0x20 && opcode <= 0x23) || (opcode >= 0x28 && opcode <= 0x2B);
}

bool isDrawnWithPen(uint16_t opcode) {
    if (opcode >= 0x30 && opcode < 0x90) return (opcode & 7) == 0;
    return opcode >= 0x20 && opcode <= 0x23;
}

bool isOpcodeOfVersionOne(uint8_t opcode) {
    if (opcode <= 0x10) return true;
    if (opcode >= 0x20 && opcode <= 0x23) return true;
    if (opcode >= 0x28 && opcode <= 0x2B) return true;
    if (opcode >= 0x30 && opcode < 0x90) return (opcode & 7) < 5;
    return isBits(opcode) || opcode == 0xA0 || opcode == 0xA1 || opcode == kOpcodeEnd;
}

bool skipOpcodeData(PictInput& input, uint16_t opcode, uint32_t version) {
    if (opcode == kOpcodeVersion) {
        input.skip(version);
    } else if (opcode < kLengths.size()) {
        const uint8_t length = kLengths[opcode];
        if (length >= kSized) return skipVariable(input, length);
        input.skip(length);
    } else if (opcode < 0x8000) {
        input.skip((opcode >> 8) * 2U);
    } else if (opcode >= 0x8100) {
        input.skip(input.u32());
    }
    return true;
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// The opcodes of a QuickDraw picture, and how far it is from one to the next.
#pragma once

#include <cstdint>

#include "PlatformKit/Codecs/PictInput.h"

namespace fi {

enum PictOpcode : uint16_t {
    kOpcodeClip = 0x0001,
    kOpcodePenSize = 0x0007,
    kOpcodeOrigin = 0x000C,
    kOpcodeForeground = 0x000E,
    kOpcodeBackground = 0x000F,
    kOpcodeVersion = 0x0011,
    kOpcodeBackPattern = 0x0012,
    kOpcodePenPattern = 0x0013,
    kOpcodeFillPattern = 0x0014,
    kOpcodeForegroundRgb = 0x001A,
    kOpcodeBackgroundRgb = 0x001B,
    kOpcodeOperand = 0x001F,
    kOpcodeBitsRect = 0x0090,
    kOpcodeBitsRegion = 0x0091,
    kOpcodePackBitsRect = 0x0098,
    kOpcodePackBitsRegion = 0x0099,
    kOpcodeDirectBitsRect = 0x009A,
    kOpcodeDirectBitsRegion = 0x009B,
    kOpcodeEnd = 0x00FF,
    kOpcodeHeader = 0x0C00,
    kOpcodeCompressedQuickTime = 0x8200,
    kOpcodeUncompressedQuickTime = 0x8201,
};

/// True for the six kinds of bit and pixel maps.
[[nodiscard]] bool isBits(uint16_t opcode);

/// True for lines, texts and shapes, which are not drawn.
[[nodiscard]] bool isShape(uint16_t opcode);
/// Of those: drawn with the pen, so that a pen without size leaves no mark.
[[nodiscard]] bool isDrawnWithPen(uint16_t opcode);

[[nodiscard]] bool isOpcodeOfVersionOne(uint8_t opcode);

/// Steps over the data of an opcode that has no pixels: neither isBits() nor a pattern of pixels. False
/// when its length makes no sense.
bool skipOpcodeData(PictInput& input, uint16_t opcode, uint32_t version);

}  // namespace fi

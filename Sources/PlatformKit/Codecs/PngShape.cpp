// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PngShape.h"

#include "PlatformKit/Codecs/PngReader.h"

namespace fi {

namespace {

constexpr uint32_t kShapeBytes = 13;
constexpr uint64_t kFirstData = kPngSignatureBytes + kPngChunkHeadBytes;

Failure<CodecFailure> fail(CodecError code, const char* text) {
    return Failure{CodecFailure{code, text}};
}

bool isAllowed(uint8_t bits, uint8_t kind) {
    const bool isPowerOfTwo = bits != 0 && (bits & (bits - 1)) == 0;
    if (!isPowerOfTwo || bits > 16) return false;
    switch (static_cast<PngKind>(kind)) {
        case PngKind::Gray:
            return true;
        case PngKind::Palette:
            return bits <= 8;
        case PngKind::Color:
        case PngKind::GrayAlpha:
        case PngKind::ColorAlpha:
            return bits >= 8;
    }
    return false;
}

}  // namespace

uint32_t PngShape::samples() const {
    switch (kind) {
        case PngKind::Gray:
        case PngKind::Palette:
            return 1;
        case PngKind::GrayAlpha:
            return 2;
        case PngKind::Color:
            return 3;
        case PngKind::ColorAlpha:
            return 4;
    }
    return 1;
}

CodecResult<PngShape> readPngShape(SourceWindow& window) {
    const ByteView head = window.view(0, kFirstData + kShapeBytes).withOrder(ByteOrder::Big);
    if (!looksLikePng(head)) return fail(CodecError::NotThisFormat, "The file is not a PNG file.");
    const bool isShape =
        head.u32(kPngSignatureBytes) == kShapeBytes && head.startsWith("IHDR", kPngSignatureBytes + 4);
    const ByteView view = head.cut(kFirstData);
    if (!isShape || view.size() < kShapeBytes) {
        return fail(CodecError::Damaged, "The file does not say how large its picture is.");
    }
    PngShape shape;
    shape.width = view.u32(0).value_or(0);
    shape.height = view.u32(4).value_or(0);
    if (shape.width == 0 || shape.height == 0) {
        return fail(CodecError::Damaged, "The file declares an empty picture.");
    }
    shape.bits = view.u8(8).value_or(0);
    const uint8_t kind = view.u8(9).value_or(0);
    const bool isKnownCoding = view.u8(10) == 0 && view.u8(11) == 0 && view.u8(12).value_or(2) <= 1;
    const bool isInRange = shape.width <= kMaximumPngNumber && shape.height <= kMaximumPngNumber;
    if (!isAllowed(shape.bits, kind) || !isKnownCoding || !isInRange) {
        return fail(CodecError::Damaged, "The file declares a kind of picture that PNG does not have.");
    }
    shape.kind = static_cast<PngKind>(kind);
    shape.interlaced = view.u8(12) == 1;
    return shape;
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictWalk.h"

#include "PlatformKit/Codecs/PictOpcodes.h"
#include "PlatformKit/Codecs/PictRows.h"

namespace fi {

namespace {

constexpr uint32_t kMaximumOpcodes = 1U << 20;
constexpr int32_t kLargestOrigin = 65535;
constexpr int16_t kSubstituteFollows = 0x00AE;  // as the height of a pen behind an image
constexpr uint16_t kPixelPattern = 1;
constexpr uint16_t kColorPattern = 2;

/// The eight colors that version 1 knows; others are black.
PictColor classicColor(uint32_t number) {
    switch (number) {
        case 30:
            return kPictWhite;
        case 69:
            return pictColor(255, 255, 0);
        case 137:
            return pictColor(255, 0, 255);
        case 205:
            return pictColor(255, 0, 0);
        case 273:
            return pictColor(0, 255, 255);
        case 341:
            return pictColor(0, 255, 0);
        case 409:
            return pictColor(0, 0, 255);
        default:
            return kPictBlack;
    }
}

}  // namespace

PictWalk::PictWalk(ByteSource& source, const PictHead& head, PictSink& sink)
    : m_head(head), m_input(source, head.opcodes), m_sink(sink) {}

PictWalk::Ending PictWalk::run() {
    for (uint32_t i = 0; i < kMaximumOpcodes; ++i) {
        const bool wide = m_head.version == 2;
        if (wide && (m_input.position() - m_head.start) % 2 != 0) m_input.skip(1);
        // Some writers leave the opcode of the end out.
        if (m_input.left() < (wide ? 2 : 1) && !m_input.source().failed()) return Ending::Complete;
        const uint16_t opcode = wide ? m_input.u16() : m_input.u8();
        const Step result = m_input.isCut() ? Step::Broken : step(opcode);
        if (result == Step::End) return Ending::Complete;
        if (result == Step::Stop) return Ending::Stopped;
        if (result == Step::Broken || m_input.isCut()) return Ending::Broken;
    }
    return Ending::Broken;
}

PictWalk::Step PictWalk::step(uint16_t opcode) {
    if (isBits(opcode)) return takeBits(opcode);
    const bool behindImage = m_imageBefore.has_value();
    m_imageBefore.reset();
    switch (opcode) {
        case kOpcodeEnd:
            return Step::End;
        case kOpcodeClip:
            return takeRegion();
        case kOpcodePenSize:
            takePenSize(behindImage);
            return Step::Next;
        case kOpcodeOrigin:
            takeOrigin();
            return Step::Next;
        case kOpcodeBackPattern:
        case kOpcodePenPattern:
        case kOpcodeFillPattern:
            return takePattern();
        case kOpcodeCompressedQuickTime:
            return takeCompressed();
        case kOpcodeUncompressedQuickTime:
            return takeUncompressed();
        default:
            break;
    }
    if (takeColor(opcode)) return Step::Next;
    if (isShape(opcode) && !(isDrawnWithPen(opcode) && m_state.penIsHidden)) m_hasShapes = true;
    return skipOpcodeData(m_input, opcode, m_head.version) ? Step::Next : Step::Broken;
}

void PictWalk::applyOrigin(PictRect& target, std::optional<PictRegion>& mask) const {
    target = target.moved(-m_state.originX, -m_state.originY);
    if (mask) mask = mask->moved(-m_state.originX, -m_state.originY);
}

/// QuickTime lets a bit map follow that asks for QuickTime; whoever has drawn the image leaves it out.
bool PictWalk::isSubstitute(const PictBits& bits) const {
    return m_imageBefore && bits.map.isBitMap && bits.target == *m_imageBefore;
}

PictWalk::Step PictWalk::takeBits(uint16_t opcode) {
    auto bits = readPictBits(m_input, opcode);
    if (!bits) return Step::Broken;
    applyOrigin(bits->target, bits->mask);
    const bool substitute = isSubstitute(*bits);
    m_imageBefore.reset();
    if (substitute) {
        PictRows(m_input, bits->map, {}).skip(bits->map.bounds.height());
        return Step::Next;
    }
    return m_sink.takeBits(*bits, m_state, m_input) ? Step::Next : Step::Stop;
}

PictWalk::Step PictWalk::takeCompressed() {
    const uint32_t size = m_input.u32();
    const uint64_t start = m_input.position();
    m_input.skip(size);
    PictInput data(m_input.source(), start, m_input.position());
    auto image = readPictImage(data);
    PictSink::Taken taken = PictSink::Taken::LeftOut;
    if (image) {
        applyOrigin(image->target, image->mask);
        taken = m_sink.takeImage(*image, m_state);
    }
    if (taken == PictSink::Taken::Stop) return Step::Stop;
    if (taken == PictSink::Taken::Drawn) {
        m_imageBefore = image->target;
    } else {
        m_hasOtherImages = true;
    }
    return Step::Next;
}

PictWalk::Step PictWalk::takeUncompressed() {
    const uint32_t size = m_input.u32();
    const uint64_t start = m_input.position();
    m_input.skip(size);
    PictInput data(m_input.source(), start, m_input.position());
    auto bits = readPictImageBits(data);
    if (!bits) {
        m_hasOtherImages = true;
        return Step::Next;
    }
    applyOrigin(bits->target, bits->mask);
    const bool goOn = m_sink.takeBits(*bits, m_state, data);
    m_imageBefore = bits->target;
    return goOn ? Step::Next : Step::Stop;
}

PictWalk::Step PictWalk::takeRegion() {
    const auto region = PictRegion::read(m_input);
    if (!region) return Step::Broken;
    m_state.clip = region->moved(-m_state.originX, -m_state.originY);
    return Step::Next;
}

PictWalk::Step PictWalk::takePattern() {
    const uint16_t kind = m_input.u16();
    m_input.skip(8);
    if (kind == kColorPattern) m_input.skip(6);
    if (kind != kPixelPattern) return kind <= kColorPattern ? Step::Next : Step::Broken;
    const auto map = readPatternMap(m_input);
    if (!map) return Step::Broken;
    PictRows(m_input, *map, {}).skip(map->bounds.height());
    return Step::Next;
}

/// Behind an image, a pen of a height that nobody draws with tells how long the shapes are that ask for
/// QuickTime.
void PictWalk::takePenSize(bool behindImage) {
    const int16_t height = m_input.s16();
    const uint16_t width = m_input.u16();
    if (behindImage && height == kSubstituteFollows) {
        m_input.skip(width);
    } else {
        m_state.penIsHidden = height == 0 || width == 0;
    }
}

void PictWalk::takeOrigin() {
    const int32_t dx = m_input.s16();
    const int32_t dy = m_input.s16();
    m_state.originX = std::clamp(m_state.originX + dx, -kLargestOrigin, kLargestOrigin);
    m_state.originY = std::clamp(m_state.originY + dy, -kLargestOrigin, kLargestOrigin);
}

bool PictWalk::takeColor(uint16_t opcode) {
    switch (opcode) {
        case kOpcodeForeground:
            m_state.foreground = classicColor(m_input.u32());
            return true;
        case kOpcodeBackground:
            m_state.background = classicColor(m_input.u32());
            return true;
        case kOpcodeForegroundRgb:
            m_state.foreground = readPictColor(m_input);
            return true;
        case kOpcodeBackgroundRgb:
            m_state.background = readPictColor(m_input);
            return true;
        case kOpcodeOperand:
            m_state.operand = readPictColor(m_input);
            return true;
        default:
            return false;
    }
}

}  // namespace fi

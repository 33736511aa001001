// SPDX-License-Identifier: Apache-2.0
// Runs that pass the end of their row are cut there, as all readers do.
#include "PlatformKit/Codecs/BmpRuns.h"

#include <algorithm>

#include "PlatformKit/Codecs/UnreadRows.h"

namespace fi {

namespace {

constexpr size_t kPieceBytes = size_t{64} << 10;
constexpr uint8_t kEndOfRow = 0;
constexpr uint8_t kEndOfPicture = 1;
constexpr uint8_t kJump = 2;

/// No encoder needs more for a pixel, or for a row's end.
constexpr uint64_t kMostBytesPerStep = 4;

}  // namespace

BmpRuns::BmpRuns(ByteSource& source, const BmpHeader& header, const BmpPixels& pixels, PixelBuffer& out)
    : m_source(source),
      m_header(header),
      m_pixels(pixels),
      m_out(out),
      m_piece(kPieceBytes),
      m_at(header.pixelStart) {
    // The sides passed the limits: the product is far from 2^64.
    const uint64_t steps = (uint64_t{header.width} + 1) * header.height + 1;
    m_end = m_at + steps * kMostBytesPerStep;
}

std::optional<uint8_t> BmpRuns::next() {
    if (m_used == m_count) {
        const auto wanted = static_cast<size_t>(std::min<uint64_t>(kPieceBytes, m_end - m_at));
        m_count = m_source.read(m_at, std::span(m_piece).first(wanted));
        m_at += m_count;
        m_used = 0;
        if (m_count == 0) return std::nullopt;
    }
    return m_piece[m_used++];
}

uint32_t BmpRuns::rowNumber(uint32_t stored) const {
    return m_header.topDown ? stored : m_header.height - 1 - stored;
}

bool BmpRuns::isFull() const {
    return m_y >= m_header.height || (m_y == m_header.height - 1 && m_x >= m_header.width);
}

bool BmpRuns::decode() {
    for (uint32_t y = 0; y < m_header.height; ++y)
        m_pixels.putIndex(0, m_header.width, m_out.row(y), 0);
    Step last = Step::More;
    while (last == Step::More)
        last = step();
    if (last == Step::End || isFull()) return true;
    // The row that broke off is kept, those behind it were never reached.
    for (uint32_t stored = m_y + (m_x > 0 ? 1 : 0); stored < m_header.height; ++stored)
        markUnread(m_out, rowNumber(stored), 1);
    return false;
}

BmpRuns::Step BmpRuns::step() {
    const auto count = next();
    const auto value = next();
    if (!count || !value) return Step::Broken;
    m_any = true;
    if (*count == 0) return escape(*value);
    putRun(*count, *value);
    return Step::More;
}

BmpRuns::Step BmpRuns::escape(uint8_t code) {
    switch (code) {
        case kEndOfRow:
            m_x = 0;
            ++m_y;
            return m_y < m_header.height ? Step::More : Step::End;
        case kEndOfPicture:
            return Step::End;
        case kJump:
            return jump();
        default:
            return absolute(code);
    }
}

BmpRuns::Step BmpRuns::jump() {
    const auto right = next();
    const auto on = next();
    if (!right || !on) return Step::Broken;
    if (m_y + *on >= m_header.height || m_x + *right > m_header.width) return Step::Broken;
    m_x += *right;
    m_y += *on;
    return Step::More;
}

BmpRuns::Step BmpRuns::absolute(uint32_t count) {
    const bool nibbles = m_header.packing == BmpPacking::Runs4;
    const uint32_t bytes = nibbles ? (count + 1) / 2 : count;
    for (uint32_t i = 0; i < bytes; ++i) {
        const auto value = next();
        if (!value) return Step::Broken;
        if (!nibbles) {
            put(*value, 1);
            continue;
        }
        put(static_cast<uint8_t>(*value >> 4), 1);
        if (2 * i + 1 < count) put(*value & 0x0F, 1);
    }
    // Such stretches take an even number of bytes.
    if (bytes % 2 != 0 && !next()) return isFull() ? Step::End : Step::Broken;
    return Step::More;
}

void BmpRuns::putRun(uint32_t count, uint8_t value) {
    if (m_header.packing == BmpPacking::Runs8) {
        put(value, count);
        return;
    }
    for (uint32_t i = 0; i < count; ++i)
        put(static_cast<uint8_t>(i % 2 == 0 ? value >> 4 : value & 0x0F), 1);
}

void BmpRuns::put(uint8_t index, uint32_t count) {
    const uint32_t fits = std::min(count, m_header.width - m_x);
    m_pixels.putIndex(index, fits, m_out.row(rowNumber(m_y)), m_x);
    m_x += fits;
}

}  // namespace fi

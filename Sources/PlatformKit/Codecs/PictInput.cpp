// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictInput.h"

#include <algorithm>
#include <cstring>

namespace fi {

PictInput::PictInput(ByteSource& source, uint64_t start, uint64_t end)
    : m_source(source), m_position(start), m_end(std::min(end, source.size())) {}

uint8_t PictInput::u8() {
    uint8_t byte = 0;
    read({&byte, 1});
    return byte;
}

uint16_t PictInput::u16() {
    uint8_t bytes[2];
    read(bytes);
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

uint32_t PictInput::u32() {
    const uint32_t high = u16();
    return high << 16 | u16();
}

PictRect PictInput::rect() {
    PictRect rect;
    rect.top = s16();
    rect.left = s16();
    rect.bottom = s16();
    rect.right = s16();
    return rect;
}

bool PictInput::read(std::span<uint8_t> out) {
    while (!out.empty()) {
        const bool buffered = m_position >= m_bufferStart && m_position - m_bufferStart < m_bufferCount;
        if (!buffered) {
            m_bufferStart = m_position;
            const size_t wanted = static_cast<size_t>(std::min<uint64_t>(left(), m_buffer.size()));
            m_bufferCount = wanted > 0 ? m_source.read(m_position, std::span(m_buffer).first(wanted)) : 0;
            if (m_bufferCount == 0) break;
        }
        const size_t offset = static_cast<size_t>(m_position - m_bufferStart);
        const size_t count = std::min(out.size(), m_bufferCount - offset);
        std::memcpy(out.data(), m_buffer.data() + offset, count);
        m_position += count;
        out = out.subspan(count);
    }
    if (out.empty()) return true;
    std::memset(out.data(), 0, out.size());
    m_cut = true;
    return false;
}

void PictInput::skip(uint64_t count) {
    m_cut = m_cut || count > left();
    m_position += std::min(count, left());
}

}  // namespace fi

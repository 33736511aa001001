// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/TiffBytes.h"

namespace fi::test {

TiffBytes::TiffBytes(ByteOrder order, bool big) : m_order(order), m_big(big) {
    m_bytes = order == ByteOrder::Little ? std::vector<uint8_t>{'I', 'I'} : std::vector<uint8_t>{'M', 'M'};
    put(big ? 43 : 42, 2);
    if (big) {
        put(8, 2);
        put(0, 2);
    }
    put(0, offsetBytes());
}

void TiffBytes::setFirst(uint64_t offset) {
    patch(m_big ? 8 : 4, offset, offsetBytes());
}

uint64_t TiffBytes::addDirectory(const std::vector<Entry>& entries, uint64_t next) {
    const uint64_t at = here();
    put(entries.size(), m_big ? 8 : 2);
    for (const Entry& entry : entries) {
        put(entry.tag, 2);
        put(entry.type, 2);
        put(entry.count, offsetBytes());
        put(entry.value, offsetBytes());
    }
    put(next, offsetBytes());
    return at;
}

uint64_t TiffBytes::addText(std::string_view text) {
    const uint64_t at = here();
    m_bytes.insert(m_bytes.end(), text.begin(), text.end());
    return at;
}

uint64_t TiffBytes::addRational(uint32_t top, uint32_t bottom) {
    return addLongs({top, bottom});
}

uint64_t TiffBytes::addLongs(const std::vector<uint32_t>& values) {
    const uint64_t at = here();
    for (const uint32_t value : values) {
        put(value, 4);
    }
    return at;
}

uint64_t TiffBytes::addBytes(size_t count, uint8_t value) {
    const uint64_t at = here();
    m_bytes.insert(m_bytes.end(), count, value);
    return at;
}

uint64_t TiffBytes::inlineShort(uint16_t value) const {
    return m_order == ByteOrder::Little ? value : uint64_t{value} << (8 * (offsetBytes() - 2));
}

uint64_t TiffBytes::inlineText(std::string_view text) const {
    uint64_t value = 0;
    for (unsigned i = 0; i < text.size() && i < offsetBytes(); ++i) {
        const unsigned place = m_order == ByteOrder::Little ? i : offsetBytes() - 1 - i;
        value |= uint64_t{static_cast<uint8_t>(text[i])} << (8 * place);
    }
    return value;
}

void TiffBytes::put(uint64_t value, unsigned bytes) {
    const uint64_t at = here();
    m_bytes.resize(m_bytes.size() + bytes);
    patch(at, value, bytes);
}

void TiffBytes::patch(uint64_t at, uint64_t value, unsigned bytes) {
    for (unsigned i = 0; i < bytes; ++i) {
        const unsigned place = m_order == ByteOrder::Little ? i : bytes - 1 - i;
        m_bytes[static_cast<size_t>(at) + i] = static_cast<uint8_t>(value >> (8 * place));
    }
}

}  // namespace fi::test

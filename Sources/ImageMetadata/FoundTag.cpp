// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/FoundTag.h"

#include <algorithm>
#include <cstring>

namespace fi {

namespace {

void swapWords(uint8_t* bytes, uint32_t size) {
    for (uint32_t i = 0; i + 4 <= size; i += 4) {
        const uint32_t word = readU32(bytes + i, true);
        std::memcpy(bytes + i, &word, sizeof(word));
    }
}

void swapHalfWords(uint8_t* bytes, uint32_t size) {
    for (uint32_t i = 0; i + 2 <= size; i += 2) {
        const uint16_t half = readU16(bytes + i, true);
        std::memcpy(bytes + i, &half, sizeof(half));
    }
}

/// Turns the first `size` bytes of a value that stands at an offset into host order.
void swapUnits(uint8_t* bytes, uint32_t size, uint16_t type, int32_t count) {
    switch (type) {
        case kTagShort:
        case kTagSShort:
            return swapHalfWords(bytes, size);
        case kTagLong:
        case kTagSLong:
        case kTagFloat:
        case kTagRational:
        case kTagSRational:
            return swapWords(bytes, size);
        case kTagDouble:
            // As many words as there are doubles: the second half stays in the file's order.
            return swapWords(bytes, std::min(size, 4 * static_cast<uint32_t>(count)));
        default:
            return;
    }
}

constexpr bool isAlwaysAtOffset(uint16_t type) {
    return type == kTagRational || type == kTagSRational;
}

}  // namespace

uint32_t FoundTag::locate(const TagEntry& entry, const IMAGETAG_POSITION& position, TagData& data,
                          CMEMCARDFILE* reader) {
    tag = entry.tag;
    type = entry.type;
    count = static_cast<int16_t>(entry.count);
    const uint32_t unit = unitSizeOfType(type);
    if (unit == 0) return kTagBadData;
    if (count < 0) return kTagNoMemory;
    size = static_cast<uint32_t>(count) * unit;
    m_isInline = size <= sizeof(entry.value) && !isAlwaysAtOffset(type);
    if (m_isInline) {
        m_inlineValue = entry.value;
        return kTagNoError;
    }
    m_filePosition = uint64_t{position.headerPosition} + entry.value;
    if (m_filePosition < data.start()) return kTagBadData;
    m_needsSwap = position.bigEndian != 0;
    m_data = &data;
    const bool isInHand = data.contains(m_filePosition - data.start(), size);
    m_reader = isInHand ? nullptr : reader;
    return isInHand || reader != nullptr ? kTagNoError : kTagBadData;
}

bool FoundTag::copyTo(void* out, uint32_t limit) const {
    const uint32_t bytes = std::min(limit, size);
    if (m_isInline) {
        std::memcpy(out, &m_inlineValue, bytes);
        return true;
    }
    if (!copyRaw(out, bytes)) return false;
    if (m_needsSwap) swapUnits(static_cast<uint8_t*>(out), bytes, type, count);
    return true;
}

bool FoundTag::copyRaw(void* out, uint32_t bytes) const {
    if (m_reader != nullptr) {
        if (m_filePosition > UINT32_MAX) return false;
        uint32_t got = 0;
        uint32_t error = kTagNoError;
        return m_reader->GetDataBlockSpecification(static_cast<char*>(out),
                                                   static_cast<uint32_t>(m_filePosition), bytes, &got,
                                                   &error) != 0 &&
               got == bytes;
    }
    const uint8_t* raw = m_data->at(m_filePosition - m_data->start(), bytes);
    if (raw == nullptr) return false;
    if (bytes > 0) std::memcpy(out, raw, bytes);
    return true;
}

}  // namespace fi

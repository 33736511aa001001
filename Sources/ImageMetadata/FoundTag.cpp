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

}  // namespace

bool FoundTag::copyTo(void* out, uint32_t limit) const {
    const uint32_t bytes = std::min(limit, size());
    if (isInline()) {
        // The field was brought into host order with its entry.
        std::memcpy(out, &m_entry.value, bytes);
        return true;
    }
    if (!copyRaw(out, bytes)) return false;
    if (m_place.position.bigEndian != 0) swapUnits(static_cast<uint8_t*>(out), bytes, type(), count());
    return true;
}

bool FoundTag::copyRaw(void* out, uint32_t bytes) const {
    if (!isInHand()) return fetch(out, bytes);
    const uint8_t* raw = m_place.data.at(filePosition() - m_place.data.start(), bytes);
    if (raw == nullptr) return false;
    if (bytes > 0) std::memcpy(out, raw, bytes);
    return true;
}

bool FoundTag::fetch(void* out, uint32_t bytes) const {
    if (m_place.reader == nullptr || filePosition() > UINT32_MAX) return false;
    const auto offset = static_cast<uint32_t>(filePosition());
    uint32_t got = 0;
    uint32_t error = kTagNoError;
    return m_place.reader->GetDataBlockSpecification(static_cast<char*>(out), offset, bytes, &got,
                                                     &error) != 0 &&
           got == bytes;
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/TagData.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ImageMetadata/TagMemory.h"

namespace fi {

TagData::~TagData() {
    std::free(m_all);
}

/// What is not in the bytes in hand, but within the length.
const uint8_t* TagData::loaded(uint64_t offset, uint64_t size) {
    if (m_source == nullptr) return nullptr;
    const uint64_t end = offset + size;
    if (const uint8_t* bytes = inStretch(offset, end)) return bytes;
    if (m_cameShort) return nullptr;
    if (m_loaded == 0) loadFirst();
    if (end <= m_loaded) return m_bytes + offset;
    if (m_cameShort) return nullptr;
    if (size <= kStretchSize - kStretchLead && m_stretches < kMostStretches) {
        loadStretch(offset);
        return inStretch(offset, end);
    }
    loadAll();
    return end <= m_loaded ? m_bytes + offset : nullptr;
}

void TagData::loadFirst() {
    m_bytes = m_first.data();
    m_loaded = read(0, m_first.first(static_cast<size_t>(std::min<uint64_t>(m_first.size(), m_length))));
}

void TagData::loadStretch(uint64_t offset) {
    ++m_stretches;
    m_stretchOffset = offset > m_loaded ? offset - std::min(offset - m_loaded, kStretchLead) : offset;
    const uint64_t wanted = std::min(kStretchSize, m_length - m_stretchOffset);
    m_stretchLoaded = read(m_stretchOffset, std::span(m_stretch).first(static_cast<size_t>(wanted)));
}

void TagData::loadAll() {
    m_all = static_cast<uint8_t*>(allocateTagMemory(m_length, "TagData"));
    if (m_all == nullptr) {
        m_cameShort = true;
        return;
    }
    if (m_loaded > 0) std::memcpy(m_all, m_bytes, m_loaded);
    m_bytes = m_all;
    m_loaded += read(m_loaded, {m_all + m_loaded, static_cast<size_t>(m_length - m_loaded)});
}

uint64_t TagData::read(uint64_t offset, std::span<uint8_t> room) {
    const uint64_t count = m_source->read(offset, room);
    m_cameShort = count < room.size();
    return count;
}

}  // namespace fi

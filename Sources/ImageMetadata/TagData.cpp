// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/TagData.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ImageMetadata/TagMemory.h"

namespace fi {

namespace {

constexpr uint64_t kFirstStep = 4096;

}  // namespace

TagData::~TagData() {
    std::free(m_own);
}

bool TagData::load(uint64_t end) {
    if (m_source == nullptr || m_cameShort) return false;
    const uint64_t first = m_first.empty() ? kFirstStep : m_first.size();
    const uint64_t step = m_loaded == 0 ? first : 2 * m_loaded;
    const uint64_t goal = std::min(std::max(end, step), m_length);
    uint8_t* room = goal <= m_first.size() ? m_first.data() : enlarge(goal);
    if (room == nullptr) {
        m_cameShort = true;
        return false;
    }
    m_bytes = room;
    m_loaded += m_source->read(m_loaded, {room + m_loaded, static_cast<size_t>(goal - m_loaded)});
    m_cameShort = m_loaded < goal;
    return end <= m_loaded;
}

uint8_t* TagData::enlarge(uint64_t size) {
    auto* larger = static_cast<uint8_t*>(reallocateTagMemory(m_own, size, "TagData"));
    if (larger == nullptr) return nullptr;
    if (m_own == nullptr && m_loaded > 0) std::memcpy(larger, m_bytes, m_loaded);
    m_own = larger;
    return larger;
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// The bytes of a file that a parse of its tags has in hand, all of them in memory or loaded as they are
// needed.
#pragma once

#include <cstdint>
#include <span>

#include "PlatformKit/Base/ByteSource.h"

namespace fi {

/// `length` bytes of a file from `start` on. Nothing outside of them is ever looked at. A pointer that at()
/// gave is good until the next call. Nothing is thrown. One thread at a time.
class TagData {
public:
    /// Bytes that are all in memory. BORROWED.
    TagData(const uint8_t* bytes, uint64_t length, uint64_t start = 0)
        : m_bytes(bytes), m_loaded(length), m_length(length), m_start(start) {}

    /// The first `length` bytes of a source, read as they are asked for. The first step fills `first`; what
    /// lies behind comes in a few small stretches: mostly a directory or two stand there, side by side. Who
    /// asks for more of them gets all in memory. Both BORROWED.
    TagData(ByteSource& source, uint64_t length, std::span<uint8_t> first)
        : m_length(length), m_source(&source), m_first(first) {}

    ~TagData();
    TagData(const TagData&) = delete;
    TagData& operator=(const TagData&) = delete;

    /// Position of the first byte in the file.
    [[nodiscard]] uint64_t start() const { return m_start; }
    [[nodiscard]] uint64_t length() const { return m_length; }

    [[nodiscard]] bool contains(uint64_t offset, uint64_t size) const {
        return size <= m_length && offset <= m_length - size;
    }

    /// The bytes at an offset from the first; null when not all of them are there.
    [[nodiscard]] const uint8_t* at(uint64_t offset, uint64_t size) {
        if (size <= m_loaded && offset <= m_loaded - size) return m_bytes + offset;
        return contains(offset, size) ? loaded(offset, size) : nullptr;
    }

    /// True once the source brought less than `length` promised, or there was no memory: what was not
    /// found may be there all the same.
    [[nodiscard]] bool cameShort() const { return m_cameShort; }

private:
    static constexpr uint64_t kStretchSize = 1024;
    static constexpr uint64_t kStretchLead = 512;  ///< where the directories stand that are asked for next
    static constexpr int kMostStretches = 4;

    const uint8_t* loaded(uint64_t offset, uint64_t size);
    void loadFirst();
    void loadStretch(uint64_t offset);
    [[nodiscard]] const uint8_t* inStretch(uint64_t offset, uint64_t end) const {
        const bool isThere = offset >= m_stretchOffset && end <= m_stretchOffset + m_stretchLoaded;
        return isThere ? m_stretch + (offset - m_stretchOffset) : nullptr;
    }
    void loadAll();
    uint64_t read(uint64_t offset, std::span<uint8_t> room);

    const uint8_t* m_bytes = nullptr;
    uint64_t m_loaded = 0;
    uint64_t m_length = 0;
    uint64_t m_start = 0;
    ByteSource* m_source = nullptr;
    std::span<uint8_t> m_first;
    uint8_t m_stretch[kStretchSize];
    uint64_t m_stretchOffset = 0;
    uint64_t m_stretchLoaded = 0;
    int m_stretches = 0;
    uint8_t* m_all = nullptr;  ///< OWNED, once all is in memory
    bool m_cameShort = false;
};

}  // namespace fi

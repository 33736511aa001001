// SPDX-License-Identifier: Apache-2.0
// Reads the big-endian words of a picture in order.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Codecs/PictGeometry.h"

namespace fi {

/// A place in a stretch of a source that moves on with every read. What lies behind the end reads as zero;
/// isCut() tells.
class PictInput {
public:
    /// The source is BORROWED. Reads from `start` to before `end`, which is cut to the source.
    PictInput(ByteSource& source, uint64_t start, uint64_t end = UINT64_MAX);

    [[nodiscard]] uint8_t u8();
    [[nodiscard]] uint16_t u16();
    [[nodiscard]] int16_t s16() { return static_cast<int16_t>(u16()); }
    [[nodiscard]] uint32_t u32();
    [[nodiscard]] PictRect rect();
    /// False when fewer bytes were left; the others are zero.
    bool read(std::span<uint8_t> out);
    void skip(uint64_t count);
    void seek(uint64_t position) { m_position = position; }

    /// In the source.
    [[nodiscard]] uint64_t position() const { return m_position; }
    [[nodiscard]] uint64_t end() const { return m_end; }
    [[nodiscard]] uint64_t left() const { return m_position < m_end ? m_end - m_position : 0; }
    /// True once bytes were read or skipped that are not there.
    [[nodiscard]] bool isCut() const { return m_cut; }
    [[nodiscard]] ByteSource& source() const { return m_source; }

private:
    ByteSource& m_source;
    uint64_t m_position;
    uint64_t m_end;
    uint64_t m_bufferStart = 0;
    size_t m_bufferCount = 0;
    bool m_cut = false;
    std::array<uint8_t, 16384> m_buffer;
};

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Lays out TIFF directories byte by byte, right or wrong as a test wants them.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "PlatformKit/Base/ByteView.h"

namespace fi::test {

/// Writes from the front; offsets are known as soon as a thing is written.
class TiffBytes {
public:
    explicit TiffBytes(ByteOrder order, bool big = false);

    struct Entry {
        uint16_t tag;
        uint16_t type;
        uint64_t count;
        uint64_t value;  ///< the value itself when it fits, else its offset
    };

    [[nodiscard]] uint64_t here() const { return m_bytes.size(); }
    [[nodiscard]] const std::vector<uint8_t>& bytes() const { return m_bytes; }

    /// The offset of the first directory, in the head.
    void setFirst(uint64_t offset);
    /// Writes a directory and returns its offset.
    uint64_t addDirectory(const std::vector<Entry>& entries, uint64_t next = 0);
    /// Writes values behind what is there and returns their offset.
    uint64_t addText(std::string_view text);
    uint64_t addRational(uint32_t top, uint32_t bottom);
    uint64_t addLongs(const std::vector<uint32_t>& values);
    uint64_t addBytes(size_t count, uint8_t value);

    /// A text or short in the four (eight) bytes of an entry, in this byte order.
    [[nodiscard]] uint64_t inlineShort(uint16_t value) const;
    [[nodiscard]] uint64_t inlineText(std::string_view text) const;

private:
    void put(uint64_t value, unsigned bytes);
    void patch(uint64_t at, uint64_t value, unsigned bytes);
    [[nodiscard]] unsigned offsetBytes() const { return m_big ? 8 : 4; }

    ByteOrder m_order;
    bool m_big;
    std::vector<uint8_t> m_bytes;
};

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Decodes the run-length coded pixels of BMP files, of four and of eight bits.
#pragma once

#include <vector>

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Codecs/BmpHeader.h"
#include "PlatformKit/Codecs/BmpPixels.h"

namespace fi {

class BmpRuns {
public:
    /// All are BORROWED and must outlive the decoder; `out` has the header's size and layout.
    BmpRuns(ByteSource& source, const BmpHeader& header, const BmpPixels& pixels, PixelBuffer& out);

    /// True when the picture came to its end: by its mark, or with its last pixel. Rows that are never
    /// reached are gray then.
    [[nodiscard]] bool decode();

    /// True once any pixel or mark was read.
    [[nodiscard]] bool any() const { return m_any; }

private:
    enum class Step : uint8_t { More, End, Broken };

    [[nodiscard]] std::optional<uint8_t> next();
    [[nodiscard]] Step step();
    [[nodiscard]] Step escape(uint8_t code);
    [[nodiscard]] Step jump();
    [[nodiscard]] Step absolute(uint32_t count);
    void putRun(uint32_t count, uint8_t value);
    void put(uint8_t index, uint32_t count);
    [[nodiscard]] bool isFull() const;
    [[nodiscard]] uint32_t rowNumber(uint32_t stored) const;

    ByteSource& m_source;
    const BmpHeader& m_header;
    const BmpPixels& m_pixels;
    PixelBuffer& m_out;
    std::vector<uint8_t> m_piece;  // of the file
    size_t m_used = 0;             // of the piece
    size_t m_count = 0;            // bytes that the piece holds
    uint64_t m_at;                 // of the next piece
    uint64_t m_end;                // where reading stops at the latest
    uint32_t m_x = 0;
    uint32_t m_y = 0;  // stored rows passed; at most the height
    bool m_any = false;
};

}  // namespace fi

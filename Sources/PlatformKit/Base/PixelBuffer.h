// SPDX-License-Identifier: Apache-2.0
// Plain pixels in memory, as codecs make them and drawing rooms change them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>

#include "PlatformKit/Base/CheckedMath.h"

namespace fi {

enum class PixelLayout : uint8_t {
    Gray1,   ///< eight pixels a byte, the first in the highest bit; a set bit is white
    Gray8,   ///< one byte a pixel
    Gray16,  ///< one word of the host's order a pixel
    RGBX32,  ///< R, G, B and a byte without meaning (255)
    RGBA32,  ///< R, G, B, multiplied by alpha, and alpha
    ARGB32,  ///< alpha, and R, G, B, multiplied by it
    RGBX64,  ///< R, G, B and a word without meaning (65535), of the host's order
};

[[nodiscard]] constexpr uint32_t bitsPerPixel(PixelLayout layout) {
    constexpr uint32_t kBits[] = {1, 8, 16, 32, 32, 32, 64};
    return kBits[static_cast<uint8_t>(layout)];
}

/// Of a layout of whole bytes; 0 for Gray1.
[[nodiscard]] constexpr uint32_t bytesPerPixel(PixelLayout layout) {
    return bitsPerPixel(layout) / 8;
}

/// Bytes that the pixels of a row fill.
[[nodiscard]] constexpr uint64_t bytesOfRow(uint32_t width, PixelLayout layout) {
    return (uint64_t{width} * bitsPerPixel(layout) + 7) / 8;
}

/// An owned picture: rows from the top, 64-byte aligned, each row's stride a multiple of 64 bytes.
class PixelBuffer {
public:
    PixelBuffer() = default;

    /// Zero-filled memory for the picture, or nullopt when the size overflows or memory is short.
    [[nodiscard]] static std::optional<PixelBuffer> create(uint32_t width, uint32_t height,
                                                           PixelLayout layout) {
        const auto rowBytes = checkedRoundUp(bytesOfRow(width, layout), 64);
        if (!rowBytes) return std::nullopt;
        const auto total = checkedMultiply<uint64_t>(*rowBytes, height);
        if (!total || *total > SIZE_MAX / 2) return std::nullopt;
        const size_t size = *total == 0 ? 64 : static_cast<size_t>(*total);
        PixelBuffer buffer;
        // calloc gives untouched zero pages; the slack lets the rows start on a 64-byte boundary.
        buffer.m_block.reset(static_cast<uint8_t*>(std::calloc(size + 64, 1)));
        if (!buffer.m_block) return std::nullopt;
        const auto address = reinterpret_cast<uintptr_t>(buffer.m_block.get());
        buffer.m_offset = static_cast<size_t>((64 - address % 64) % 64);
        buffer.m_width = width;
        buffer.m_height = height;
        buffer.m_rowBytes = static_cast<size_t>(*rowBytes);
        buffer.m_layout = layout;
        return buffer;
    }

    [[nodiscard]] uint32_t width() const { return m_width; }
    [[nodiscard]] uint32_t height() const { return m_height; }
    [[nodiscard]] size_t rowBytes() const { return m_rowBytes; }
    [[nodiscard]] PixelLayout layout() const { return m_layout; }
    [[nodiscard]] uint8_t* row(uint32_t y) { return m_block.get() + m_offset + m_rowBytes * y; }
    [[nodiscard]] const uint8_t* row(uint32_t y) const { return m_block.get() + m_offset + m_rowBytes * y; }

private:
    struct Free {
        void operator()(uint8_t* block) const { std::free(block); }
    };
    std::unique_ptr<uint8_t, Free> m_block;
    size_t m_offset = 0;
    uint32_t m_width = 0;
    uint32_t m_height = 0;
    size_t m_rowBytes = 0;
    PixelLayout m_layout = PixelLayout::RGBX32;
};

}  // namespace fi

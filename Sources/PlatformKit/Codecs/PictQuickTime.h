// SPDX-License-Identifier: Apache-2.0
// Images that QuickTime put into a picture: compressed ones with their description, and pixel maps.
#pragma once

#include <cstdint>
#include <optional>

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Codecs/PictPixelMap.h"

namespace fi {

inline constexpr uint32_t kQuickTimeJpeg = 0x6A706567;  // 'jpeg'
inline constexpr uint32_t kQuickTimeRaw = 0x72617720;   // 'raw '

struct PictImage {
    uint32_t codec = 0;  ///< four characters
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t depth = 0;  ///< bits of a pixel; 32 more for grays
    uint64_t start = 0;  ///< of the data in the source
    uint64_t end = 0;
    PictRect source;  ///< the part that is drawn, in pixels
    PictRect target;
    uint16_t mode = 0;
    std::optional<PictRegion> mask;

    [[nodiscard]] bool isRead() const;
    [[nodiscard]] bool isGray() const { return depth > 32; }
    /// The layout of the pixels of kQuickTimeRaw.
    [[nodiscard]] PictPixelMap rawMap() const;
};

/// Reads the data of the opcode for compressed images, which the input is cut to. Nullopt when it makes no
/// sense or the image is turned or skewed.
[[nodiscard]] std::optional<PictImage> readPictImage(PictInput& input);

/// Reads the data of the opcode for images that are not compressed up to their pixels, which are those of
/// an opcode of their own.
[[nodiscard]] std::optional<PictBits> readPictImageBits(PictInput& input);

/// A stretch of another source, which is BORROWED.
class PictStretch final : public ByteSource {
public:
    PictStretch(ByteSource& source, uint64_t start, uint64_t end)
        : m_source(source), m_start(start), m_size(end > start ? end - start : 0) {}

    [[nodiscard]] uint64_t size() const override { return m_size; }
    [[nodiscard]] size_t read(uint64_t offset, std::span<uint8_t> out) override {
        if (offset >= m_size) return 0;
        const size_t count = static_cast<size_t>(std::min<uint64_t>(out.size(), m_size - offset));
        return m_source.read(m_start + offset, out.first(count));
    }
    [[nodiscard]] bool failed() const override { return m_source.failed(); }

private:
    ByteSource& m_source;
    uint64_t m_start;
    uint64_t m_size;
};

}  // namespace fi

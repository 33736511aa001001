// SPDX-License-Identifier: Apache-2.0
// What the first chunk of a PNG file says about its picture.
#pragma once

#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/SourceWindow.h"

namespace fi {

inline constexpr uint64_t kPngSignatureBytes = 8;
/// Length and name in front of a chunk's data, and the checksum behind it.
inline constexpr uint64_t kPngChunkHeadBytes = 8;
inline constexpr uint64_t kPngChecksumBytes = 4;
/// Neither longer chunks nor longer sides exist.
inline constexpr uint32_t kMaximumPngNumber = 0x7FFFFFFF;

/// Numbers as the file has them.
enum class PngKind : uint8_t { Gray = 0, Color = 2, Palette = 3, GrayAlpha = 4, ColorAlpha = 6 };

struct PngShape {
    uint32_t width = 0;  ///< neither is zero, nor above 2^31 - 1
    uint32_t height = 0;
    uint8_t bits = 8;  ///< of one sample; an allowed depth of the kind
    PngKind kind = PngKind::Color;
    bool interlaced = false;

    /// Samples of a stored pixel, alpha included; a palette's index is one.
    [[nodiscard]] uint32_t samples() const;
    [[nodiscard]] bool isGray() const { return kind == PngKind::Gray || kind == PngKind::GrayAlpha; }
    [[nodiscard]] bool hasAlphaSamples() const {
        return kind == PngKind::GrayAlpha || kind == PngKind::ColorAlpha;
    }
    /// Bytes of a row as it is stored before compression, without the byte that names its filter.
    [[nodiscard]] uint64_t storedRowBytes() const { return (uint64_t{width} * samples() * bits + 7) / 8; }
};

/// Reads the signature and the chunk behind it. Its checksum is not asked.
[[nodiscard]] CodecResult<PngShape> readPngShape(SourceWindow& window);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Makes PNG files of every kind, and changes them chunk by chunk.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "PlatformKit/Codecs/PngShape.h"

namespace fi::test {

/// A file of the shape whose samples are those of pngSampleAt(); a palette has 2^bits colors.
[[nodiscard]] std::vector<uint8_t> makePng(const PngShape& shape);

/// What is stored at a place: 0 to 2^bits - 1.
[[nodiscard]] uint32_t pngSampleAt(const PngShape& shape, uint32_t x, uint32_t y, uint32_t sample);

/// The color of a palette's entry.
[[nodiscard]] std::array<uint8_t, 3> pngPaletteColor(uint32_t index);

/// The chunk with its length and a right checksum.
[[nodiscard]] std::vector<uint8_t> pngChunk(std::string_view name, const std::vector<uint8_t>& data);

/// `png` with a chunk in front of the first one that is called `before`.
[[nodiscard]] std::vector<uint8_t> withPngChunk(const std::vector<uint8_t>& png, std::string_view before,
                                                std::string_view name, const std::vector<uint8_t>& data);

/// Where the first chunk of the name begins: its length, which its name follows.
[[nodiscard]] size_t pngChunkAt(const std::vector<uint8_t>& png, std::string_view name);

/// Where that chunk's checksum begins.
[[nodiscard]] size_t pngChecksumAt(const std::vector<uint8_t>& png, std::string_view name);

/// The data of an "iCCP" chunk.
[[nodiscard]] std::vector<uint8_t> pngProfileData(const std::vector<uint8_t>& profile);

/// A file that declares the shape, and whose picture data are `packed`.
[[nodiscard]] std::vector<uint8_t> pngOfPackedData(const PngShape& shape,
                                                   const std::vector<uint8_t>& packed);

/// The bytes as zlib packs them; level 0 leaves them as they are.
[[nodiscard]] std::vector<uint8_t> zlibPacked(const std::vector<uint8_t>& bytes, int level = 6);

}  // namespace fi::test

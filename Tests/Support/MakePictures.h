// SPDX-License-Identifier: Apache-2.0
// Pictures that tests draw themselves: four corners that cannot be mistaken, as JPEG or TIFF files.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "PlatformKit/Base/PixelBuffer.h"
#include "PlatformKit/Codecs/CodecTypes.h"
#include "Support/TiffBlock.h"

namespace fi::test {

using Bytes = std::vector<uint8_t>;

/// Each corner of the test picture has a quarter of the sides in a colour of its own, on soft gray.
struct CornerColors {
    std::array<uint8_t, 3> topLeft = {220, 30, 30};      ///< red
    std::array<uint8_t, 3> topRight = {30, 200, 30};     ///< green
    std::array<uint8_t, 3> bottomRight = {40, 40, 220};  ///< blue
    std::array<uint8_t, 3> bottomLeft = {230, 220, 40};  ///< yellow
};
inline constexpr CornerColors kCorners;

/// The test picture as a person should see it. In gray, a corner has its green component.
[[nodiscard]] PixelBuffer testPicture(uint32_t width, uint32_t height,
                                      PixelLayout layout = PixelLayout::RGBX32);

/// How a camera that writes this orientation would store the upright picture.
[[nodiscard]] PixelBuffer storedFor(const PixelBuffer& upright, uint16_t orientation);

/// A JPEG file.
[[nodiscard]] Bytes jpegOf(const PixelBuffer& picture, double quality = 0.95,
                           std::optional<Density> density = std::nullopt);

/// What a camera writes about its photo; zero or empty is left out.
struct ExifFacts {
    uint16_t orientation = 0;
    std::string date = {};  ///< of the shot, "YYYY:MM:DD HH:MM:SS"
    uint32_t width = 0;
    uint32_t height = 0;
    std::string maker = {};
};

/// The directories that hold the facts.
[[nodiscard]] TiffDirectory exifDirectory(const ExifFacts& facts);

/// A JPEG file with an Exif block in front.
[[nodiscard]] Bytes withExif(std::span<const uint8_t> jpeg, std::span<const uint8_t> exifBlock);
[[nodiscard]] Bytes withExif(std::span<const uint8_t> jpeg, const ExifFacts& facts,
                             ByteOrder order = ByteOrder::Little);

/// A page of a TIFF file: uncompressed, one strip. More entries may be added to it.
[[nodiscard]] TiffDirectory tiffPage(const PixelBuffer& picture);

/// A TIFF file of one page; orientation 0 leaves it out.
[[nodiscard]] Bytes tiffOf(const PixelBuffer& picture, uint16_t orientation = 0,
                           ByteOrder order = ByteOrder::Little);

}  // namespace fi::test

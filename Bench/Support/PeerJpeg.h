// SPDX-License-Identifier: Apache-2.0
// libjpeg-turbo by itself: the floor under everything that decodes a JPEG.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace fi::bench {

/// A 4:2:0 JPEG of RGB rows.
[[nodiscard]] std::vector<uint8_t> encodePeerJpeg(const std::vector<uint8_t>& rows, uint32_t width,
                                                  uint32_t height, int quality);

/// Decodes into one row's buffer, over and over, at the smallest of the scales 1/8, 1/4, 1/2 and 1 whose
/// shorter side is not below `shorterSide`. Returns the number of rows.
uint32_t decodePeerJpeg(std::span<const uint8_t> jpeg, uint32_t shorterSide);

}  // namespace fi::bench

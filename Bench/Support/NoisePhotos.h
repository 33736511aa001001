// SPDX-License-Identifier: Apache-2.0
// Photos for timings: drawn scenes with noise like a sensor's, so that a JPEG of quality 92 takes about
// 2.8 bits a pixel, as a camera's does.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace fi::bench {

/// RGB rows, three bytes a pixel.
[[nodiscard]] std::vector<uint8_t> noiseScene(uint32_t width, uint32_t height, double noise, uint32_t seed);

/// A 4:2:0 JPEG of quality 92; the noise is chosen so that it takes about 2.8 bits a pixel.
[[nodiscard]] std::vector<uint8_t> noiseJpeg(uint32_t width, uint32_t height, uint32_t seed);

}  // namespace fi::bench

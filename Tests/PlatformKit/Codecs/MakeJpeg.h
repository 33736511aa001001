// SPDX-License-Identifier: Apache-2.0
// Makes the kinds of JPEG that the product reads but does not write.
#pragma once

#include <cstdint>
#include <vector>

#include "PlatformKit/Base/PixelBuffer.h"

namespace fi::test {

struct JpegRecipe {
    bool progressive = false;
    bool cmyk = false;       ///< four inks made from the colors, black where all are dark
    bool adobe = true;       ///< CMYK only: inverted inks with Adobe's marker
    bool ycck = false;       ///< CMYK only: stored as YCCK
    bool halfColor = false;  ///< 4:2:0
    int lumaWide = 1;        ///< samples of brightness for one of color, across; halfColor goes before
    int lumaHigh = 1;        ///< and down
    bool arithmetic = false;
    int restartRows = 0;
};

[[nodiscard]] std::vector<uint8_t> makeJpeg(const PixelBuffer& picture, const JpegRecipe& recipe);

/// `jpeg` with a height of 0, and its height behind the first scan.
[[nodiscard]] std::vector<uint8_t> withLateHeight(const std::vector<uint8_t>& jpeg);

/// A progressive head that declares `width` by `height` pixels, with `scans` scans of next to no data.
[[nodiscard]] std::vector<uint8_t> makeScanBomb(uint16_t width, uint16_t height, uint32_t scans);

/// A baseline head that declares the size and the depth, and a scan with `dataBytes` zeros.
[[nodiscard]] std::vector<uint8_t> makeHollowJpeg(uint16_t width, uint16_t height, uint8_t bits,
                                                  size_t dataBytes);

}  // namespace fi::test

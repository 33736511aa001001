// SPDX-License-Identifier: Apache-2.0
// Writes pictures as TIFF: 8-bit gray or RGB, in strips.
#pragma once

#include <optional>
#include <vector>

#include "PlatformKit/Base/PixelBuffer.h"
#include "PlatformKit/Codecs/CodecTypes.h"

namespace fi {

struct TiffOptions {
    std::optional<Density> density;  ///< 72 dots per inch when absent
    bool lzw = false;                ///< compress without loss; otherwise the samples stand as they are
};

/// The whole file in memory. Strips hold about 64 KiB each. A picture whose file would pass the 4 GiB of
/// a classic TIFF is refused.
CodecResult<std::vector<uint8_t>> encodeTiff(const PixelBuffer& picture, const TiffOptions& options);

}  // namespace fi

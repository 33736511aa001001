// SPDX-License-Identifier: Apache-2.0
// Writes pictures as baseline JPEG.
#pragma once

#include <optional>

#include "PlatformKit/Base/PixelBuffer.h"
#include "PlatformKit/Codecs/ByteSink.h"
#include "PlatformKit/Codecs/CodecTypes.h"

namespace fi {

struct JpegOptions {
    double quality = 1.0;  ///< 0 to 1; one hundredth is one step of libjpeg's scale, 1.0 the best
    std::optional<Density> density;
};

/// Encodes to `sink` in order, in pieces of 64 KiB. Below a quality of 0.9 color is stored at half the
/// resolution, from there on at the full one. nullopt when all went well; after a failure the sink may
/// have taken part of a file.
std::optional<CodecFailure> encodeJpeg(const PixelBuffer& picture, const JpegOptions& options,
                                       const ByteSink& sink);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Pictures as a person wants to see them: turned by their Exif orientation, and fitting a box.
#pragma once

#include "PlatformKit/ImageSource.h"

namespace fi {

/// OWNED. Picture `index` of the source, upright, as large as fits into a box of whole pixels without
/// being enlarged; no side becomes less than one pixel. A box side of 0 is no bound. The density is
/// turned with the picture. Null when it cannot be decoded: `failure` then tells why.
FI_EXPORT Ref<const CGImage> createUprightImage(const ImageSource& source, uint32_t index,
                                                uint32_t boxWidth, uint32_t boxHeight,
                                                ImageFailure* failure = nullptr);

}  // namespace fi

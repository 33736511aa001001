// SPDX-License-Identifier: Apache-2.0
// The inner side of CGImage: how one is made from pixels, and how they are reached.
#pragma once

#include "PlatformKit/Base/PixelBuffer.h"
#include "PlatformKit/CGImage.h"

namespace fi {

/// What an image tells about itself beside its pixels.
struct ImageTraits {
    CGColorSpace colorSpace = CGColorSpace::DeviceRGB;
    NSSize density = {};
    uint32_t tiffCompression = 0;
    Ref<const CFData> iccProfile = {};
    bool damaged = false;
};

struct ImagePixels {
    static Ref<const CGImage> makeImage(PixelBuffer pixels, ImageTraits traits);
    static const PixelBuffer& of(const CGImage& image) { return *image.m_pixels; }
};

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/CGImage.h"

#include <utility>

#include "PlatformKit/Imaging/ImagePixels.h"

namespace fi {

namespace {

constexpr uint32_t kBitsPerByte = 8;

}  // namespace

CGImage::CGImage(PixelBuffer pixels)
    : m_pixels(std::make_unique<const PixelBuffer>(std::move(pixels))),
      m_alphaInfo(m_pixels->layout() == PixelLayout::Gray8 ? CGAlphaInfo::None
                                                           : CGAlphaInfo::NoneSkipLast) {}

CGImage::~CGImage() = default;

uint32_t CGImage::width() const noexcept {
    return m_pixels->width();
}
uint32_t CGImage::height() const noexcept {
    return m_pixels->height();
}
uint32_t CGImage::bitsPerComponent() const noexcept {
    return kBitsPerByte;
}
uint32_t CGImage::bitsPerPixel() const noexcept {
    return kBitsPerByte * bytesPerPixel(m_pixels->layout());
}
size_t CGImage::bytesPerRow() const noexcept {
    return m_pixels->rowBytes();
}
const uint8_t* CGImage::data() const noexcept {
    return m_pixels->row(0);
}

Ref<const CGImage> ImagePixels::makeImage(PixelBuffer pixels, ImageTraits traits) {
    Ref<CGImage> image = adopt(new CGImage(std::move(pixels)));
    image->m_colorSpace = traits.colorSpace;
    image->m_density = traits.density;
    image->m_tiffCompression = traits.tiffCompression;
    image->m_iccProfile = std::move(traits.iccProfile);
    image->m_damaged = traits.damaged;
    return image;
}

}  // namespace fi

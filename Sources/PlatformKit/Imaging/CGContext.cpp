// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/CGContext.h"

#include <utility>

#include "PlatformKit/Drawing/Blit.h"
#include "PlatformKit/Drawing/Scaling.h"
#include "PlatformKit/Drawing/Turns.h"
#include "PlatformKit/Imaging/Failures.h"
#include "PlatformKit/Imaging/ImagePixels.h"
#include "PlatformKit/Limits.h"

namespace fi {

namespace {

PixelLayout layoutOf(CGContextFormat format) {
    return format == CGContextFormat::Gray8 ? PixelLayout::Gray8 : PixelLayout::RGBX32;
}

bool isWithinLimits(uint32_t width, uint32_t height, PixelLayout layout) {
    const DecodeLimits& limits = decodeLimits();
    if (width == 0 || height == 0 || width > limits.maximumSide || height > limits.maximumSide)
        return false;
    // Sides of 32 bits: neither product can wrap.
    const uint64_t pixels = uint64_t{width} * height;
    return pixels <= limits.maximumPixels && pixels <= limits.maximumBytes / bytesPerPixel(layout);
}

PixelColor pixelColor(CGContextColor color) {
    return {color.red, color.green, color.blue};
}

}  // namespace

CGContext::CGContext(PixelBuffer pixels) : m_pixels(std::make_unique<PixelBuffer>(std::move(pixels))) {}
CGContext::~CGContext() = default;

uint32_t CGContext::width() const noexcept {
    return m_pixels->width();
}
uint32_t CGContext::height() const noexcept {
    return m_pixels->height();
}

Ref<CGContext> CGContext::create(uint32_t width, uint32_t height, CGContextFormat format) {
    return withoutExceptions(nullptr, [&]() -> Ref<CGContext> {
        if (!isWithinLimits(width, height, layoutOf(format))) return nullptr;
        auto pixels = PixelBuffer::create(width, height, layoutOf(format));
        if (!pixels) return nullptr;
        return adopt(new CGContext(std::move(*pixels)));
    });
}

/// Far outside, either way, is outside: the clamp keeps the subtraction from wrapping.
int64_t CGContext::rowFromTop(const CGContextRect& rect) const {
    constexpr int64_t kFar = int64_t{1} << 40;
    if (rect.y > kFar || rect.y < -kFar) return kFar;
    return int64_t{m_pixels->height()} - rect.y - int64_t{rect.height};
}

void CGContext::fillRect(const CGContextRect& rect, CGContextColor color) {
    fill(*m_pixels, {rect.x, rowFromTop(rect), rect.width, rect.height}, pixelColor(color));
}

bool CGContext::drawImage(const CGImage& image, const CGContextRect& rect) {
    return withoutExceptions(nullptr, [&]() -> bool {
        if (rect.width == 0 || rect.height == 0) return true;
        const PixelBuffer& source = ImagePixels::of(image);
        if (source.width() == rect.width && source.height() == rect.height) {
            return copyInto(*m_pixels, rect.x, rowFromTop(rect), source);
        }
        if (!isWithinLimits(rect.width, rect.height, source.layout())) return false;
        const auto fitting = scaled(source, rect.width, rect.height);
        return fitting && copyInto(*m_pixels, rect.x, rowFromTop(rect), *fitting);
    });
}

bool CGContext::drawMask(const CGContextRect& rect, std::span<const uint8_t> coverage, size_t rowBytes,
                         CGContextColor color) {
    return fi::drawMask(*m_pixels, rect.x, rowFromTop(rect), {coverage, rowBytes, rect.width, rect.height},
                        pixelColor(color));
}

Ref<const CGImage> CGContext::createImage() const {
    return withoutExceptions(nullptr, [&]() -> Ref<const CGImage> {
        auto copy = turned(*m_pixels, Turn::None);
        if (!copy) return nullptr;
        ImageTraits traits;
        const bool gray = copy->layout() == PixelLayout::Gray8;
        traits.colorSpace = gray ? CGColorSpace::GenericGrayGamma22 : CGColorSpace::SRGB;
        return ImagePixels::makeImage(std::move(*copy), std::move(traits));
    });
}

}  // namespace fi

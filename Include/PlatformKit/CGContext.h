// SPDX-License-Identifier: Apache-2.0
// A page of pixels to draw on.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "PlatformKit/CGImage.h"

namespace fi {

enum class CGContextFormat : uint8_t {
    Gray8,   ///< one byte a pixel, gray of gamma 2.2
    RGBX32,  ///< R, G, B and a byte without meaning, sRGB
};

struct CGContextColor {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;
};

/// Whole pixels, counted from the left and from the bottom edge of the page; may reach beyond it.
struct CGContextRect {
    int64_t x = 0;
    int64_t y = 0;
    uint32_t width = 0;
    uint32_t height = 0;
};

/// What lies outside of the page is not drawn. One thread at a time.
class FI_EXPORT CGContext final : public NSObject {
public:
    /// OWNED. A page of zeros: black. Null for a side of zero, a page beyond the limits of a single
    /// photo, or without memory.
    static Ref<CGContext> create(uint32_t width, uint32_t height, CGContextFormat format);

    [[nodiscard]] uint32_t width() const noexcept;
    [[nodiscard]] uint32_t height() const noexcept;

    /// A gray page takes the green component.
    void fillRect(const CGContextRect& rect, CGContextColor color);

    /// Draws the whole image, BORROWED, into `rect`: an exact copy when the sizes are equal, otherwise
    /// scaled with high quality. False, and nothing drawn, without memory and for colour on a gray page.
    [[nodiscard]] bool drawImage(const CGImage& image, const CGContextRect& rect);

    /// Lays `color` over the page as far as `coverage`, BORROWED, says: `rect.height` rows from the top,
    /// each `rowBytes` bytes apart with one byte a pixel, 0 for none and 255 for all. False, and nothing
    /// drawn, when there are fewer bytes than that.
    [[nodiscard]] bool drawMask(const CGContextRect& rect, std::span<const uint8_t> coverage,
                                size_t rowBytes, CGContextColor color);

    /// OWNED. The page as it is now; null without memory.
    [[nodiscard]] Ref<const CGImage> createImage() const;

private:
    explicit CGContext(PixelBuffer pixels);
    ~CGContext() override;
    [[nodiscard]] int64_t rowFromTop(const CGContextRect& rect) const;

    std::unique_ptr<PixelBuffer> m_pixels;
};

}  // namespace fi

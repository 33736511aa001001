// SPDX-License-Identifier: Apache-2.0
// A picture in memory that never changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "PlatformKit/Data.h"
#include "PlatformKit/Geometry.h"

namespace fi {

class PixelBuffer;

enum class CGColorSpace : uint8_t { DeviceGray, DeviceRGB, GenericGrayGamma22, SRGB };

/// What the bytes of a pixel beside its colours mean.
enum class CGAlphaInfo : uint8_t {
    None,                ///< there are none
    NoneSkipLast,        ///< R, G, B and a byte without meaning
    PremultipliedLast,   ///< R, G, B, already multiplied, and alpha
    PremultipliedFirst,  ///< alpha and R, G, B, already multiplied
};

/// Immutable, so any number of threads may share it.
class FI_EXPORT CGImage final : public NSObject {
public:
    [[nodiscard]] uint32_t width() const noexcept;   ///< pixels
    [[nodiscard]] uint32_t height() const noexcept;  ///< pixels
    [[nodiscard]] uint32_t bitsPerComponent() const noexcept;
    [[nodiscard]] uint32_t bitsPerPixel() const noexcept;
    [[nodiscard]] size_t bytesPerRow() const noexcept;
    [[nodiscard]] CGColorSpace colorSpace() const noexcept { return m_colorSpace; }
    [[nodiscard]] CGAlphaInfo alphaInfo() const noexcept { return m_alphaInfo; }

    /// Rows from the top, each bytesPerRow() bytes; BORROWED, valid as long as the image.
    [[nodiscard]] const uint8_t* data() const noexcept;

    /// Dots per inch that its file states, zero in both when it states none.
    [[nodiscard]] NSSize density() const noexcept { return m_density; }
    /// The TIFF compression code of the file that it comes from; 0 when that was no TIFF file.
    [[nodiscard]] uint32_t tiffCompression() const noexcept { return m_tiffCompression; }
    /// The ICC profile of its file, BORROWED; null when there is none.
    [[nodiscard]] CFDataRef iccProfile() const noexcept { return m_iccProfile.get(); }
    /// True when some of its rows could not be read and were filled in.
    [[nodiscard]] bool isDamaged() const noexcept { return m_damaged; }

private:
    friend struct ImagePixels;
    explicit CGImage(PixelBuffer pixels);
    ~CGImage() override;

    std::unique_ptr<const PixelBuffer> m_pixels;
    CGColorSpace m_colorSpace = CGColorSpace::DeviceRGB;
    CGAlphaInfo m_alphaInfo = CGAlphaInfo::None;
    bool m_damaged = false;
    uint32_t m_tiffCompression = 0;
    NSSize m_density;
    Ref<const CFData> m_iccProfile;
};

using CGImageRef = const CGImage*;

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// What is to be converted into what, and what converts rows of it.
#pragma once

#include <cstdint>
#include <memory>

#include "PlatformKit/Base/ByteView.h"

namespace fi {

/// What the samples of a pixel stand for, in the order in which they lie.
enum class ColorSamples : uint8_t {
    Gray,
    RGB,
    CMYK,          ///< the largest value is full ink
    InvertedCMYK,  ///< the largest value is no ink, as in the JPEG files of some programs
    CIELab,        ///< a and b are signed; words hold L up to 65535 and 256 steps for a unit of a and b
    ICCLab,        ///< a and b begin at -128; words hold L up to 65280 and 256 steps for a unit of a and b
};

enum class ColorTarget : uint8_t { SRGB, Gray };

/// One kind of conversion. Colour to gray is there without a profile only, from sRGB.
struct ColorTask {
    ColorSamples samples = ColorSamples::RGB;
    ColorTarget target = ColorTarget::SRGB;
    bool words = false;  ///< samples of 16 bits, on both sides
    ByteView profile;    ///< BORROWED; empty for the space that the samples commonly mean
};

/// Converts pixels in a row. Immutable; any number of threads.
class RowConverter {
public:
    RowConverter() = default;
    virtual ~RowConverter() = default;
    RowConverter(const RowConverter&) = delete;
    RowConverter& operator=(const RowConverter&) = delete;

    /// A pixel is one sample of gray or four of anything else. The fourth of RGB is stepped over, on the
    /// way out it becomes the largest value. Lab lies as the engine wants it, see prepareLab(). `to` may
    /// be `from` where their pixels are of one size.
    virtual void convert(const uint8_t* from, uint8_t* to, uint32_t pixels) const = 0;
};

/// The answer to a task. Without a converter the reason says why.
struct ColorAnswer {
    enum class Kind : uint8_t {
        Converter,
        Identity,  ///< both sides are the same
        Refused,   ///< the profile cannot be used
        NoMemory,
    };
    Kind kind = Kind::Refused;
    std::shared_ptr<const RowConverter> converter = nullptr;
};

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Colours as an embedded profile means them, brought to sRGB or to gray of gamma 2.2.
//
// Device gray counts as gray of gamma 2.2 and device RGB as sRGB, so neither needs anything of this; it is
// for pictures with a profile, for inks and Lab, and for the step between colour and gray.
#pragma once

#include <cstdint>

#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/Base/PixelBuffer.h"
#include "PlatformKit/Drawing/ColorTask.h"

namespace fi {

/// What the samples of a picture stand for, and by which profile.
struct ColorSource {
    ColorSamples samples = ColorSamples::RGB;
    ByteView profile;  ///< of the ICC, BORROWED for the call; empty for none
};

enum class ColorOutcome : uint8_t {
    Converted,       ///< as the profile says; without one, as the samples are commonly meant
    Unchanged,       ///< nothing was to be converted; the pixels are untouched
    ProfileRefused,  ///< the profile is broken, too large or of other samples: done as without one
    Unsuitable,      ///< the layout cannot hold such samples; the pixels are untouched
    NoMemory,        ///< the pixels are untouched
};

/// Converts the picture to sRGB with the perceptual intent. Colour is converted in place: RGB in RGBX32,
/// RGBX64, RGBA32 and ARGB32; inks and Lab in RGBX32 and RGBX64, whose four (three) samples they then are,
/// and R, G, B, full afterwards. Gray becomes RGBX32, or RGBX64 from Gray16. Alpha keeps its value; colours
/// multiplied by it are converted as what they were before. Without a profile RGB is sRGB already, gray has
/// gamma 2.2, Lab is that of D50, and inks are converted plainly.
///
/// At most `threads` threads work, the calling one among them; the pixels do not depend on their number.
/// Any thread, on different pictures at a time. What a profile asks for is remembered for the process.
ColorOutcome convertToSRGB(PixelBuffer& picture, const ColorSource& source, uint32_t threads);

/// Converts the picture to gray of gamma 2.2 and the white of D50: Gray8, or Gray16 from words. Colour goes
/// by way of sRGB, transparent pixels lie on white. Gray with a profile keeps its layout. Gray1 has black
/// and white only and is left as it is. For the rest see convertToSRGB().
ColorOutcome convertToGray(PixelBuffer& picture, const ColorSource& source, uint32_t threads);

}  // namespace fi

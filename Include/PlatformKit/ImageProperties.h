// SPDX-License-Identifier: Apache-2.0
// The keys of the dictionary that ImageSource::copyProperties() gives. All are BORROWED: they are constants
// that live as long as the library.
#pragma once

#include "PlatformKit/String.h"

namespace fi {

// Numbers, unless said otherwise.
FI_EXPORT extern const CFStringRef kCGImagePropertyPixelWidth;  ///< stored pixels, not upright ones
FI_EXPORT extern const CFStringRef kCGImagePropertyPixelHeight;
FI_EXPORT extern const CFStringRef kCGImagePropertyDepth;       ///< bits per component
FI_EXPORT extern const CFStringRef kCGImagePropertyColorModel;  ///< text, one of the four below
FI_EXPORT extern const CFStringRef kCGImagePropertyDPIWidth;    ///< absent when the file states none
FI_EXPORT extern const CFStringRef kCGImagePropertyDPIHeight;
FI_EXPORT extern const CFStringRef
    kCGImagePropertyOrientation;  ///< 1 to 8; absent when the file states none

FI_EXPORT extern const CFStringRef kCGImagePropertyColorModelRGB;
FI_EXPORT extern const CFStringRef kCGImagePropertyColorModelGray;
FI_EXPORT extern const CFStringRef kCGImagePropertyColorModelCMYK;
FI_EXPORT extern const CFStringRef kCGImagePropertyColorModelLab;

// Dictionaries of the standard tags that the file holds, each absent when it holds none. Text is text,
// numbers are numbers (fractions as floating point), several of them an array, and bytes without a
// meaning of their own are data. Maker notes are left out.
FI_EXPORT extern const CFStringRef kCGImagePropertyExifDictionary;  ///< "{Exif}"
FI_EXPORT extern const CFStringRef kCGImagePropertyTIFFDictionary;  ///< "{TIFF}"
/// "{GPS}": latitudes, longitudes and their kin in degrees, the time stamp as text.
FI_EXPORT extern const CFStringRef kCGImagePropertyGPSDictionary;

FI_EXPORT extern const CFStringRef kCGImagePropertyExifColorSpace;
FI_EXPORT extern const CFStringRef kCGImagePropertyExifCustomRendered;
FI_EXPORT extern const CFStringRef kCGImagePropertyExifDateTimeDigitized;  ///< "YYYY:MM:DD HH:MM:SS"
FI_EXPORT extern const CFStringRef kCGImagePropertyExifDateTimeOriginal;
FI_EXPORT extern const CFStringRef kCGImagePropertyExifPixelXDimension;
FI_EXPORT extern const CFStringRef kCGImagePropertyExifPixelYDimension;

FI_EXPORT extern const CFStringRef kCGImagePropertyTIFFDateTime;
FI_EXPORT extern const CFStringRef kCGImagePropertyTIFFMake;
FI_EXPORT extern const CFStringRef kCGImagePropertyTIFFModel;
FI_EXPORT extern const CFStringRef kCGImagePropertyTIFFOrientation;
FI_EXPORT extern const CFStringRef kCGImagePropertyTIFFSoftware;

FI_EXPORT extern const CFStringRef kCGImagePropertyGPSLatitude;
FI_EXPORT extern const CFStringRef kCGImagePropertyGPSLatitudeRef;
FI_EXPORT extern const CFStringRef kCGImagePropertyGPSLongitude;
FI_EXPORT extern const CFStringRef kCGImagePropertyGPSLongitudeRef;

}  // namespace fi

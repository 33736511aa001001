// SPDX-License-Identifier: Apache-2.0
// Codes for the kinds of files: five constant strings, told apart by identity or, ignoring case, by text.
#pragma once

#include <cstdint>

#include "PlatformKit/String.h"

namespace fi {

FI_EXPORT extern const CFStringRef kUTTypeJPEG;   ///< "public.jpeg"
FI_EXPORT extern const CFStringRef kUTTypeTIFF;   ///< "public.tiff"
FI_EXPORT extern const CFStringRef kUTTypePICT;   ///< "com.apple.pict"
FI_EXPORT extern const CFStringRef kUTTypePDF;    ///< "com.adobe.pdf"
FI_EXPORT extern const CFStringRef kUTTypeImage;  ///< "public.image": any other image

/// A four-character code.
using OSType = uint32_t;
inline constexpr OSType kUnknownOSType = 0x3F3F3F3F;  ///< "????"

}  // namespace fi

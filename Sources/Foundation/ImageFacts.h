// SPDX-License-Identifier: Apache-2.0
// What an image file's header says: its size, its depth, its properties. No pixels are decoded.
#pragma once

#include <cstdint>

#include "FileImporter/ResultCodes.h"
#include "PlatformKit/DateTime.h"
#include "PlatformKit/Dictionary.h"
#include "PlatformKit/URL.h"

namespace fi {

/// OWNED. Properties of the first image of the file; null when there is none.
[[nodiscard]] Ref<const CFDictionary> imagePropertiesAt(CFURLRef url);

/// {0, 0, height, width} in stored pixels, modulo 2^16; all zero when the file is no image that is read
/// here (a PICT or PDF has no pixels of its own).
[[nodiscard]] Rect imageBoundsAt(CFURLRef url);

/// Bits per pixel of the file's first image; -43, `*depth` untouched, for a null URL, a Qal file and a
/// file without an image.
[[nodiscard]] OSErr imageDepthAt(CFURLRef url, int32_t* depth);
/// The same by a path, or by the text of a file URL ("file://" anywhere in it).
[[nodiscard]] OSErr imageDepthAtPath(CFStringRef path, int32_t* depth);

}  // namespace fi

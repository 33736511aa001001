// SPDX-License-Identifier: Apache-2.0
// Which part of a photo is printed: from fractions of its sides to pixels, and from the stored photo to one
// that is mirrored and turned. Sides are computed modulo 2^16. Any thread.
#pragma once

#include <cstdint>

#include "FileImporter/Records.h"
#include "FileImporter/ResultCodes.h"
#include "PlatformKit/DateTime.h"
#include "PlatformKit/URL.h"

namespace fi {

/// True when both sides are inverted, as EmptyRect() has it.
[[nodiscard]] bool isInvertedBothWays(const Rect& rect);

/// Moves `left` and `right` by `dx`, `top` and `bottom` by `dy`.
void offsetRect(Rect& rect, int16_t dx, int16_t dy);

/// The pixels within `bounds` that `ratio` means, whose y counts from the bottom. A negative top or left
/// becomes 0, right and bottom end at the bounds; nothing else is put right. A fraction that is not finite
/// counts as 0 pixels.
[[nodiscard]] Rect makeTrimmingRect(const Rect& bounds, const TrimRatio& ratio);

/// How a picture is mirrored, and turned after that.
struct Turning {
    int32_t rotation =
        0;  ///< 1 a quarter turn clockwise, 2 a half turn, 3 a quarter turn back; others none
    bool mirrorsHorizontally = false;  ///< left and right change places
    bool mirrorsVertically = false;    ///< top and bottom change places
};

/// Where `trimming` lies in the picture when that has been mirrored and turned. The height of the picture
/// is `bounds.bottom`, its width `bounds.right`; a quarter turn exchanges them, and the bounds' top and
/// left are neither looked at nor touched.
[[nodiscard]] Rect convertTrimmingRect(Rect& bounds, const Rect& trimming, const Turning& turning);

/// makeTrimmingRect() in the stored pixels of a file, all zero where it is no image that is read here. -43
/// when nothing exists there. 0 otherwise; `*trimming` is left alone when both sides of the photo are of
/// 32,768 pixels and more, since they have no place in a Rect.
[[nodiscard]] OSErr trimmingRectAt(CFURLRef url, const TrimRatio& ratio, Rect* trimming);

}  // namespace fi

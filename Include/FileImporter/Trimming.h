// SPDX-License-Identifier: Apache-2.0
// Rectangles of the trimming of a photo.
#pragma once

#include "PlatformKit/DateTime.h"
#include "PlatformKit/Export.h"

namespace fi {

/// True only for a rectangle that is inverted both ways: `bottom` less than `top`, and `right` less than
/// `left`. Deliberately so: one without width or height, or inverted in one direction, is not empty here.
/// Any thread.
FI_EXPORT bool EmptyRect(Rect rect);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Whether a photo says that its colours are Adobe RGB.
#pragma once

#include "FileImporter/CIMAGETAG.h"

namespace fi {

/// Looks at the field that `tags` holds, which stays open; see ExifCheckAdobeRGB.
[[nodiscard]] bool isAdobeRGB(CIMAGETAG& tags);

}  // namespace fi

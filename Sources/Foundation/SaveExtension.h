// SPDX-License-Identifier: Apache-2.0
// Under which extension a converted file is saved.
#pragma once

#include "FileImporter/FileTypeCodes.h"
#include "PlatformKit/Text/PascalText.h"
#include "PlatformKit/URL.h"

namespace fi {

/// Chooses among the three file-type codes that the destination accepts, in its order of preference, and
/// writes the extension (with its dot, length-prefixed, the rest of the buffer zero).
void chooseSaveExtension(CFURLRef url, const CFStringRef (&accepted)[3], PascalBuffer& extension);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Whether a PDF file is one that the library lists and renders.
#pragma once

#include "PlatformKit/URL.h"

namespace fi {

/// False for a null URL, one without a path, and a path of 2048 bytes or more; the query is then not
/// asked.
[[nodiscard]] bool isListedPdfAt(CFURLRef url);

}  // namespace fi

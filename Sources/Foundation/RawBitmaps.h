// SPDX-License-Identifier: Apache-2.0
// Raw image records made from other components' bitmaps.
#pragma once

#include "FileImporter/Records.h"
#include "FileImporter/ResultCodes.h"

namespace fi {

/// Fills the record of a bitmap, whose pixels it goes on referring to. -50, the record untouched, for a
/// kind outside 1 to 3.
[[nodiscard]] OSErr makePATIMG(const tagRAWBITMAP& bitmap, PATIMG& image);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Finds the directories of a TIFF file's pages by their links alone.
#pragma once

#include <cstdint>
#include <vector>

#include "PlatformKit/Base/ByteSource.h"

namespace fi {

/// Offsets of the directories in their order, at most as many as the limit of pages. A link that leads
/// back or out of the file ends the chain. Empty when the source is no TIFF file.
[[nodiscard]] std::vector<uint64_t> findTiffPages(ByteSource& source);

}  // namespace fi

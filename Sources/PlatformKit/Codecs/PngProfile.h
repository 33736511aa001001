// SPDX-License-Identifier: Apache-2.0
// The color profile of a PNG file, which is stored compressed.
#pragma once

#include <vector>

#include "PlatformKit/Base/ByteView.h"

namespace fi {

/// The profile inside the data of an "iCCP" chunk; empty when it is damaged, cut or longer than 16 MiB.
/// Throws std::bad_alloc without memory.
[[nodiscard]] std::vector<uint8_t> unpackPngProfile(ByteView chunk);

}  // namespace fi

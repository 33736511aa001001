// SPDX-License-Identifier: Apache-2.0
// Questions about an opened TIFF page that stand before every way of decoding it.
#pragma once

#include <optional>

#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/TiffHandle.h"

namespace fi {

/// Why the page must not be decoded to the floor: its sides, pixels or memory pass a limit, or the file is
/// far too short for it.
[[nodiscard]] std::optional<CodecFailure> checkTiffLimits(const TiffHandle& handle, SizeFloor floor);

/// Rows of a strip or of a row of tiles, at most those of the picture: what is decoded at once.
[[nodiscard]] uint32_t tiffBandRows(const TiffHandle& handle);

/// True when the file says that the first sample behind the colors is an alpha. Additional samples
/// without a meaning are often masks that an editor left behind: they hide nothing.
[[nodiscard]] bool saysAlpha(const TiffHandle& handle);

/// True for white-is-zero and black-is-zero pictures.
[[nodiscard]] bool isGray(const TiffHandle& handle);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Run-length coding of units of one byte or of two.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace fi {

/// Unpacks until either side ends. Returns how many bytes of `out` were filled; the others are zero.
size_t unpackPictBits(std::span<const uint8_t> packed, size_t unitBytes, std::span<uint8_t> out);

}  // namespace fi

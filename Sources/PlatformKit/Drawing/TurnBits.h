// SPDX-License-Identifier: Apache-2.0
// The copying under the turns: pixels that share bytes, the first in the highest bit.
#pragma once

#include "PlatformKit/Drawing/TurnBlocks.h"

namespace fi {

/// What is copied where, in pixels. Bits of the source beyond its width mean nothing; those of the target
/// become 0. The two pictures have no byte in common.
struct BitCopy {
    SourceRows from;
    TargetRows to;
    uint32_t width;   ///< of the source
    uint32_t height;  ///< of the source
};

/// Copies the rows in their order.
void copyBitRows(const BitCopy& copy);

/// Copies the rows in their order, the last pixel of each first.
void mirrorBitRows(const BitCopy& copy);

/// The first column becomes the first row.
void exchangeBitAxes(const BitCopy& copy);

}  // namespace fi

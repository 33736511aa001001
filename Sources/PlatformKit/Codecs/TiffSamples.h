// SPDX-License-Identifier: Apache-2.0
// Rows of samples of any depth, reduced to eight bits.
#pragma once

#include <cstdint>
#include <span>

namespace fi {

/// How the samples of a row are stored: as integers from 1 to 32 bits or of 64, or as floating-point
/// numbers of 16, 32 or 64 bits. Depths of whole words stand in this machine's byte order, as libtiff
/// hands them out; others are packed from the highest bit on.
struct SampleFormat {
    uint32_t bits = 8;
    bool floating = false;

    [[nodiscard]] bool isKnown() const;
};

/// Takes `count` samples, the first being number `first` of the row and each next one `step` further, and
/// puts them as 0 to 255 to `out`, `outStep` bytes apart. Integers are scaled by their full range; of
/// floating-point numbers 0 is black and 1 is white. Samples behind the end of the row are 0.
void takeSamples(std::span<const uint8_t> row, SampleFormat format, uint64_t first, uint64_t step,
                 uint32_t count, uint8_t* out, uint32_t outStep);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Blocks of pixels moved without anything that not every processor has.
#pragma once

#include <cstring>

#include "PlatformKit/Drawing/TurnBlocks.h"

namespace fi {

/// Bytes of a line of the processor's caches, which a block is wide.
constexpr uint32_t kLineBytes = 64;

/// A block is a line wide and two high: pairs of lines in turns write faster than single ones.
template <typename Pixel>
constexpr uint32_t kBlockColumns = kLineBytes / sizeof(Pixel);
template <typename Pixel>
constexpr uint32_t kBlockRows = 2 * kBlockColumns<Pixel>;

/// A block whose columns have become rows.
template <typename Pixel>
struct alignas(kLineBytes) TurnedBlock {
    Pixel rows[kBlockColumns<Pixel>][kBlockRows<Pixel>];
};

struct PlainBlocks {
    template <typename Pixel>
    static void transpose(SourceRows from, TurnedBlock<Pixel>& to) {
        for (uint32_t y = 0; y < kBlockRows<Pixel>; ++y) {
            const uint8_t* row = from.row(y);
            for (uint32_t x = 0; x < kBlockColumns<Pixel>; ++x)
                std::memcpy(&to.rows[x][y], row + x * sizeof(Pixel), sizeof(Pixel));
        }
    }

    /// Writes the block's rows where they belong.
    template <typename Pixel>
    static void store(const TurnedBlock<Pixel>& block, TargetRows to) {
        for (uint32_t y = 0; y < kBlockColumns<Pixel>; ++y)
            std::memcpy(to.row(y), block.rows[y], sizeof(block.rows[y]));
    }

    /// The same, past the caches.
    template <typename Pixel>
    static void storePast(const TurnedBlock<Pixel>& block, TargetRows to) {
        store(block, to);
    }

    /// Copies `count` pixels, the last first.
    template <typename Pixel>
    static void mirror(const uint8_t* from, uint8_t* to, size_t count) {
        for (size_t x = 0; x < count; ++x)
            std::memcpy(to + x * sizeof(Pixel), from + (count - 1 - x) * sizeof(Pixel), sizeof(Pixel));
    }

    template <typename Pixel>
    static void mirrorPast(const uint8_t* from, uint8_t* to, size_t count) {
        mirror<Pixel>(from, to, count);
    }

    /// What was written past the caches comes before what is written from now on.
    static void finishPast() {}
};

}  // namespace fi

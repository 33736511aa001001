// SPDX-License-Identifier: Apache-2.0
// Finds out quickly whether a list of paths holds one with the same canonical decomposition.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "PlatformKit/Array.h"
#include "PlatformKit/String.h"

namespace fi {

/// A hash table that looks into the list instead of copying it: a slot is eight bytes, so that the index of
/// a large list still lies in the processor's caches.
class PathIndex {
public:
    /// Follows `list`, which must outlive the index and only grow.
    explicit PathIndex(NSMutableArray& list);

    /// Appends a path to the list unless it holds one with the same decomposition.
    void add(CFStringRef path);

private:
    struct Slot {
        uint32_t hash;
        uint32_t position;  ///< of a path in the list, from 1; 0 in a free slot
    };

    void followList();
    void makeRoom();
    void insert(Slot entry);
    [[nodiscard]] bool contains(uint32_t hash, std::string_view form) const;

    NSMutableArray& m_list;
    size_t m_followed = 0;
    size_t m_used = 0;
    std::vector<Slot> m_slots;  ///< a power of two of them
};

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Memory of the tag reader: plain blocks, as the records that it hands out are freed with std::free.
#pragma once

#include <cstdlib>
#include <string_view>

#include "PlatformKit/Base/Faults.h"

namespace fi {

/// OWNED (std::free): a block, or the block `old` with another size. Null without memory; `old` stays then.
/// `who` is the detail of Fault::Allocation: "CreateField" for the buffer of a reader's blocks,
/// "GetTagData" for a value, "PushChain" for the records of a slot, "GetInfo" and "GetArray" for a copy,
/// "TagData" for the head of a file when its parts do not do.
[[nodiscard]] inline void* reallocateTagMemory(void* old, size_t size, std::string_view who) {
    if (faultHappens(Fault::Allocation, who)) return nullptr;
    return std::realloc(old, size == 0 ? 1 : size);
}

[[nodiscard]] inline void* allocateTagMemory(size_t size, std::string_view who) {
    return reallocateTagMemory(nullptr, size, who);
}

}  // namespace fi

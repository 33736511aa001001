// SPDX-License-Identifier: Apache-2.0
// Relocatable memory blocks with a size ("handles"), as some operations take and give them.
#pragma once

#include <cstddef>

#include "PlatformKit/Export.h"

namespace fi {

/// Points at the pointer to the block.
using Handle = char**;

/// OWNED: a block of `size` bytes (contents undefined), given back with DisposeHandle; null without memory.
FI_EXPORT Handle NewHandle(size_t size);
/// Gives a handle back. Null is allowed.
FI_EXPORT void DisposeHandle(Handle handle);
/// Bytes of the block; 0 for null.
FI_EXPORT size_t GetHandleSize(Handle handle);
/// OWNED: a new handle with a copy of `size` bytes through `*out`. 0, or -108 without memory (then
/// `*out` is null).
FI_EXPORT short PtrToHand(const void* bytes, Handle* out, size_t size);

}  // namespace fi

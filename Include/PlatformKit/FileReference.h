// SPDX-License-Identifier: Apache-2.0
// A small record that stands for an existing file or folder, copied byte by byte as callers like.
#pragma once

#include <cstdint>
#include <type_traits>

#include "PlatformKit/URL.h"

namespace fi {

/// 80 bytes; the same item gives equal bytes. All zero stands for no item.
struct FSRef {
    uint64_t id;           ///< of a process-wide table of paths
    uint8_t reserved[72];  ///< zero
};
static_assert(sizeof(FSRef) == 80 && std::is_trivially_copyable_v<FSRef>);

/// Makes a reference to the file or folder at `path` (any bytes; links are followed). False, `*out`
/// untouched, when nothing exists there. Any thread.
FI_EXPORT bool makeFileReference(const char* path, FSRef* out);

/// OWNED. The URL of the item, links resolved as when its reference was made; null for a reference
/// that nobody made.
FI_EXPORT Ref<const CFURL> urlOfFileReference(const FSRef& reference);

}  // namespace fi

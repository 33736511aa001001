// SPDX-License-Identifier: Apache-2.0
// Reading a photo's head, which is where its facts stand, or all of it.
#pragma once

#include <cstdint>

#include "FileImporter/ResultCodes.h"
#include "PlatformKit/Data.h"
#include "PlatformKit/URL.h"

namespace fi {

/// Bytes of a limited read.
inline constexpr uint32_t kHeadBytes = 65567;

enum class ReadLimit : uint8_t { Head, None };

struct HeadRead {
    OSErr code = kNotFoundErr;
    Ref<const CFData> data;  ///< null unless the code is 0
    uint32_t readSize = 0;   ///< bytes to read by the file's size, also when reading them fails
};

/// Reads at most kHeadBytes, or all. Links are followed; the size counts modulo 2^32. -43 for a missing
/// or empty file, one that cannot be opened, and a Qal file (its picture is read elsewhere); -108 when
/// reading fails (a folder, a pulled card).
[[nodiscard]] HeadRead readHead(CFStringRef path, ReadLimit limit);

/// OWNED (free): the same bytes in a block. When fewer came than announced, the whole file is read again,
/// limit or not. Null as readFileBlock's callers document; `size` may be null.
[[nodiscard]] void* readFileBlock(CFURLRef url, uint32_t* size, ReadLimit limit);

}  // namespace fi

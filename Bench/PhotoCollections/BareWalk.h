// SPDX-License-Identifier: Apache-2.0
// The least that a walk which looks at every file can do: the system's own calls and the extension test.
#pragma once

#include <cstddef>

namespace fi::bench {

/// The number of photos below a folder.
[[nodiscard]] size_t countPhotosBarely(const char* folder);

}  // namespace fi::bench

// SPDX-License-Identifier: Apache-2.0
// Where the library keeps its own files: a temporary folder and a cache folder, both private.
#pragma once

#include <string_view>

#include "PlatformKit/URL.h"

namespace fi {

/// Chooses the folder under which temporary copies are made, before the first use; false afterwards.
/// Otherwise it is made, mode 0700, in $TMPDIR or the shared temporary folder and removed at exit. A
/// chosen folder is used as it is and never removed.
FI_EXPORT bool setTemporaryFolder(std::string_view path);

/// Chooses the folder of cached images, before the first use; false afterwards. Otherwise it is
/// $XDG_CACHE_HOME (or ~/.cache)/<program>/FileImporter, or FileImporter.<n> when another running copy
/// holds that; without a usable one, a folder in the temporary folder.
FI_EXPORT bool setCacheFolder(std::string_view path);

/// OWNED. The folder in use, made when it did not exist; null when none can be had. Any thread.
FI_EXPORT Ref<const CFURL> copyTemporaryFolder();
FI_EXPORT Ref<const CFURL> copyCacheFolder();

}  // namespace fi

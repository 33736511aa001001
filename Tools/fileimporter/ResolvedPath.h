// SPDX-License-Identifier: Apache-2.0
// One spelling for each file.
#pragma once

#include <string>

namespace fi {

/// The absolute path without links and dots, as a search lists its photos; `path` as it is where that
/// cannot be found out.
[[nodiscard]] std::string resolvedPath(const std::string& path);

}  // namespace fi

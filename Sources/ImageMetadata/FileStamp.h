// SPDX-License-Identifier: Apache-2.0
// By what a remembered file is known to be unchanged.
#pragma once

#include <sys/stat.h>

#include <optional>

namespace fi {

/// The modification time as records keep it: seconds since 1970, compared for equality. There is no other
/// place that computes it.
[[nodiscard]] double modificationTimeOf(const struct stat& status);

/// The modification time of what stands at the path, of a link itself; nothing when no file exists there (a
/// link counts as what it points at). One system call unless it is a link.
[[nodiscard]] std::optional<double> modificationTimeAt(const char* path);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Standard error.
#pragma once

#include <string_view>

namespace fi {

/// Writes at once. A standard error that is gone is no reason to stop, so nothing tells of it.
void writeError(std::string_view text);

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// What the running program is called.
#pragma once

#include <string>

namespace fi {

/// The name of the running program: its file's name without an extension.
[[nodiscard]] std::string programName();

}  // namespace fi

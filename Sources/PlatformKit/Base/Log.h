// SPDX-License-Identifier: Apache-2.0
// Writing to the system log.
#pragma once

namespace fi {

/// Writes one line, to the installed sink or to the system log (priority: error).
void writeLog(const char* message);

}  // namespace fi

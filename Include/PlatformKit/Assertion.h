// SPDX-License-Identifier: Apache-2.0
// What happens when an assertion fails, and how a program takes that over.
#pragma once

#include "PlatformKit/Export.h"

namespace fi {

struct AssertionReport {
    const char* message;   ///< the text that goes to the log
    const char* function;  ///< null for a retired entry point
    const char* file;      ///< null for a retired entry point
    unsigned line;         ///< 0 for a retired entry point
    bool retired;          ///< a retired entry point was called; it will return its failure
};

/// Called with every failed assertion, on the thread that failed. It may return: a failed condition
/// then goes on as if it had held.
using AssertionHandler = void (*)(const AssertionReport& report);

/// Installs a handler for the process and returns the one before; null brings the default back. The
/// default writes the message to the system log and, unless `retired`, one line to standard error,
/// and aborts. Any thread.
FI_EXPORT AssertionHandler setAssertionHandler(AssertionHandler handler);

}  // namespace fi

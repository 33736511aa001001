// SPDX-License-Identifier: Apache-2.0
// The system log. The library writes nothing to it but the messages of failed assertions.
#pragma once

#include "PlatformKit/Export.h"

namespace fi {

/// Receives one line, without its line end.
using LogSink = void (*)(const char* message, void* context);

/// Sends what would go to the system log to `sink` instead; null brings the system log back (identity:
/// the program's name, priority: error). Any thread; a call under way still goes to the old sink.
FI_EXPORT void setLogSink(LogSink sink, void* context);

}  // namespace fi

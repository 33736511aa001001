// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Base/Log.h"

#include <errno.h>
#include <syslog.h>

#include <mutex>

#include "PlatformKit/Log.h"

namespace fi {

namespace {

struct Installed {
    LogSink sink = nullptr;
    void* context = nullptr;
};

constinit std::mutex s_mutex;
constinit Installed s_installed;

}  // namespace

void setLogSink(LogSink sink, void* context) {
    const std::lock_guard lock(s_mutex);
    s_installed = {sink, context};
}

void writeLog(const char* message) {
    Installed installed;
    {
        const std::lock_guard lock(s_mutex);
        installed = s_installed;
    }
    if (installed.sink != nullptr) {
        installed.sink(message, installed.context);
        return;
    }
    // Without openlog the identity is the program's name, and the host's own settings stay.
    syslog(LOG_USER | LOG_ERR, "%s", message);
}

}  // namespace fi

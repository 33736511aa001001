// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Base/Assertion.h"

#include <errno.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "PlatformKit/Assertion.h"
#include "PlatformKit/Base/Log.h"

namespace fi {

namespace {

void defaultHandler(const AssertionReport& report) {
    writeLog(report.message);
    if (report.retired) return;
    std::fprintf(stderr, "%s: %s:%u: %s: Assertion failed: %s\n", program_invocation_short_name,
                 report.file, report.line, report.function, report.message);
    std::fflush(stderr);
    std::abort();
}

constinit std::atomic<AssertionHandler> s_handler{&defaultHandler};

}  // namespace

AssertionHandler setAssertionHandler(AssertionHandler handler) {
    return s_handler.exchange(handler != nullptr ? handler : &defaultHandler);
}

void assertionFailed(const char* function, const char* file, unsigned line, const char* message) {
    s_handler.load()({message, function, file, line, false});
}

void reportRetired(const char* message) {
    s_handler.load()({message, nullptr, nullptr, 0, true});
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Catches what would go to the system log, for the length of a scope.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "PlatformKit/Log.h"

namespace fi::test {

class CapturedLog {
public:
    CapturedLog() {
        setLogSink(
            [](const char* message, void* context) {
                auto* log = static_cast<CapturedLog*>(context);
                const std::lock_guard lock(log->m_mutex);
                log->m_lines.emplace_back(message);
            },
            this);
    }
    ~CapturedLog() { setLogSink(nullptr, nullptr); }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    [[nodiscard]] std::vector<std::string> lines() const {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// A disk that is full, for the length of a scope.
#pragma once

#include <sys/resource.h>
#include <csignal>

namespace fi::test {

/// No file of this process, or of those that it starts, becomes longer than `longest` bytes.
class FullDisk {
public:
    explicit FullDisk(rlim_t longest) : m_handler(signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{longest, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

}  // namespace fi::test

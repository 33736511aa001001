// SPDX-License-Identifier: Apache-2.0
// One thread waits for work that another one does.
#pragma once

#include <condition_variable>
#include <exception>
#include <mutex>

namespace fi {

/// Shared by the two (std::shared_ptr), so that neither can outlive it: a thread that still waits when
/// the process ends keeps its condition variable.
class Completion {
public:
    /// Lets the waiting thread go on, with what the work threw or null. Once.
    void finish(std::exception_ptr failure);
    /// Returns after finish; throws what the work threw.
    void wait();

private:
    std::mutex m_mutex;
    std::condition_variable m_finished;
    bool m_isFinished = false;
    std::exception_ptr m_failure;
};

}  // namespace fi

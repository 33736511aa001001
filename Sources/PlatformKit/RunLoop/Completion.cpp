// SPDX-License-Identifier: Apache-2.0
// The hand-over of a result between two threads.
#include "PlatformKit/RunLoop/Completion.h"

#include <utility>

namespace fi {

void Completion::finish(std::exception_ptr failure) {
    {
        const std::lock_guard lock(m_mutex);
        m_failure = std::move(failure);
        m_isFinished = true;
    }
    m_finished.notify_all();
}

void Completion::wait() {
    std::unique_lock lock(m_mutex);
    m_finished.wait(lock, [this] { return m_isFinished; });
    if (m_failure) std::rethrow_exception(std::exchange(m_failure, nullptr));
}

}  // namespace fi

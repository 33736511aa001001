// SPDX-License-Identifier: Apache-2.0
// One descriptor for event loops of other makers: readable on demand and from a moment on.
#pragma once

#include <chrono>
#include <memory>
#include <optional>

namespace fi {

/// An event counter and a timer behind one epoll descriptor. One thread at a time.
class WakeDescriptor {
public:
    using Clock = std::chrono::steady_clock;

    /// Null when the system has no descriptors left.
    [[nodiscard]] static std::unique_ptr<WakeDescriptor> open();
    ~WakeDescriptor();
    WakeDescriptor(const WakeDescriptor&) = delete;
    WakeDescriptor& operator=(const WakeDescriptor&) = delete;

    [[nodiscard]] int descriptor() const { return m_epoll; }
    /// Readable at once and until told otherwise.
    void setReady(bool ready);
    /// Readable from that moment on and until another moment, or none, is set.
    void setTimer(std::optional<Clock::time_point> when);

private:
    WakeDescriptor();
    [[nodiscard]] bool watch(int descriptor) const;

    int m_epoll;
    int m_event;
    int m_timer;
    bool m_ready = false;
};

}  // namespace fi

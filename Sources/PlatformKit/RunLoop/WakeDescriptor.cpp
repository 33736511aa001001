// SPDX-License-Identifier: Apache-2.0
// The system calls behind the descriptor that hosts watch.
#include "PlatformKit/RunLoop/WakeDescriptor.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

namespace fi {

// std::chrono::steady_clock counts on CLOCK_MONOTONIC, so its moments are the timer's.
WakeDescriptor::WakeDescriptor()
    : m_epoll(epoll_create1(EPOLL_CLOEXEC)),
      m_event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_timer(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {}

WakeDescriptor::~WakeDescriptor() {
    for (const int descriptor : {m_epoll, m_event, m_timer}) {
        if (descriptor >= 0) close(descriptor);
    }
}

std::unique_ptr<WakeDescriptor> WakeDescriptor::open() {
    std::unique_ptr<WakeDescriptor> result(new WakeDescriptor);
    if (!result->watch(result->m_event) || !result->watch(result->m_timer)) return nullptr;
    return result;
}

bool WakeDescriptor::watch(int descriptor) const {
    epoll_event event{};
    event.events = EPOLLIN;
    return m_epoll >= 0 && descriptor >= 0 && epoll_ctl(m_epoll, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

void WakeDescriptor::setReady(bool ready) {
    if (ready == m_ready) return;
    m_ready = ready;
    // The counter goes between 0 and 1 only, so that neither call can block or fail.
    uint64_t count = 1;
    [[maybe_unused]] const ssize_t moved =
        ready ? write(m_event, &count, sizeof count) : ::read(m_event, &count, sizeof count);
}

void WakeDescriptor::setTimer(std::optional<Clock::time_point> when) {
    itimerspec spec{};
    if (when) {
        using Nanoseconds = std::chrono::nanoseconds;
        // A moment of zero would disarm the timer; the past is readable at once either way.
        const auto moment = std::max<Nanoseconds>(when->time_since_epoch(), Nanoseconds(1));
        const auto whole = std::chrono::floor<std::chrono::seconds>(moment);
        spec.it_value.tv_sec = whole.count();
        spec.it_value.tv_nsec = (moment - whole).count();
    }
    // Setting the timer also takes back that it had run out.
    timerfd_settime(m_timer, TFD_TIMER_ABSTIME, &spec, nullptr);
}

}  // namespace fi

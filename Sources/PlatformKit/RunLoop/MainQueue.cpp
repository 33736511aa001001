// SPDX-License-Identifier: Apache-2.0
// The main thread's queue and the two ways of waiting for it.
#include "PlatformKit/RunLoop/MainQueue.h"

#include <algorithm>
#include <utility>

namespace fi {

MainQueue& MainQueue::shared() {
    static MainQueue& queue = *new MainQueue;  // threads may still wait for it when the process ends
    return queue;
}

void MainQueue::append(Work work) {
    Line last;
    last.push_back(std::move(work));
    {
        const std::lock_guard lock(m_mutex);
        m_line.splice(m_line.end(), last);
        if (m_wake) m_wake->setReady(true);
    }
    m_changed.notify_one();
}

void MainQueue::appendAt(Clock::time_point when, Work work) {
    Line only;
    only.push_back(std::move(work));
    {
        const std::lock_guard lock(m_mutex);
        const auto entry = m_later.emplace(when, std::move(only));
        if (entry != m_later.begin()) return;
        tellHost();
    }
    m_changed.notify_one();
}

uint64_t MainQueue::beginTurn() {
    const std::lock_guard lock(m_mutex);
    const auto due = m_later.upper_bound(Clock::now());
    if (due != m_later.begin()) {
        for (auto entry = m_later.begin(); entry != due; entry = m_later.erase(entry))
            m_line.splice(m_line.end(), entry->second);
        tellHost();
    }
    return m_taken + m_line.size();
}

std::optional<MainQueue::Work> MainQueue::next(uint64_t mark) {
    const std::lock_guard lock(m_mutex);
    if (m_line.empty() || m_taken >= mark) return std::nullopt;
    std::optional<Work> work(std::move(m_line.front()));
    m_line.pop_front();
    ++m_taken;
    if (m_wake && m_line.empty()) m_wake->setReady(false);
    return work;
}

void MainQueue::waitUntil(Clock::time_point limit) {
    std::unique_lock lock(m_mutex);
    while (m_line.empty()) {
        const auto wakeUp = m_later.empty() ? limit : std::min(limit, m_later.begin()->first);
        if (Clock::now() >= wakeUp) return;
        m_changed.wait_until(lock, wakeUp);
    }
}

int MainQueue::descriptor() {
    const std::lock_guard lock(m_mutex);
    if (!m_wake) {
        m_wake = WakeDescriptor::open();
        tellHost();
    }
    return m_wake ? m_wake->descriptor() : -1;
}

/// Brings the host's descriptor in line with the queue. The lock is held.
void MainQueue::tellHost() {
    if (!m_wake) return;
    m_wake->setReady(!m_line.empty());
    m_wake->setTimer(m_later.empty() ? std::nullopt : std::optional(m_later.begin()->first));
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// What waits to be done on the main thread: a line of work that is due, and work for later moments.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

#include "PlatformKit/RunLoop/WakeDescriptor.h"

namespace fi {

/// Filled by any thread, emptied by the main thread. Its lock is never held while work runs or ends its
/// life.
class MainQueue {
public:
    using Work = std::function<void()>;
    using Clock = WakeDescriptor::Clock;

    /// The queue of the process; never destroyed.
    [[nodiscard]] static MainQueue& shared();

    MainQueue() = default;
    MainQueue(const MainQueue&) = delete;
    MainQueue& operator=(const MainQueue&) = delete;

    /// Puts work at the end of the line. Empty work only wakes the loop.
    void append(Work work);
    /// Keeps work until `when`; what was asked first for a moment comes first.
    void appendAt(Clock::time_point when, Work work);

    /// Puts what has become due at the end of the line and returns a mark for that end.
    [[nodiscard]] uint64_t beginTurn();
    /// Takes the first in line; nothing when the line is empty or has been taken up to the mark, here or
    /// in a turn inside of this one.
    [[nodiscard]] std::optional<Work> next(uint64_t mark);

    /// Sleeps until something is due, at the longest until `limit`.
    void waitUntil(Clock::time_point limit);

    /// The descriptor that is readable while something is due, made at the first call; -1 without one.
    [[nodiscard]] int descriptor();

private:
    /// Work moves between lists without allocating, so that a turn cannot fail.
    using Line = std::list<Work>;

    void tellHost();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    Line m_line;
    uint64_t m_taken = 0;                            ///< that ever left the line
    std::multimap<Clock::time_point, Line> m_later;  ///< each with one piece of work
    std::unique_ptr<WakeDescriptor> m_wake;
};

}  // namespace fi

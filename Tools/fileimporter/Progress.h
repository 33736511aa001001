// SPDX-License-Identifier: Apache-2.0
// How far a long run has come: one line on standard error that is written over and over.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace fi {

/// "120 of 312 photos, 48 a second, 0:04 left"; without rate and rest as long as they are unknown.
[[nodiscard]] std::string progressText(size_t done, size_t total, double seconds);

/// Writes nothing unless it is switched on and standard error is a terminal.
class Progress {
public:
    enum class Meter : unsigned char { Shown, Silent };

    explicit Progress(Meter meter);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Tells that `done` of `total` photos are done.
    void advance(size_t done, size_t total);
    /// Takes the line away, so that something else can be written there.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    bool m_shown;
    bool m_visible = false;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_lastShown = m_start;
};

}  // namespace fi

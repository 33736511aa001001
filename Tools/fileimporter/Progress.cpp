// SPDX-License-Identifier: Apache-2.0
#include "Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cmath>
#include <string_view>

#include "ErrorOutput.h"

namespace fi {

namespace {

constexpr double kTooEarly = 0.5;  // seconds in which a rate says nothing
constexpr std::string_view kEmptiedLine = "\r\x1b[K";
constexpr auto kInterval = std::chrono::milliseconds(100);

std::string minutesAndSeconds(double seconds) {
    const auto whole = static_cast<unsigned long>(std::ceil(seconds));
    return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

}  // namespace

std::string progressText(size_t done, size_t total, double seconds) {
    std::string text = fmt::format("{} of {} photos", done, total);
    if (done == 0 || seconds < kTooEarly) return text;
    const double rate = static_cast<double>(done) / seconds;
    text += fmt::format(", {:.{}f} a second", rate, rate < 10 ? 1 : 0);
    if (done < total)
        text += fmt::format(", {} left", minutesAndSeconds(static_cast<double>(total - done) / rate));
    return text;
}

Progress::Progress(Meter meter) : m_shown(meter == Meter::Shown && isatty(STDERR_FILENO) == 1) {}

void Progress::advance(size_t done, size_t total) {
    const Clock::time_point now = Clock::now();
    if (!m_shown || now - m_lastShown < kInterval) return;
    m_lastShown = now;
    const double seconds = std::chrono::duration<double>(now - m_start).count();
    writeError(std::string(kEmptiedLine) + progressText(done, total, seconds));
    m_visible = true;
}

void Progress::clear() {
    if (!m_visible) return;
    writeError(kEmptiedLine);
    m_visible = false;
}

}  // namespace fi

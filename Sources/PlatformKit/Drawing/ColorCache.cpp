// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/ColorCache.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "PlatformKit/Drawing/ColorEngine.h"
#include "PlatformKit/Drawing/ColorProfile.h"

namespace fi {

namespace {

std::atomic<size_t> g_made = 0;

std::string_view textOf(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A task with a profile of its own. The hash only spares comparing bytes: a profile may be made to have
/// the hash of another one.
class Entry {
public:
    Entry(const ColorTask& task, size_t hash, ColorAnswer answer)
        : m_task(task), m_hash(hash), m_profile(textOf(task.profile)), m_answer(std::move(answer)) {
        m_task.profile = {};
    }

    [[nodiscard]] bool answers(const ColorTask& task, size_t hash) const {
        return hash == m_hash && task.samples == m_task.samples && task.target == m_task.target &&
               task.words == m_task.words && textOf(task.profile) == m_profile;
    }

    [[nodiscard]] const ColorAnswer& answer() const { return m_answer; }

private:
    ColorTask m_task;
    size_t m_hash;
    std::string m_profile;
    ColorAnswer m_answer;
};

class Cache {
public:
    std::optional<ColorAnswer> find(const ColorTask& task, size_t hash) {
        const std::lock_guard lock(m_mutex);
        const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                        [&](const Entry& entry) { return entry.answers(task, hash); });
        if (found == m_entries.end()) return std::nullopt;
        std::rotate(m_entries.begin(), found, found + 1);
        return m_entries.front().answer();
    }

    void keep(Entry entry) {
        const std::lock_guard lock(m_mutex);
        if (m_entries.size() >= kMostColorAnswers) m_entries.pop_back();
        m_entries.insert(m_entries.begin(), std::move(entry));
    }

private:
    std::mutex m_mutex;
    std::vector<Entry> m_entries;  ///< the last used first
};

Cache& cache() {
    static Cache shared;
    return shared;
}

}  // namespace

ColorAnswer converterFor(const ColorTask& task) {
    if (task.profile.size() > kMaximumProfileBytes) return {ColorAnswer::Kind::Refused};
    try {
        const size_t hash = std::hash<std::string_view>()(textOf(task.profile));
        if (auto known = cache().find(task, hash)) return *known;
        g_made.fetch_add(1, std::memory_order_relaxed);
        ColorAnswer answer = makeConverter(task);
        if (answer.kind != ColorAnswer::Kind::NoMemory) cache().keep(Entry(task, hash, answer));
        return answer;
    } catch (const std::bad_alloc&) {
        return {ColorAnswer::Kind::NoMemory};
    }
}

size_t colorAnswersMade() {
    return g_made.load(std::memory_order_relaxed);
}

}  // namespace fi

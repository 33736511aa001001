// SPDX-License-Identifier: Apache-2.0
// What the tests of the run loop share: an object that notes its calls, and workers to make them.
#pragma once

#include <poll.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "PlatformKit/RunLoop.h"
#include "PlatformKit/String.h"

namespace fi::test {

/// An argument with a text that can be counted.
class Word final : public NSObject {
public:
    explicit Word(std::string text) : m_text(std::move(text)) {}
    [[nodiscard]] const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

/// Notes the texts it is called with, in their order.
class Recorder final : public NSObject {
public:
    void note(Word* word) {
        const std::lock_guard lock(m_mutex);
        m_notes.push_back(word != nullptr ? word->text() : "(null)");
        m_alwaysOnMain = m_alwaysOnMain && isMainThread();
    }
    void fail(Word* word) {
        note(word);
        throw 1;
    }
    [[nodiscard]] std::vector<std::string> notes() const {
        const std::lock_guard lock(m_mutex);
        return m_notes;
    }
    [[nodiscard]] bool alwaysOnMain() const {
        const std::lock_guard lock(m_mutex);
        return m_alwaysOnMain;
    }

    [[nodiscard]] static SEL noting() { return selector<&Recorder::note>("note:"); }
    [[nodiscard]] static SEL failing() { return selector<&Recorder::fail>("fail:"); }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_notes;
    bool m_alwaysOnMain = true;
};

/// Runs `work` on a thread of its own to its end; `work` must not wait for the main thread.
inline void onWorker(const std::function<void()>& work) {
    std::thread(work).join();
}

/// Runs the loop until `done` holds; false when it still does not after ten seconds.
inline bool runUntil(std::function<bool()> done) {
    const auto ask = [](void* context) { return (*static_cast<std::function<bool()>*>(context))(); };
    return runLoopUntil(ask, &done, 10.0);
}

/// Whether the descriptor of the loop becomes readable within some milliseconds.
inline bool isReadable(int milliseconds) {
    pollfd watched{runLoopDescriptor(), POLLIN, 0};
    return ::poll(&watched, 1, milliseconds) == 1 && (watched.revents & POLLIN) != 0;
}

/// A worker that is joined at the end of its scope; meanwhile the main loop runs, so that the worker may
/// wait for it.
class ServedThread {
public:
    explicit ServedThread(std::function<void()> work)
        : m_thread([this, work = std::move(work)] {
              work();
              m_ended = true;
              wakeRunLoop();
          }) {}
    ~ServedThread() {
        (void)runUntil([this] { return m_ended.load(); });
        m_thread.join();
    }
    ServedThread(const ServedThread&) = delete;
    ServedThread& operator=(const ServedThread&) = delete;

private:
    std::atomic<bool> m_ended{false};
    std::thread m_thread;
};

}  // namespace fi::test

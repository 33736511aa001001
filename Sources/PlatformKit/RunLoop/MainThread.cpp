// SPDX-License-Identifier: Apache-2.0
// Which thread is the main one, and the way to it.
#include "PlatformKit/RunLoop/MainThread.h"

#include <unistd.h>

#include <memory>
#include <utility>

#include "PlatformKit/RunLoop/Completion.h"
#include "PlatformKit/RunLoop/FailureOf.h"
#include "PlatformKit/RunLoop/MainQueue.h"

namespace fi {

bool isMainThread() noexcept {
    return gettid() == getpid();
}

void performOnMainThread(std::function<void()> work, bool wait) {
    if (isMainThread()) {
        work();
        return;
    }
    if (!wait) {
        MainQueue::shared().append(std::move(work));
        return;
    }
    const auto completion = std::make_shared<Completion>();
    MainQueue::shared().append([completion, work = std::move(work)]() mutable {
        auto failure = failureOf(work);
        work = nullptr;
        completion->finish(std::move(failure));
    });
    completion->wait();
}

}  // namespace fi

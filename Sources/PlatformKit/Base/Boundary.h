// SPDX-License-Identifier: Apache-2.0
// The edge of the library: nothing is thrown across it.
#pragma once

#include <utility>

namespace fi {

/// Runs the work of an exported operation. Whatever it throws (in practice std::bad_alloc) becomes the
/// operation's own result for "no memory".
template <typename Work, typename Answer>
Answer guarded(Work&& work, Answer withoutMemory) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        return withoutMemory;
    }
}

template <typename Work>
void guarded(Work&& work) noexcept {
    try {
        std::forward<Work>(work)();
    } catch (...) {
        return;
    }
}

}  // namespace fi

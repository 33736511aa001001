// SPDX-License-Identifier: Apache-2.0
// Runs foreign code where an exception must not go on unwinding.
#pragma once

#include <cxxabi.h>

#include <exception>

namespace fi {

/// Runs `work` and returns what it threw; null when it returned. The unwinding of a thread that ends
/// itself (pthread_exit) is not a failure and cannot be stopped: it goes on. (It comes without an object,
/// so the sanitizer sees a reference to nothing.)
template <typename Work>
[[nodiscard]] __attribute__((no_sanitize("null"))) std::exception_ptr failureOf(const Work& work) {
    try {
        work();
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        return std::current_exception();
    }
    return nullptr;
}

}  // namespace fi

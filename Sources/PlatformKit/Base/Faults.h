// SPDX-License-Identifier: Apache-2.0
// Places where a test can make the system fail as it rarely does by itself. Nothing is installed in use.
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

namespace fi {

enum class Fault : uint8_t {
    Listing,          ///< reading a folder breaks off; detail: the name of the entry that would follow
    FileReference,    ///< no reference can be made to a file; detail: its path
    ShortRead,        ///< a limited read brings half of the bytes; detail: the path
    WholeRead,        ///< reading a whole file fails; detail: the path
    Allocation,       ///< the system allocator has no memory; detail: who asks
    TemporaryFolder,  ///< there is no temporary folder
    FileTimes,        ///< the dates of a file cannot be told
};

/// Answers whether the fault happens now.
using FaultInjector = bool (*)(Fault fault, std::string_view detail);

inline constinit std::atomic<FaultInjector> g_faultInjector{nullptr};

[[nodiscard]] inline bool faultHappens(Fault fault, std::string_view detail = {}) {
    const FaultInjector injector = g_faultInjector.load(std::memory_order_relaxed);
    return injector != nullptr && injector(fault, detail);
}

}  // namespace fi

// SPDX-License-Identifier: Apache-2.0
// Lets the allocations of this thread fail from a chosen one on.
#pragma once

namespace fi::test {

class ScarceMemory {
public:
    /// The next `allocations` succeed, those behind them throw std::bad_alloc.
    explicit ScarceMemory(long allocations);
    ~ScarceMemory();
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;

    /// True when an allocation failed.
    [[nodiscard]] bool ranOut() const;
};

}  // namespace fi::test

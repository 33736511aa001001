// SPDX-License-Identifier: Apache-2.0
// Lets the memory of C++ run out at a chosen allocation of the calling thread. Linking it replaces the
// global operators new and delete of the test program.
#pragma once

namespace fi::test {

class FailingAllocations {
public:
    /// From now on the first `successes` allocations of this thread succeed and the others throw.
    explicit FailingAllocations(int successes);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;

    /// True once an allocation was refused.
    [[nodiscard]] bool happened() const;
};

}  // namespace fi::test

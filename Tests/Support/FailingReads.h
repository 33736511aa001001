// SPDX-License-Identifier: Apache-2.0
// Lets every read at a place of a file fail, as on a card that was pulled. Linking it replaces pread in the
// test program.
#pragma once

namespace fi::test {

class FailingReads {
public:
    /// From now on this thread's reads fail with EIO, after the first `successes`.
    explicit FailingReads(int successes);
    ~FailingReads();
    FailingReads(const FailingReads&) = delete;
    FailingReads& operator=(const FailingReads&) = delete;
};

}  // namespace fi::test

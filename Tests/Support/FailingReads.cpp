// SPDX-License-Identifier: Apache-2.0
#include "Support/FailingReads.h"

#include <errno.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

thread_local bool t_failing = false;
thread_local int t_successesLeft = 0;

}  // namespace

// In place of the C library's, under the name that it has where offsets have 64 bits.
ssize_t pread(int descriptor, void* out, size_t size, off_t offset) {
    if (t_failing && t_successesLeft-- <= 0) {
        errno = EIO;
        return -1;
    }
    return syscall(SYS_pread64, descriptor, out, size, offset);
}

namespace fi::test {

FailingReads::FailingReads(int successes) {
    t_successesLeft = successes;
    t_failing = true;
}

FailingReads::~FailingReads() {
    t_failing = false;
}

}  // namespace fi::test

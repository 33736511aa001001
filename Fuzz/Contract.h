// SPDX-License-Identifier: Apache-2.0
// What a fuzzer demands: a broken promise ends the run with the promise's words.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fi::fuzz {

inline void require(bool kept, const char* promise) {
    if (kept) return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

}  // namespace fi::fuzz

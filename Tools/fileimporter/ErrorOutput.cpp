// SPDX-License-Identifier: Apache-2.0
#include "ErrorOutput.h"

#include <cstdio>

namespace fi {

void writeError(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

}  // namespace fi

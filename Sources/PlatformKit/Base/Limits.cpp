// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Limits.h"

namespace fi {

DecodeLimits& decodeLimits() {
    static DecodeLimits limits;
    return limits;
}

}  // namespace fi

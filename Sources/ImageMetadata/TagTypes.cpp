// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/TagTypes.h"

#include <iterator>

namespace fi {

uint32_t unitSizeOfType(uint16_t type) {
    constexpr uint32_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
    return type < std::size(kSizes) ? kSizes[type] : 0;
}

}  // namespace fi

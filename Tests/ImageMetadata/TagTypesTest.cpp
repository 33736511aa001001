// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/TagTypes.h"

#include <gtest/gtest.h>

namespace fi {
namespace {

TEST(TagTypesTest, TwelveTypesHaveAUnitSizeAndNoOtherHas) {
    constexpr uint32_t kSizes[] = {1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
    for (uint16_t type = 1; type <= 12; ++type)
        EXPECT_EQ(unitSizeOfType(type), kSizes[type - 1]) << type;
    for (const uint16_t none : {uint16_t{0}, uint16_t{13}, uint16_t{65535}})
        EXPECT_EQ(unitSizeOfType(none), 0u);
}

}  // namespace
}  // namespace fi

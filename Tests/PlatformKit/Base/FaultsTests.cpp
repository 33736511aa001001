// SPDX-License-Identifier: Apache-2.0
// Faults happen where a test asks for them and nowhere else.
#include "PlatformKit/Base/Faults.h"

#include <gtest/gtest.h>

namespace fi::test {

namespace {

TEST(Faults, NoneHappensWithoutAnInjector) {
    EXPECT_FALSE(faultHappens(Fault::Allocation, "anything"));
}

TEST(Faults, InjectorSeesTheFaultAndItsDetail) {
    g_faultInjector = [](Fault fault, std::string_view detail) {
        return fault == Fault::ShortRead && detail == "path";
    };
    EXPECT_TRUE(faultHappens(Fault::ShortRead, "path"));
    EXPECT_FALSE(faultHappens(Fault::ShortRead, "other"));
    EXPECT_FALSE(faultHappens(Fault::WholeRead, "path"));
    g_faultInjector = nullptr;
    EXPECT_FALSE(faultHappens(Fault::ShortRead, "path"));
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// The finder where the system fails as it rarely does by itself.
#include "Finder.h"

#include <gtest/gtest.h>

#include "Console.h"
#include "PlatformKit/Base/Faults.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {
namespace {

/// Every listing breaks off before an entry named "break".
class BrokenListings {
public:
    BrokenListings() {
        g_faultInjector = [](Fault fault, std::string_view name) {
            return fault == Fault::Listing && name == "break";
        };
    }
    ~BrokenListings() { g_faultInjector = nullptr; }
    BrokenListings(const BrokenListings&) = delete;
    BrokenListings& operator=(const BrokenListings&) = delete;
};

TEST(Finder, NamesAFolderWhoseListingBreaksOff) {
    const TemporaryFolder card;
    card.write("a/1.jpg", "x");
    card.write("b/2.jpg", "x");
    card.write("b/break", "x");
    const BrokenListings faults;
    Console console(Progress::Meter::Silent);
    SearchOrder order;
    order.paths = {card.path(), card.at("b")};
    testing::internal::CaptureStderr();
    const SearchResult result = findPhotos(order, console);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "fileimporter: " + card.at("b") + ": the folder could not be read\n");
    EXPECT_EQ(result.photos, std::vector<std::string>{card.at("a/1.jpg")});
    EXPECT_FALSE(result.complete);
}

TEST(Finder, ClosedFolderOfARepairedFileSystemIsNoFailure) {
    const TemporaryFolder card;
    card.write("a/1.jpg", "x");
    card.write("lost+found/break", "x");
    const BrokenListings faults;
    Console console(Progress::Meter::Silent);
    SearchOrder order;
    order.paths = {card.path()};
    testing::internal::CaptureStderr();
    EXPECT_TRUE(findPhotos(order, console).complete);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    order.paths = {card.at("lost+found")};
    testing::internal::CaptureStderr();
    EXPECT_FALSE(findPhotos(order, console).complete) << "asked for by name";
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Every allocation of the photo search fails once: nothing is thrown, nothing leaks, and what was found
// before is kept.
#include "Support/FailingAllocations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>

#include "PhotoCollections/Walking.h"
#include "PlatformKit/Dictionary.h"

namespace fi::test {

namespace {

constexpr long kMoreThanAnyCaseNeeds = 20'000;

/// Runs `work` with ever more memory until it suffices; `check` looks at the outcome of each run.
void withEverMoreMemory(const std::function<std::function<void()>()>& prepare,
                        const std::function<void()>& check) {
    for (int allocations = 0; allocations < kMoreThanAnyCaseNeeds; ++allocations) {
        const auto work = prepare();
        bool ranOut = false;
        bool thrown = false;
        {
            const FailingAllocations memory(allocations);
            try {
                work();
            } catch (...) {
                thrown = true;
            }
            ranOut = memory.happened();
        }
        EXPECT_FALSE(thrown) << "after " << allocations << " allocations";
        check();
        if (testing::Test::HasFailure()) return;
        if (!ranOut) {
            EXPECT_GT(allocations, 0) << "nothing was allocated, so nothing was tried";
            return;
        }
    }
    ADD_FAILURE() << "memory never sufficed";
}

TemporaryFolder& sampleCard() {
    static TemporaryFolder card;
    if (card.path().empty() || !walked(card.path()).empty()) return card;
    for (size_t i = 0; i < 4; ++i)
        card.write(numbered("DCIM/100ABCDE/a photograph with a long name, number ", i, ".JPG"), "");
    card.write("DCIM/\xC3\xA9/\xC3\xA4.tif", "");
    card.link("up", ".");
    return card;
}

TEST(ScarceMemoryTest, SearchKeepsWhatItFound) {
    TemporaryFolder& card = sampleCard();
    const Paths all = walked(card.path(), 6);
    ASSERT_EQ(all.size(), 5U);
    const auto url = fileURL(card.path());
    Ref<FileSearchDC> search;
    withEverMoreMemory(
        [&] {
            search = make<FileSearchDC>();
            search->open(url.get());
            return [&] { search->searchStart(6); };
        },
        [&] {
            const Paths found = paths(*search);
            ASSERT_LE(found.size(), all.size());
            EXPECT_TRUE(std::equal(found.begin(), found.end(), all.begin()));
        });
    EXPECT_EQ(paths(*search), all);
}

TEST(ScarceMemoryTest, UpdateReplacesTheListWhollyOrNotAtAll) {
    TemporaryFolder& card = sampleCard();
    const Paths all = walked(card.path(), 6);
    const auto url = fileURL(card.path());
    const auto path = text("/a.jpg");
    Ref<FileSearchDC> search;
    bool replaced = false;
    withEverMoreMemory(
        [&] {
            search = make<FileSearchDC>();
            search->open(url.get());
            search->addFileFromPath(path.get());
            return [&] { replaced = search->fileUpdate(6); };
        },
        [&] { EXPECT_EQ(paths(*search), replaced ? all : Paths{"/a.jpg"}); });
    EXPECT_TRUE(replaced);
}

TEST(ScarceMemoryTest, PathIsAddedOnceOrNotAtAll) {
    const auto composed = text("/a path that is long enough for memory of its own/\xC3\xA9.jpg");
    const auto decomposed = text("/a path that is long enough for memory of its own/e\xCC\x81.jpg");
    Ref<FileSearchDC> search;
    withEverMoreMemory(
        [&] {
            search = make<FileSearchDC>();
            return [&] {
                search->addFileFromPath(composed.get());
                search->addFileFromPath(decomposed.get());
            };
        },
        [&] {
            ASSERT_LE(search->getFileNum(), 1U);
            search->addFileFromPath(composed.get());
            search->addFileFromPath(decomposed.get());
            EXPECT_EQ(search->getFileNum(), 1U) << "with memory again the list is sound";
        });
}

TEST(ScarceMemoryTest, QuestionsAreAnsweredNo) {
    const auto search = make<FileSearchDC>();
    const InstalledPdfQuery query([](const char*) { return true; });
    const auto photo = text("/a document in a folder/whose location takes memory.pdf");
    const auto folder = text("the volume settings folder, or rather not, but a long name");
    bool listed = false;
    withEverMoreMemory([&] { return [&] { listed = search->CheckJpgOrTif(photo.get()); }; }, [] {});
    EXPECT_TRUE(listed);
    bool entered = false;
    withEverMoreMemory([&] { return [&] { entered = search->CheckExclusionFolders(folder.get()); }; },
                       [] {});
    EXPECT_TRUE(entered);
}

TEST(ScarceMemoryTest, ListEngineThrowsNothing) {
    TemporaryFolder& card = sampleCard();
    const auto url = fileURL(card.path());
    const auto path = text("/a path that is long enough for memory of its own/\xC3\xA9.jpg");
    const auto folder = NSMutableDictionary::create();
    folder->set("historyDataSourceChildrenKey", CFArray::create({path}));
    folder->set("historyDataSourceTypeKey", text("mailHistory"));
    const auto group = NSMutableDictionary::create();
    group->set("historyDataSourceChildrenKey", CFArray::create({folder}));
    group->set("historyDataSourceTypeKey", text("mailHistory"));
    const auto history = CFArray::create({group});
    std::unique_ptr<CFileSearchDC> search;
    bool found = false;
    withEverMoreMemory(
        [&] {
            search = std::make_unique<CFileSearchDC>();
            return [&] {
                unsigned char changed = 0;
                CFURLRef at = nullptr;
                search->Close();
                search->Open(url.get());
                search->FileSearch(3);
                search->FileUpdate(6, &changed);
                search->FileAddFromPath(path.get());
                search->FileSearchByPList(history.get());
                found = search->GetURLLast(&at);
                CFRelease(at);
            };
        },
        [&] { EXPECT_EQ(search->SetNowListPos(search->GetListNum()), search->GetListNum() > 0); });
    EXPECT_TRUE(found);
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Small records that stand for files.
#include "PlatformKit/FileReference.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "PlatformKit/Base/Faults.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

bool sameBytes(const FSRef& a, const FSRef& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

FSRef referenceTo(const std::string& path) {
    FSRef reference{};
    EXPECT_TRUE(makeFileReference(path.c_str(), &reference)) << path;
    return reference;
}

TEST(FileReference, LeadsBackToTheItem) {
    const TemporaryFolder folder;
    const std::string path = folder.write("caf\xE9.jpg", "x");
    EXPECT_EQ(urlOfFileReference(referenceTo(path))->path()->view(), path);
    EXPECT_EQ(urlOfFileReference(referenceTo(folder.path()))->path()->view(), folder.path());
}

TEST(FileReference, SameItemGivesEqualBytesByWhateverPath) {
    const TemporaryFolder folder;
    const std::string path = folder.write("real/file", "x");
    const FSRef reference = referenceTo(path);
    EXPECT_TRUE(sameBytes(reference, referenceTo(path)));
    EXPECT_TRUE(sameBytes(reference, referenceTo(folder.link("link", "real/file"))));
    folder.link("folder", "real");
    EXPECT_TRUE(sameBytes(reference, referenceTo(folder.at("folder/../real/./file"))));
    EXPECT_FALSE(sameBytes(reference, referenceTo(folder.write("other", "x"))));
}

TEST(FileReference, ByteCopiesAreAsGoodAsTheOriginal) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "x");
    const FSRef original = referenceTo(path);
    unsigned char bytes[sizeof(FSRef)];
    std::memcpy(bytes, &original, sizeof bytes);
    FSRef copy;
    std::memcpy(&copy, bytes, sizeof copy);
    EXPECT_EQ(urlOfFileReference(copy)->path()->view(), path);
}

TEST(FileReference, MissingItemGivesNoneAndLeavesTheRecordAlone) {
    const TemporaryFolder folder;
    FSRef reference;
    std::memset(&reference, 0x5A, sizeof reference);
    const FSRef before = reference;
    EXPECT_FALSE(makeFileReference(folder.at("missing").c_str(), &reference));
    EXPECT_FALSE(makeFileReference(folder.link("dangling", "missing").c_str(), &reference));
    EXPECT_FALSE(makeFileReference("", &reference));
    EXPECT_FALSE(makeFileReference(nullptr, &reference));
    EXPECT_TRUE(sameBytes(reference, before));
    EXPECT_FALSE(makeFileReference(folder.path().c_str(), nullptr));
}

TEST(FileReference, RecordThatNobodyMadeStandsForNothing) {
    EXPECT_FALSE(urlOfFileReference(FSRef{}));
    EXPECT_FALSE(urlOfFileReference(FSRef{UINT64_MAX, {}}));
}

TEST(FileReference, OutlivesItsItem) {
    std::string path;
    FSRef reference{};
    {
        const TemporaryFolder folder;
        path = folder.write("file", "x");
        reference = referenceTo(path);
    }
    EXPECT_EQ(urlOfFileReference(reference)->path()->view(), path);
}

TEST(FileReference, CanBeMadeToFail) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "x");
    g_faultInjector = [](Fault fault, std::string_view) { return fault == Fault::FileReference; };
    FSRef reference{};
    EXPECT_FALSE(makeFileReference(path.c_str(), &reference));
    g_faultInjector = nullptr;
    EXPECT_TRUE(makeFileReference(path.c_str(), &reference));
}

TEST(FileReference, ThreadsAgreeOnTheRecord) {
    const TemporaryFolder folder;
    std::vector<std::string> paths;
    paths.reserve(50);
    for (int i = 0; i < 50; ++i)
        paths.push_back(folder.write(std::to_string(i), "x"));
    std::vector<std::vector<FSRef>> made(4, std::vector<FSRef>(paths.size()));
    std::vector<std::thread> threads;
    threads.reserve(made.size());
    for (auto& mine : made) {
        threads.emplace_back([&] {
            for (size_t i = 0; i < paths.size(); ++i)
                mine[i] = referenceTo(paths[i]);
        });
    }
    for (auto& thread : threads)
        thread.join();
    for (size_t i = 0; i < paths.size(); ++i) {
        for (const auto& mine : made)
            EXPECT_TRUE(sameBytes(mine[i], made[0][i]));
        EXPECT_EQ(urlOfFileReference(made[0][i])->path()->view(), paths[i]);
    }
}

}  // namespace

}  // namespace fi::test

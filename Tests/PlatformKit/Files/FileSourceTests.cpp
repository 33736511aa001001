// SPDX-License-Identifier: Apache-2.0
// Files read piece by piece, and what is refused at once.
#include "PlatformKit/Files/FileSource.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>

#include "Support/Privileges.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

std::string read(FileSource& source, uint64_t offset, size_t count) {
    std::string out(count, '?');
    out.resize(source.read(offset, {reinterpret_cast<uint8_t*>(out.data()), count}));
    return out;
}

TEST(FileSource, ReadsAnywhereUpToTheEnd) {
    const TemporaryFolder folder;
    const auto source = openFileSource(folder.write("file", "0123456789").c_str());
    ASSERT_TRUE(source);
    EXPECT_EQ(source->size(), 10U);
    EXPECT_EQ(read(*source, 7, 2), "78");
    EXPECT_EQ(read(*source, 0, 3), "012");
    EXPECT_EQ(read(*source, 8, 100), "89");
    EXPECT_EQ(read(*source, 10, 1), "");
    EXPECT_EQ(read(*source, UINT64_MAX, 1), "");
    EXPECT_EQ(read(*source, uint64_t{1} << 63, 1), "");
    EXPECT_EQ(read(*source, 0, 0), "");
    EXPECT_FALSE(source->failed()) << "the end is not an error";
}

TEST(FileSource, ReadsBeyondFourGigabytes) {
    const TemporaryFolder folder;
    const std::string path = folder.write("large", "");
    constexpr int64_t kEnd = (int64_t{5} << 30) + 3;
    ASSERT_EQ(truncate(path.c_str(), kEnd), 0);
    const auto source = openFileSource(path.c_str());
    ASSERT_TRUE(source);
    EXPECT_EQ(source->size(), static_cast<uint64_t>(kEnd));
    EXPECT_EQ(read(*source, static_cast<uint64_t>(kEnd) - 2, 10), std::string(2, '\0'));
}

TEST(FileSource, FileCutMeanwhileGivesFewerBytes) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "0123456789");
    const auto source = openFileSource(path.c_str());
    ASSERT_TRUE(source);
    ASSERT_EQ(truncate(path.c_str(), 4), 0);
    EXPECT_EQ(source->size(), 10U) << "as known when it was opened";
    EXPECT_EQ(read(*source, 0, 10), "0123");
    EXPECT_EQ(read(*source, 5, 1), "");
}

TEST(FileSource, FileRemovedMeanwhileCanStillBeRead) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "0123");
    const auto source = openFileSource(path.c_str());
    std::filesystem::remove(path);
    EXPECT_EQ(read(*source, 0, 4), "0123");
}

TEST(FileSource, ErrorIsToldFromTheEnd) {
    // A descriptor that cannot be read stands for a card that was pulled.
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "0123");
    FILE* writeOnly = std::fopen(path.c_str(), "a");
    ASSERT_NE(writeOnly, nullptr);
    FileSource source(dup(fileno(writeOnly)), 4);
    std::fclose(writeOnly);
    EXPECT_EQ(read(source, 0, 4), "");
    EXPECT_TRUE(source.failed());
}

TEST(FileSource, FollowsLinks) {
    const TemporaryFolder folder;
    folder.write("file", "0123");
    const auto source = openFileSource(folder.link("link", "file").c_str());
    ASSERT_TRUE(source);
    EXPECT_EQ(source->size(), 4U);
}

TEST(FileSource, RefusesWhatIsNoRegularFileAtOnce) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.at("pipe").c_str(), 0600), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(openFileSource(folder.at("pipe").c_str())) << "and waits for no writer";
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_FALSE(openFileSource(folder.path().c_str()));
    EXPECT_FALSE(openFileSource("/dev/zero"));
    EXPECT_FALSE(openFileSource(folder.at("missing").c_str()));
    EXPECT_FALSE(openFileSource(folder.link("dangling", "missing").c_str()));
    EXPECT_FALSE(openFileSource(""));
}

TEST(FileSource, RefusesWhatMayNotBeRead) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "0123");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    const OrdinaryUser user;
    EXPECT_FALSE(openFileSource(path.c_str()));
}

}  // namespace

}  // namespace fi::test

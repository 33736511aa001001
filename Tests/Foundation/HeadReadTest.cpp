// SPDX-License-Identifier: Apache-2.0
// Reading the head of a file, or all of it.
#include "Foundation/HeadRead.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "Foundation/TestText.h"
#include "Support/Privileges.h"
#include "Support/ScopedFaults.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

/// Bytes that differ from their neighbours, so that a wrong part of the file shows.
std::string patterned(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    return bytes;
}

std::string bytesOf(const HeadRead& head) {
    if (!head.data) return "(no data)";
    const auto bytes = head.data->bytes();
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

HeadRead headOf(const std::string& path, ReadLimit limit = ReadLimit::Head) {
    return readHead(text(path).get(), limit);
}

void expectNothing(const HeadRead& head, OSErr code) {
    EXPECT_EQ(head.code, code);
    EXPECT_FALSE(head.data);
}

}  // namespace

TEST(HeadReadTest, AHeadIs65567BytesAtMost) {
    const TemporaryFolder folder;
    const std::string bytes = patterned(100'000);
    struct Case {
        size_t size;
        size_t read;
    };
    for (const Case& c :
         {Case{1, 1}, Case{65566, 65566}, Case{65567, 65567}, Case{65568, 65567}, Case{100'000, 65567}}) {
        const HeadRead head = headOf(folder.write("photo.jpg", bytes.substr(0, c.size)));
        EXPECT_EQ(head.code, 0) << c.size;
        EXPECT_EQ(head.readSize, c.read) << c.size;
        EXPECT_TRUE(bytesOf(head) == bytes.substr(0, c.read)) << c.size;
    }
}

TEST(HeadReadTest, WithoutALimitAllBytesAreRead) {
    const TemporaryFolder folder;
    const std::string bytes = patterned(100'000);
    const HeadRead head = headOf(folder.write("photo.jpg", bytes), ReadLimit::None);
    EXPECT_EQ(head.code, 0);
    EXPECT_EQ(head.readSize, 100'000U);
    EXPECT_TRUE(bytesOf(head) == bytes);
}

TEST(HeadReadTest, EmptyFilesAreNotFound) {
    const TemporaryFolder folder;
    const std::string path = folder.write("empty.jpg", "");
    expectNothing(headOf(path), -43);
    expectNothing(headOf(path, ReadLimit::None), -43);
}

TEST(HeadReadTest, MissingFilesAreNotFound) {
    const TemporaryFolder folder;
    expectNothing(headOf(folder.at("missing.jpg")), -43);
    expectNothing(headOf(folder.link("dangling.jpg", "missing.jpg")), -43);
    expectNothing(readHead(nullptr, ReadLimit::Head), -43);
    expectNothing(headOf(""), -43);
}

TEST(HeadReadTest, QalFilesAreNotFoundThoughTheyHaveBytes) {
    const TemporaryFolder folder;
    expectNothing(headOf(folder.write("album.qal", "bytes")), -43);
    expectNothing(headOf(folder.write("album.QAL", "bytes"), ReadLimit::None), -43);
}

TEST(HeadReadTest, FoldersCannotBeRead) {
    const TemporaryFolder folder;
    expectNothing(headOf(folder.path()), -108);
}

TEST(HeadReadTest, FilesThatMayNotBeOpenedAreNotFound) {
    const TemporaryFolder folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    const std::string path = folder.write("locked.jpg", "bytes");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    folder.makeFolder("locked");
    ASSERT_EQ(chmod(folder.at("locked").c_str(), 0), 0);
    const OrdinaryUser user;
    expectNothing(headOf(path), -43);
    expectNothing(headOf(folder.at("locked")), -43);
}

TEST(HeadReadTest, TheBytesToReadAreToldEvenWhenReadingFails) {
    const TemporaryFolder folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    const std::string path = folder.write("locked.jpg", patterned(70'000));
    struct stat status {};
    ASSERT_EQ(stat(folder.path().c_str(), &status), 0);
    EXPECT_EQ(headOf(folder.path()).readSize, std::min<off_t>(status.st_size, 65567));
    EXPECT_EQ(headOf(folder.at("missing.jpg")).readSize, 0U);
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    const OrdinaryUser user;
    EXPECT_EQ(headOf(path).readSize, 65567U);
    EXPECT_EQ(headOf(path, ReadLimit::None).readSize, 70'000U);
}

TEST(HeadReadTest, PipesAreNotWaitedFor) {
    const TemporaryFolder folder;
    const std::string path = folder.at("pipe.jpg");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    expectNothing(headOf(path), -43);
}

TEST(HeadReadTest, LinksAreFollowed) {
    const TemporaryFolder folder;
    folder.write("photo.jpg", "the bytes of the photo");
    const HeadRead head = headOf(folder.link("link.jpg", "photo.jpg"));
    EXPECT_EQ(bytesOf(head), "the bytes of the photo");
}

TEST(HeadReadTest, SizesCountModulo4GiB) {
    const TemporaryFolder folder;
    const std::string path = folder.write("huge.jpg", "0123456789abcdef");
    constexpr off_t kFourGiB = off_t{1} << 32U;
    ASSERT_EQ(truncate(path.c_str(), kFourGiB), 0);
    expectNothing(headOf(path), -43);
    ASSERT_EQ(truncate(path.c_str(), kFourGiB + 10), 0);
    const HeadRead head = headOf(path, ReadLimit::None);
    EXPECT_EQ(head.code, 0);
    EXPECT_EQ(head.readSize, 10U);
    EXPECT_EQ(bytesOf(head), "0123456789");
}

TEST(HeadReadTest, NamesThatAreNotUTF8AreReadAsTheyAre) {
    const TemporaryFolder folder;
    EXPECT_EQ(bytesOf(headOf(folder.write("caf\xe9.jpg", "bytes"))), "bytes");
}

TEST(HeadReadTest, FewerBytesThanAnnouncedAreHandedOutWithTheAnnouncedSize) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", "0123456789");
    const ScopedFaults faults{Fault::ShortRead};
    const HeadRead head = headOf(path);
    EXPECT_EQ(head.code, 0);
    EXPECT_EQ(bytesOf(head), "01234");
    EXPECT_EQ(head.readSize, 10U);
}

}  // namespace fi::test

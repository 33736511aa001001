// SPDX-License-Identifier: Apache-2.0
// Facts, copies, removals and contents of items.
#include "PlatformKit/Files/FileSystem.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>

#include "Support/Privileges.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

namespace fs = std::filesystem;

class FileSystem : public testing::Test {
protected:
    TemporaryFolder m_folder;

    [[nodiscard]] std::string at(std::string_view name) const { return m_folder.at(name); }
};

TEST_F(FileSystem, FactsOfAFileTellItsSizeAndDates) {
    const std::string path = m_folder.write("a", "12345");
    const timespec times[2] = {{100, 0}, {1234567890, 500000000}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    const auto facts = fileFacts(path.c_str(), Links::Follow);
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->size, 5U);
    EXPECT_TRUE(facts->isRegular);
    EXPECT_FALSE(facts->isFolder);
    EXPECT_EQ(facts->modified, (FileTime{1234567890, 500000000}));
    EXPECT_DOUBLE_EQ(facts->modified.secondsSince1970(), 1234567890.5);
    EXPECT_GT(facts->created.seconds, 0);
    EXPECT_LE(facts->created.seconds, std::max<int64_t>(facts->modified.seconds, time(nullptr)));
}

TEST_F(FileSystem, FactsOfAFolder) {
    const auto facts = fileFacts(m_folder.path().c_str(), Links::Follow);
    ASSERT_TRUE(facts);
    EXPECT_TRUE(facts->isFolder);
    EXPECT_FALSE(facts->isRegular);
}

TEST_F(FileSystem, LinksAreFollowedOrKeptAsAsked) {
    m_folder.write("target", "12345");
    const std::string link = m_folder.link("link", "target");
    EXPECT_EQ(fileFacts(link.c_str(), Links::Follow)->size, 5U);
    const auto kept = fileFacts(link.c_str(), Links::Keep);
    EXPECT_EQ(kept->size, std::string("target").size()) << "a link is as long as what it says";
    EXPECT_FALSE(kept->isRegular);
}

TEST_F(FileSystem, DanglingLinkExistsOnlyWhenKept) {
    const std::string link = m_folder.link("link", "nowhere");
    EXPECT_FALSE(fileFacts(link.c_str(), Links::Follow));
    EXPECT_TRUE(fileFacts(link.c_str(), Links::Keep));
    EXPECT_FALSE(itemExists(link.c_str()));
    EXPECT_TRUE(itemExists(m_folder.path().c_str()));
    EXPECT_FALSE(fileFacts(at("missing").c_str(), Links::Keep));
    EXPECT_FALSE(fileFacts("", Links::Follow));
}

TEST_F(FileSystem, SizesBeyondFourGigabytesAreWhole) {
    const std::string path = m_folder.write("large", "x");
    constexpr int64_t kSize = int64_t{5} << 30;
    ASSERT_EQ(truncate(path.c_str(), kSize), 0);
    EXPECT_EQ(fileFacts(path.c_str(), Links::Follow)->size, static_cast<uint64_t>(kSize));
}

TEST_F(FileSystem, ResolvesEveryLinkAsFarAsThePathExists) {
    m_folder.write("real/file", "x");
    m_folder.link("link", "real");
    m_folder.link("real/other", "file");
    EXPECT_EQ(resolvingLinks(at("link/other")), at("real/file"));
    EXPECT_EQ(resolvingLinks(at("link/missing/deeper")), at("real/missing/deeper"));
    EXPECT_EQ(resolvingLinks(at("real/../real/file")), at("real/file"));
    EXPECT_EQ(resolvingLinks("/"), "/");
    EXPECT_EQ(resolvingLinks(""), "");
}

TEST_F(FileSystem, EndlessLinksAndPathsAreLeftAsTheyAre) {
    m_folder.link("a", "b");
    m_folder.link("b", "a");
    EXPECT_EQ(resolvingLinks(at("a")), at("a"));
    std::string endless;
    for (int i = 0; i < 500000; ++i)
        endless += "/a";
    EXPECT_EQ(resolvingLinks(endless), endless);
}

TEST_F(FileSystem, RemovesFilesAndTreesButNotWhatLinksPointAt) {
    m_folder.write("kept/file", "x");
    m_folder.write("tree/a/b/c", "x");
    m_folder.link("tree/a/link", m_folder.at("kept"));
    EXPECT_TRUE(removeItem(at("tree")));
    EXPECT_FALSE(fs::exists(at("tree")));
    EXPECT_TRUE(fs::exists(at("kept/file")));
    const std::string link = m_folder.link("link", "kept");
    EXPECT_TRUE(removeItem(link));
    EXPECT_TRUE(fs::exists(at("kept/file")));
    EXPECT_TRUE(removeItem(at("kept/file")));
    EXPECT_TRUE(removeItem(at("never there")));
}

TEST_F(FileSystem, RemovalThatIsNotAllowedFails) {
    m_folder.write("locked/file", "x");
    ASSERT_EQ(chmod(at("locked").c_str(), 0555), 0);
    {
        const OrdinaryUser user;
        EXPECT_FALSE(removeItem(at("locked")));
    }
    ASSERT_EQ(chmod(at("locked").c_str(), 0755), 0);
    EXPECT_TRUE(fs::exists(at("locked/file")));
}

TEST_F(FileSystem, CopiesFilesAndTrees) {
    m_folder.write("tree/a/file", "bytes");
    m_folder.link("tree/link", "a/file");
    EXPECT_TRUE(copyItem(at("tree"), at("copy")));
    EXPECT_EQ(readFile(at("copy/a/file")), "bytes");
    EXPECT_EQ(fs::read_symlink(at("copy/link")), "a/file") << "links are copied, not followed";
    EXPECT_TRUE(copyItem(at("tree/a/file"), at("single")));
    EXPECT_EQ(readFile(at("single")), "bytes");
    EXPECT_EQ(readFile(at("tree/a/file")), "bytes");
}

TEST_F(FileSystem, CopyFailsWhereSomethingExists) {
    m_folder.write("from", "new");
    m_folder.write("to", "old");
    m_folder.link("dangling", "nowhere");
    m_folder.makeFolder("folder");
    EXPECT_FALSE(copyItem(at("from"), at("to")));
    EXPECT_EQ(readFile(at("to")), "old");
    EXPECT_FALSE(copyItem(at("from"), at("dangling")));
    EXPECT_FALSE(fs::exists(at("nowhere"))) << "a link is not written through";
    EXPECT_FALSE(copyItem(at("from"), at("folder")));
    EXPECT_TRUE(fs::is_empty(at("folder")));
    EXPECT_FALSE(copyItem(at("from"), at("from")));
}

TEST_F(FileSystem, CopyFailsWithoutSourceOrParent) {
    EXPECT_FALSE(copyItem(at("missing"), at("to")));
    EXPECT_FALSE(fs::exists(at("to")));
    m_folder.write("from", "x");
    EXPECT_FALSE(copyItem(at("from"), at("no/parent")));
}

TEST_F(FileSystem, FolderIsNotCopiedIntoItself) {
    m_folder.write("tree/file", "x");
    m_folder.link("link", "tree");
    EXPECT_FALSE(copyItem(at("tree"), at("tree/copy")));
    EXPECT_FALSE(copyItem(at("tree"), at("link/copy")));
    EXPECT_FALSE(fs::exists(at("tree/copy")));
    EXPECT_TRUE(copyItem(at("tree"), at("tree copy"))) << "only looks like being inside";
}

TEST_F(FileSystem, MakesFoldersWithTheirParentsOnlyWhenAsked) {
    EXPECT_FALSE(makeFolder(at("a/b"), Parents::MustExist));
    EXPECT_TRUE(makeFolder(at("a/b"), Parents::Create));
    EXPECT_TRUE(makeFolder(at("a/b"), Parents::MustExist)) << "there already";
    EXPECT_TRUE(makeFolder(at("a/c"), Parents::MustExist));
    EXPECT_TRUE(makeFolder(at("a/d/"), Parents::Create)) << "with a slash at its end";
    m_folder.write("file", "x");
    EXPECT_FALSE(makeFolder(at("file"), Parents::Create));
    EXPECT_FALSE(makeFolder(at("file/below"), Parents::Create));
}

TEST_F(FileSystem, ContentsAreAllBytesOfARegularFile) {
    const std::string bytes(300000, 'x');
    const auto data = contentsOfFile(m_folder.write("file", bytes).c_str());
    ASSERT_TRUE(data);
    EXPECT_EQ(std::string(data->bytes().begin(), data->bytes().end()), bytes);
    EXPECT_EQ(contentsOfFile(m_folder.write("empty", "").c_str())->length(), 0U);
    EXPECT_FALSE(contentsOfFile(at("missing").c_str()));
    EXPECT_FALSE(contentsOfFile(m_folder.path().c_str()));
}

TEST_F(FileSystem, ContentsOfFilesThatTellNoSize) {
    const auto data = contentsOfFile("/proc/self/status");
    ASSERT_TRUE(data);
    EXPECT_GT(data->length(), 100U);
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Mount points of a made-up table and of the system.
#include "PlatformKit/Files/MountTable.h"

#include <gtest/gtest.h>

#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

constexpr std::string_view kTable =
    "22 1 8:2 / / rw,relatime shared:1 - ext4 /dev/sda2 rw\n"
    "23 22 0:21 / /proc rw,nosuid - proc proc rw\n"
    "40 22 8:17 / /media/user/NIKON\\040D70 rw,nosuid shared:5 - vfat /dev/sdb1 rw\n"
    "41 22 8:18 / /media/user/tab\\011back\\134slash rw - vfat /dev/sdb2 rw\n"
    "42 22 8:19 / /media/user/caf\\351 rw - vfat /dev/sdb3 rw\n";

class MountTableOf : public testing::Test {
protected:
    TemporaryFolder m_folder;

    MountTable table(std::string_view text) const {
        return MountTable::readFrom(m_folder.write("mountinfo", text).c_str());
    }
};

TEST_F(MountTableOf, FindsTheVeryPathsOfMountPoints) {
    const MountTable mounts = table(kTable);
    EXPECT_TRUE(mounts.isMountPoint("/"));
    EXPECT_TRUE(mounts.isMountPoint("/proc"));
    EXPECT_FALSE(mounts.isMountPoint("/proc/"));
    EXPECT_FALSE(mounts.isMountPoint("/proc/self"));
    EXPECT_FALSE(mounts.isMountPoint("/media/user"));
    EXPECT_FALSE(mounts.isMountPoint(""));
}

TEST_F(MountTableOf, DecodesEscapedCharacters) {
    const MountTable mounts = table(kTable);
    EXPECT_TRUE(mounts.isMountPoint("/media/user/NIKON D70"));
    EXPECT_FALSE(mounts.isMountPoint("/media/user/NIKON\\040D70"));
    EXPECT_TRUE(mounts.isMountPoint("/media/user/tab\tback\\slash"));
    EXPECT_TRUE(mounts.isMountPoint("/media/user/caf\xE9"));
}

TEST_F(MountTableOf, BrokenLinesHideNoOthers) {
    const MountTable mounts =
        table("22 1 8:2 / / rw - ext4 /dev/sda2 rw\nrubbish\n" + std::string(kTable) + "1 2\n");
    EXPECT_TRUE(mounts.isMountPoint("/proc"));
    EXPECT_TRUE(mounts.isMountPoint("/media/user/NIKON D70"));
}

TEST_F(MountTableOf, NothingIsAMountPointWithoutATable) {
    EXPECT_FALSE(MountTable::readFrom(m_folder.at("missing").c_str()).isMountPoint("/"));
    EXPECT_FALSE(table("").isMountPoint("/"));
    EXPECT_FALSE(MountTable().isMountPoint("/"));
}

TEST_F(MountTableOf, SystemCanBeReplacedAndBroughtBack) {
    const std::string file = m_folder.write("other", "23 22 0:21 / /made/up rw - proc proc rw\n");
    setMountTableFile(file.c_str());
    EXPECT_TRUE(MountTable::read().isMountPoint("/made/up"));
    EXPECT_FALSE(MountTable::read().isMountPoint("/proc"));
    setMountTableFile(nullptr);
    EXPECT_TRUE(MountTable::read().isMountPoint("/proc"));
    EXPECT_FALSE(MountTable::read().isMountPoint("/made/up"));
}

TEST_F(MountTableOf, LinksToMountPointsAreNone) {
    const std::string link = m_folder.link("link", "/proc");
    EXPECT_FALSE(MountTable::read().isMountPoint(link));
    EXPECT_FALSE(MountTable::read().isMountPoint(m_folder.path()));
}

}  // namespace

}  // namespace fi::test

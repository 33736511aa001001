// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "PhotoCollections/Walking.h"
#include "PlatformKit/Files/MountTable.h"

namespace fi::test {

namespace {

using testing::ElementsAre;

/// A mounted file system, for those who may mount.
class Mounted {
public:
    Mounted(const char* source, std::string target, const char* type, unsigned long flags)
        : m_target(std::move(target)),
          m_mounted(mount(source, m_target.c_str(), type, flags, nullptr) == 0) {
        if (!m_mounted) m_reason = std::strerror(errno);
    }
    ~Mounted() {
        if (m_mounted) umount2(m_target.c_str(), MNT_DETACH);
    }
    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;

    explicit operator bool() const { return m_mounted; }
    [[nodiscard]] const std::string& reason() const { return m_reason; }

private:
    std::string m_target;
    bool m_mounted;
    std::string m_reason;
};

TEST(FolderWalkTest, MountPointsInsideAreNotEntered) {
    TemporaryFolder card;
    card.write("a/1.jpg", "");
    card.write("card one/2.jpg", "");
    card.write("z.jpg", "");
    const MountTableOf table({"/", card.at("card one")});
    EXPECT_THAT(walkedBelow(card), ElementsAre("a/1.jpg", "z.jpg"));
}

TEST(FolderWalkTest, StartFolderMayBeAMountPoint) {
    TemporaryFolder card;
    card.write("1.jpg", "");
    card.write("a/2.jpg", "");
    const MountTableOf table({card.path()});
    EXPECT_THAT(walkedBelow(card), ElementsAre("1.jpg", "a/2.jpg"));
}

TEST(FolderWalkTest, MountPointsAreKnownByTheirWholePath) {
    TemporaryFolder card;
    card.write("cards/1.jpg", "");
    card.write("other/card/2.jpg", "");
    const MountTableOf table({card.at("card"), card.at("cards/1"), "/card", "card"});
    EXPECT_THAT(walkedBelow(card), ElementsAre("cards/1.jpg", "other/card/2.jpg"));
}

TEST(FolderWalkTest, LinkToAMountPointIsEntered) {
    TemporaryFolder card;
    card.write("volume/1.jpg", "");
    card.link("way", "volume");
    const MountTableOf table({card.at("volume")});
    EXPECT_THAT(walkedBelow(card), ElementsAre("volume/1.jpg"));
}

TEST(FolderWalkTest, MountPointIsKnownWhenTheStartIsALink) {
    TemporaryFolder card;
    card.write("media/volume/1.jpg", "");
    card.write("media/z.jpg", "");
    card.link("way", "media");
    const MountTableOf table({card.at("media/volume")});
    EXPECT_THAT(walked(card.at("way")), ElementsAre(card.at("media/z.jpg")));
}

TEST(FolderWalkTest, WhetherItIsAVolumeIsAskedBeforeAReferenceIsWanted) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    card.write("b.jpg", "");
    const MountTableOf table({card.at("a.jpg")});
    const BrokenReferences broken({card.at("a.jpg")});
    EXPECT_THAT(walkedBelow(card), ElementsAre("b.jpg"));
    EXPECT_THAT(broken.asked(), ElementsAre(card.at("b.jpg")));
}

TEST(FolderWalkTest, WithoutATableOfMountsNothingIsAVolume) {
    TemporaryFolder card;
    card.write("a/1.jpg", "");
    const std::string missing = card.at("nowhere");
    setMountTableFile(missing.c_str());
    EXPECT_THAT(walkedBelow(card), ElementsAre("a/1.jpg"));
    setMountTableFile(nullptr);
}

TEST(FolderWalkTest, RealMountIsNotEnteredFromOutsideAndIsListedAsStart) {
    TemporaryFolder card;
    card.write("a.jpg", "");
    const Mounted volume("none", card.makeFolder("volume"), "tmpfs", 0);
    if (!volume) GTEST_SKIP() << "needs the right to mount: " << volume.reason();
    const std::string photo = card.write("volume/sub/b.jpg", "");
    EXPECT_THAT(walkedBelow(card), ElementsAre("a.jpg"));
    EXPECT_THAT(walked(card.at("volume")), ElementsAre(photo));
}

TEST(FolderWalkTest, WriteProtectedCardIsListedLikeAnyOther) {
    TemporaryFolder card;
    card.write("source/DCIM/100ABCDE/IMG_0001.JPG", "");
    card.write("source/z.tif", "");
    const std::string target = card.makeFolder("locked");
    const Mounted volume(card.at("source").c_str(), target, nullptr, MS_BIND);
    if (!volume) GTEST_SKIP() << "needs the right to mount: " << volume.reason();
    ASSERT_EQ(mount(nullptr, target.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr), 0);
    ASSERT_NE(mkdir((target + "/new").c_str(), 0700), 0) << "the card is not write-protected";
    EXPECT_THAT(walked(target), ElementsAre(target + "/DCIM/100ABCDE/IMG_0001.JPG", target + "/z.tif"));
}

}  // namespace

}  // namespace fi::test

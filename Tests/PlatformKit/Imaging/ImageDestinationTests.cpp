// SPDX-License-Identifier: Apache-2.0
// Writing pictures: what is written can be read, and a failure leaves nothing behind.
#include "PlatformKit/ImageDestination.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "PlatformKit/Imaging/ImagePixels.h"
#include "PlatformKit/Imaging/Looks.h"
#include "Support/FullDisk.h"
#include "Support/Privileges.h"

namespace fi::test {
namespace {

namespace fs = std::filesystem;

Ref<const CGImage> picture(uint32_t width = 200, uint32_t height = 150,
                           PixelLayout layout = PixelLayout::RGBX32) {
    return ImagePixels::makeImage(testPicture(width, height, layout), {});
}

bool write(const CGImage& image, const std::string& path, const char* type, ImageFailure* failure = nullptr,
           const ImageWriteOptions& options = {}) {
    return writeImage(image, CFURL::createFromPath(path).get(), CFString::create(type).get(), options,
                      failure);
}

size_t itemsIn(const std::string& folder) {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

/// For its length, tells what stands in a file each time that others are stored, and may let that fail.
class Disk {
public:
    Disk(int error, std::string watched) : m_error(error), m_watched(std::move(watched)) { s_disk = this; }
    ~Disk() { s_disk = nullptr; }
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;

    [[nodiscard]] const std::vector<std::string>& seen() const { return m_seen; }

    static int store(int descriptor) {
        if (s_disk == nullptr) return static_cast<int>(syscall(SYS_fsync, descriptor));
        if (fs::exists(s_disk->m_watched)) s_disk->m_seen.push_back(readFile(s_disk->m_watched));
        errno = s_disk->m_error;
        return s_disk->m_error == 0 ? 0 : -1;
    }

private:
    static inline Disk* s_disk = nullptr;
    int m_error;
    std::string m_watched;
    std::vector<std::string> m_seen;
};

std::string textOf(const ImageFailure& failure) {
    return failure.text ? failure.text->c_str() : "";
}

TEST(ImageDestination, WrittenPicturesCanBeRead) {
    const TemporaryFolder folder;
    for (const PixelLayout layout : {PixelLayout::RGBX32, PixelLayout::Gray8}) {
        const auto image = picture(201, 149, layout);
        ASSERT_TRUE(write(*image, folder.at("a.jpg"), "public.jpeg"));
        ASSERT_TRUE(write(*image, folder.at("a.tif"), "PUBLIC.tiff"));
        const auto jpeg = sourceAt(folder.at("a.jpg"))->createImage(0);
        const auto tiff = sourceAt(folder.at("a.tif"))->createImage(0);
        EXPECT_LT(meanDifference(*jpeg, *image), 1.0);
        EXPECT_EQ(meanDifference(*tiff, *image), 0.0);
        EXPECT_EQ(tiff->bitsPerPixel(), image->bitsPerPixel());
        EXPECT_EQ(jpeg->tiffCompression(), 0u);
        EXPECT_NE(tiff->tiffCompression(), 0u);
    }
    EXPECT_EQ(itemsIn(folder.path()), 2u);
}

TEST(ImageDestination, LowerQualityMakesSmallerFiles) {
    const TemporaryFolder folder;
    ASSERT_TRUE(write(*picture(), folder.at("high.jpg"), "public.jpeg", nullptr, {.quality = 1.0}));
    ASSERT_TRUE(write(*picture(), folder.at("low.jpg"), "public.jpeg", nullptr, {.quality = 0.3}));
    EXPECT_LT(fs::file_size(folder.at("low.jpg")), fs::file_size(folder.at("high.jpg")));
}

TEST(ImageDestination, DensityIsTheChosenOneOrTheImagesOwn) {
    const TemporaryFolder folder;
    const auto own = ImagePixels::makeImage(testPicture(20, 20), {.density = {240, 120}});
    for (const char* type : {"public.jpeg", "public.tiff"}) {
        ASSERT_TRUE(write(*own, folder.at("a"), type));
        EXPECT_EQ(sourceAt(folder.at("a"))->createImage(0)->density(), (NSSize{240, 120}));
        ASSERT_TRUE(write(*own, folder.at("a"), type, nullptr, {.density = {300, 300}}));
        EXPECT_EQ(sourceAt(folder.at("a"))->createImage(0)->density(), (NSSize{300, 300}));
    }
}

TEST(ImageDestination, AnOldFileIsReplaced) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.jpg", std::string_view("old"));
    ASSERT_TRUE(write(*picture(), path, "public.jpeg"));
    EXPECT_TRUE(looksUpright(sourceAt(path)->createImage(0).get()));
    EXPECT_EQ(itemsIn(folder.path()), 1u);
}

TEST(ImageDestination, ALinkStaysAndItsFileIsReplaced) {
    const TemporaryFolder folder;
    const std::string target = folder.write("real.jpg", std::string_view("old"));
    const std::string link = folder.link("link.jpg", "real.jpg");
    ASSERT_TRUE(write(*picture(), link, "public.jpeg"));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_TRUE(sourceAt(target));
}

TEST(ImageDestination, NewFilesHaveThePermissionsOfAnyNewFile) {
    const TemporaryFolder folder;
    const mode_t before = umask(027);
    const bool written = write(*picture(), folder.at("a.jpg"), "public.jpeg");
    umask(before);
    ASSERT_TRUE(written);
    EXPECT_EQ(fs::status(folder.at("a.jpg")).permissions(), static_cast<fs::perms>(0640));
}

TEST(ImageDestination, AReplacedFileKeepsItsPermissions) {
    const TemporaryFolder folder;
    for (const mode_t permissions : {0600U, 0444U, 0666U, 0751U}) {
        const std::string path = folder.write("a.jpg", std::string_view("old"));
        ASSERT_EQ(chmod(path.c_str(), permissions), 0);
        ASSERT_TRUE(write(*picture(), path, "public.jpeg"));
        EXPECT_EQ(fs::status(path).permissions(), static_cast<fs::perms>(permissions));
        fs::remove(path);
    }
}

TEST(ImageDestination, BytesAreStoredBeforeTheyTakeThePlaceOfTheOldFile) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.jpg", std::string_view("old"));
    const Disk disk(0, path);
    ASSERT_TRUE(write(*picture(), path, "public.jpeg"));
    EXPECT_EQ(disk.seen(), std::vector<std::string>{"old"});
    EXPECT_NE(readFile(path), "old");
}

TEST(ImageDestination, TheSystemsReasonIsTold) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.jpg", std::string_view("old"));
    for (const int error : {ENOSPC, EIO, EDQUOT}) {
        ImageFailure failure;
        const Disk disk(error, path);
        EXPECT_FALSE(write(*picture(), path, "public.jpeg", &failure));
        EXPECT_EQ(failure.code, ImageError::WriteFailed);
        EXPECT_EQ(textOf(failure), std::string("The file cannot be written: ") + strerror(error) + ".");
        EXPECT_EQ(readFile(path), "old");
        EXPECT_EQ(itemsIn(folder.path()), 1u);
    }
}

TEST(ImageDestination, FileSystemsThatCannotSayWhatIsStoredAreWrittenAllTheSame) {
    const TemporaryFolder folder;
    const Disk disk(EINVAL, folder.at("b.jpg"));
    EXPECT_TRUE(write(*picture(), folder.at("a.jpg"), "public.jpeg"));
}

TEST(ImageDestination, OtherTypesAreRefused) {
    const TemporaryFolder folder;
    for (const char* type : {"public.png", "", "public.jpeg2", "image"}) {
        ImageFailure failure;
        EXPECT_FALSE(write(*picture(), folder.at("a.png"), type, &failure));
        EXPECT_EQ(failure.code, ImageError::Unsupported);
    }
    EXPECT_FALSE(writeImage(*picture(), CFURL::createFromPath(folder.at("a")).get(), nullptr, {}));
    EXPECT_EQ(itemsIn(folder.path()), 0u);
}

TEST(ImageDestination, WhatIsNoRegularFileIsNeverReplaced) {
    const TemporaryFolder folder;
    const std::string inner = folder.makeFolder("inner");
    const std::string pipe = folder.at("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string link = folder.link("link", "pipe");
    for (const std::string& path : {inner, pipe, link}) {
        ImageFailure failure;
        EXPECT_FALSE(write(*picture(), path, "public.jpeg", &failure)) << path;
        EXPECT_EQ(failure.code, ImageError::WriteFailed) << path;
        EXPECT_TRUE(failure.text);
    }
    EXPECT_TRUE(fs::is_fifo(pipe));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(itemsIn(folder.path()), 3u);
}

TEST(ImageDestination, FoldersThatCannotBeWrittenAreReported) {
    const TemporaryFolder folder;
    ImageFailure failure;
    EXPECT_FALSE(write(*picture(), folder.at("missing/a.jpg"), "public.jpeg", &failure));
    EXPECT_EQ(failure.code, ImageError::WriteFailed);
    EXPECT_EQ(textOf(failure), std::string("No file can be written there: ") + strerror(ENOENT) + ".");
    const std::string locked = folder.makeFolder("locked");
    fs::permissions(locked, static_cast<fs::perms>(0555));
    {
        const OrdinaryUser ordinary;
        EXPECT_FALSE(write(*picture(), locked + "/a.jpg", "public.jpeg", &failure));
    }
    EXPECT_EQ(textOf(failure), std::string("No file can be written there: ") + strerror(EACCES) + ".");
    EXPECT_EQ(itemsIn(locked), 0u);
    EXPECT_FALSE(writeImage(*picture(), CFURL::createFromString("http://example.com/a").get(),
                            CFString::create("public.jpeg").get(), {}, &failure));
}

TEST(ImageDestination, AFullDiskLeavesTheOldFileAndNothingElse) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.jpg", std::string_view("old"));
    for (const char* type : {"public.jpeg", "public.tiff"}) {
        ImageFailure failure;
        bool written = true;
        {
            const FullDisk full(1000);
            written = write(*picture(), path, type, &failure);
        }
        EXPECT_FALSE(written);
        EXPECT_EQ(failure.code, ImageError::WriteFailed);
        EXPECT_NE(textOf(failure).find(strerror(EFBIG)), std::string::npos) << textOf(failure);
        EXPECT_EQ(readFile(path), "old");
        EXPECT_EQ(itemsIn(folder.path()), 1u);
    }
}

}  // namespace
}  // namespace fi::test

// The library's calls come here, since the program stands before the system's library.
extern "C" int fsync(int descriptor) {
    return fi::test::Disk::store(descriptor);
}

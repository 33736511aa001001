// SPDX-License-Identifier: Apache-2.0
// Image sources: what is recognised, what is decoded, and what is told when that fails.
#include "PlatformKit/ImageSource.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>

#include "PlatformKit/Imaging/FlakySource.h"
#include "PlatformKit/Imaging/Looks.h"
#include "PlatformKit/Imaging/SourceReader.h"
#include "PlatformKit/Limits.h"
#include "Support/Privileges.h"

namespace fi::test {
namespace {

/// Counts what is read of other bytes.
class CountingSource final : public ByteSource {
public:
    CountingSource(std::span<const uint8_t> bytes, uint64_t& count) : m_bytes(bytes), m_count(count) {}
    [[nodiscard]] uint64_t size() const override { return m_bytes.size(); }
    [[nodiscard]] size_t read(uint64_t offset, std::span<uint8_t> out) override {
        const size_t got = m_bytes.read(offset, out);
        m_count += got;
        return got;
    }

private:
    MemorySource m_bytes;
    uint64_t& m_count;
};

/// A card that is pulled, or has a bad spot: bytes in a stretch of the file cannot be read.
class FailingSource final : public ByteSource {
public:
    FailingSource(std::span<const uint8_t> bytes, uint64_t first, uint64_t end = UINT64_MAX)
        : m_bytes(bytes), m_first(first), m_end(end) {}
    [[nodiscard]] uint64_t size() const override { return m_bytes.size(); }
    [[nodiscard]] size_t read(uint64_t offset, std::span<uint8_t> out) override {
        if (offset >= m_end || offset + out.size() <= m_first) return m_bytes.read(offset, out);
        const size_t before = offset < m_first ? static_cast<size_t>(m_first - offset) : 0;
        if (offset < m_bytes.size() && m_first < m_bytes.size()) m_failed = true;
        return m_bytes.read(offset, out.first(before));
    }
    [[nodiscard]] bool failed() const override { return m_failed; }

private:
    MemorySource m_bytes;
    uint64_t m_first;
    uint64_t m_end;
    bool m_failed = false;
};

Ref<ImageSource> failingSource(const Bytes& file, uint64_t first, ImageFailure* failure,
                               uint64_t end = UINT64_MAX) {
    return SourceReader::makeSource(std::make_unique<FailingSource>(file, first, end), failure);
}

std::string textOf(const ImageFailure& failure) {
    return failure.text ? failure.text->c_str() : "";
}

TEST(ImageSource, DecodesJpegAndTiffInFullSize) {
    const PixelBuffer picture = testPicture(120, 80);
    for (const Bytes& file : {jpegOf(picture), tiffOf(picture)}) {
        const auto source = sourceOf(file);
        ASSERT_TRUE(source);
        EXPECT_EQ(source->count(), 1u);
        const auto image = source->createImage(0);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->width(), 120u);
        EXPECT_EQ(image->height(), 80u);
        EXPECT_EQ(image->bitsPerComponent(), 8u);
        EXPECT_EQ(image->bitsPerPixel(), 32u);
        EXPECT_GE(image->bytesPerRow(), 480u);
        EXPECT_EQ(image->colorSpace(), CGColorSpace::DeviceRGB);
        EXPECT_EQ(image->alphaInfo(), CGAlphaInfo::NoneSkipLast);
        EXPECT_FALSE(image->isDamaged());
        EXPECT_TRUE(looksUpright(image.get()));
    }
}

TEST(ImageSource, GrayFilesGiveGrayImages) {
    const PixelBuffer picture = testPicture(64, 48, PixelLayout::Gray8);
    for (const Bytes& file : {jpegOf(picture), tiffOf(picture)}) {
        const auto image = sourceOf(file)->createImage(0);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->bitsPerPixel(), 8u);
        EXPECT_EQ(image->colorSpace(), CGColorSpace::DeviceGray);
        EXPECT_EQ(image->alphaInfo(), CGAlphaInfo::None);
        EXPECT_TRUE(looksUpright(image.get()));
    }
}

TEST(ImageSource, OrientationIsNeverApplied) {
    const PixelBuffer stored = storedFor(testPicture(120, 80), 6);
    const auto jpeg = sourceOf(withExif(jpegOf(stored), {.orientation = 6}))->createImage(0);
    const auto tiff = sourceOf(tiffOf(stored, 6))->createImage(0);
    for (const auto& image : {jpeg, tiff}) {
        ASSERT_TRUE(image);
        EXPECT_EQ(image->width(), 80u);
        EXPECT_EQ(image->height(), 120u);
        EXPECT_FALSE(looksUpright(image.get()));
    }
}

TEST(ImageSource, ContentCountsAndNamesDoNot) {
    const TemporaryFolder folder;
    const PixelBuffer picture = testPicture(40, 30);
    EXPECT_TRUE(sourceAt(folder.write("photo.tif", jpegOf(picture)))->createImage(0));
    EXPECT_TRUE(sourceAt(folder.write("photo.jpg", tiffOf(picture)))->createImage(0));
    EXPECT_TRUE(sourceAt(folder.write("photo", jpegOf(picture)))->createImage(0));
    ImageFailure failure;
    EXPECT_FALSE(sourceAt(folder.write("text.jpg", std::string_view("no picture at all")), &failure));
    EXPECT_EQ(failure.code, ImageError::NotAnImage);
    EXPECT_NE(textOf(failure), "");
    EXPECT_FALSE(sourceAt(folder.write("empty.jpg", std::string_view()), &failure));
    EXPECT_EQ(failure.code, ImageError::NotAnImage);
}

TEST(ImageSource, NamesThatAreNotUtf8AreOpened) {
    const TemporaryFolder folder;
    EXPECT_TRUE(sourceAt(folder.write("caf\xe9 \xff.jpg", jpegOf(testPicture(16, 16)))));
}

TEST(ImageSource, FoldersPipesAndMissingFilesAnswerAtOnce) {
    const TemporaryFolder folder;
    const std::string pipe = folder.at("pipe.jpg");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {folder.path(), pipe, folder.at("missing.jpg"),
                                    folder.link("dangling.jpg", "nowhere"), std::string("/dev/null")}) {
        ImageFailure failure;
        EXPECT_FALSE(sourceAt(path, &failure)) << path;
        EXPECT_EQ(failure.code, ImageError::CannotOpen) << path;
    }
}

TEST(ImageSource, FilesWithoutPermissionCannotBeOpened) {
    const TemporaryFolder folder;
    const std::string path = folder.write("secret.jpg", jpegOf(testPicture(16, 16)));
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    const OrdinaryUser ordinary;
    ImageFailure failure;
    EXPECT_FALSE(sourceAt(path, &failure));
    EXPECT_EQ(failure.code, ImageError::CannotOpen);
}

TEST(ImageSource, NullAndForeignUrlsCannotBeOpened) {
    ImageFailure failure;
    EXPECT_FALSE(ImageSource::open(nullptr, &failure));
    EXPECT_EQ(failure.code, ImageError::CannotOpen);
    EXPECT_FALSE(ImageSource::open(CFURL::createFromString("http://example.com/a.jpg").get()));
    EXPECT_FALSE(ImageSource::openData(nullptr));
}

TEST(ImageSource, ScaledDecodingIsNeverBelowTheWantedSize) {
    const auto source = sourceOf(jpegOf(testPicture(1600, 1067)));
    for (uint32_t wanted = 1; wanted <= 1600; wanted += 37) {
        const uint32_t wantedHeight = wanted * 1067 / 1600;
        const auto image = source->createImage(0, wanted, wantedHeight == 0 ? 1 : wantedHeight);
        ASSERT_TRUE(image);
        EXPECT_GE(image->width(), wanted);
        EXPECT_GE(image->height(), wantedHeight);
        EXPECT_LE(image->width(), 1600u);
        EXPECT_TRUE(looksUpright(image.get()));
    }
    EXPECT_LT(source->createImage(0, 200, 133)->width(), 400u);
}

TEST(ImageSource, WantedSizesBeyondTheStoredOneGiveTheStoredOne) {
    for (const Bytes& file : {jpegOf(testPicture(100, 70)), tiffOf(testPicture(100, 70))}) {
        const auto image = sourceOf(file)->createImage(0, 100000, 100000);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->width(), 100u);
        EXPECT_EQ(image->height(), 70u);
    }
}

TEST(ImageSource, OneWantedSideOfZeroAsksForTheFullSize) {
    const auto source = sourceOf(jpegOf(testPicture(640, 480)));
    EXPECT_EQ(source->createImage(0, 0, 10)->width(), 640u);
    EXPECT_EQ(source->createImage(0, 10, 0)->width(), 640u);
}

TEST(ImageSource, CutJpegsGiveWhatIsThere) {
    const Bytes whole = jpegOf(testPicture(400, 300), 1.0);
    Bytes cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(whole.size() / 2));
    const auto image = sourceOf(cut)->createImage(0);
    ASSERT_TRUE(image);
    EXPECT_TRUE(image->isDamaged());
    EXPECT_EQ(image->width(), 400u);
    EXPECT_EQ(image->height(), 300u);
    EXPECT_TRUE(isClose(pixelAt(*image, 50, 37), kCorners.topLeft));
    EXPECT_TRUE(isClose(pixelAt(*image, 350, 37), kCorners.topRight));
    EXPECT_FALSE(isClose(pixelAt(*image, 50, 262), kCorners.bottomLeft));
}

TEST(ImageSource, FilesThatCannotBeReadAreNotTakenForDamagedOnes) {
    const Bytes jpeg = withExif(jpegOf(testPicture(400, 300), 1.0), {.orientation = 6});
    for (const Bytes& whole : {jpeg, tiffOf(testPicture(200, 150), 8)}) {
        for (uint64_t first = 0; first < whole.size(); first += 1 + whole.size() / 200) {
            ImageFailure failure;
            const auto source = failingSource(whole, first, &failure);
            const auto image = source ? source->createImage(0, &failure) : nullptr;
            EXPECT_FALSE(image) << first;
            EXPECT_EQ(failure.code, ImageError::ReadFailed) << first << " " << textOf(failure);
            EXPECT_EQ(textOf(failure), "Reading the file failed.");
        }
    }
}

TEST(ImageSource, PropertiesThatCannotBeReadAreNotLeftOut) {
    const Bytes jpeg = withExif(jpegOf(testPicture(90, 60)), {.orientation = 6});
    for (const Bytes& whole : {jpeg, tiffOf(testPicture(40, 30), 8)}) {
        const auto all = sourceOf(whole)->copyProperties(0);
        for (uint64_t first = 0; first < whole.size(); ++first) {
            ImageFailure failure;
            const auto source = failingSource(whole, first, &failure);
            const auto properties = source ? source->copyProperties(0, &failure) : nullptr;
            EXPECT_TRUE(properties ? properties->isEqual(all.get())
                                   : failure.code == ImageError::ReadFailed)
                << first;
        }
    }
}

TEST(ImageSource, AFailingReadNeverGivesOtherProperties) {
    for (const Bytes& file :
         {withExif(jpegOf(testPicture(90, 60)), {.orientation = 6}), tiffOf(testPicture(40, 30), 8)}) {
        const auto all = sourceOf(file)->copyProperties(0);
        bool failed = true;
        for (int read = 0; failed; ++read) {
            ImageFailure failure;
            const auto source = flakySource(file, read, failed, &failure);
            const auto properties = source ? source->copyProperties(0, &failure) : nullptr;
            EXPECT_TRUE(properties ? properties->isEqual(all.get())
                                   : failure.code == ImageError::ReadFailed)
                << read;
        }
    }
}

TEST(ImageSource, OnePageThatCannotBeReadLeavesTheOthers) {
    const Bytes file =
        tiffBlock({tiffPage(testPicture(30, 20)), tiffPage(testPicture(50, 40))}, ByteOrder::Little);
    // Of two pages without compression, the larger one's pixels fill the end or the middle of the file.
    bool told = false;
    for (uint64_t first = 0; first + 64 <= file.size(); first += 64) {
        const auto source = failingSource(file, first, nullptr, first + 64);
        if (!source || source->count() != 2) continue;
        ImageFailure failure;
        if (source->createImage(1, &failure)) continue;
        EXPECT_EQ(failure.code, ImageError::ReadFailed);
        const auto other = source->createImage(0);
        told = told || (other && looksUpright(other.get()));
    }
    EXPECT_TRUE(told);
}

TEST(ImageSource, FilesCutAnywhereGiveAnImageOrAReason) {
    const Bytes jpeg =
        withExif(jpegOf(testPicture(90, 60)), {.orientation = 3, .date = "2024:05:06 07:08:09"});
    for (const Bytes& whole : {jpeg, tiffOf(testPicture(40, 30), 8)}) {
        for (size_t length = 0; length < whole.size(); length += 1 + whole.size() / 400) {
            const Bytes cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
            ImageFailure failure;
            const auto source = sourceOf(cut, &failure);
            const auto image = source ? source->createImage(0, &failure) : nullptr;
            EXPECT_NE(static_cast<bool>(image), failure.code != ImageError::None) << length;
            EXPECT_EQ(!image, textOf(failure) != "") << length;
            EXPECT_TRUE(!image || image->isDamaged()) << length;
        }
    }
}

TEST(ImageSource, PicturesBeyondTheLastAreRefusedWithAReason) {
    for (const Bytes& file : {jpegOf(testPicture(20, 20)), tiffOf(testPicture(20, 20))}) {
        const auto source = sourceOf(file);
        for (const uint32_t index : {1u, 2u, UINT32_MAX}) {
            ImageFailure failure;
            EXPECT_FALSE(source->createImage(index, &failure));
            EXPECT_EQ(failure.code, ImageError::NoSuchImage);
            failure = {};
            EXPECT_FALSE(source->copyProperties(index, &failure));
            EXPECT_EQ(failure.code, ImageError::NoSuchImage);
        }
        EXPECT_TRUE(source->createImage(0));
    }
}

TEST(ImageSource, EveryPageOfATiffIsAPicture) {
    const Bytes file = tiffBlock({tiffPage(testPicture(30, 20)), tiffPage(testPicture(50, 40)),
                                  tiffPage(testPicture(24, 70, PixelLayout::Gray8))},
                                 ByteOrder::Big);
    const auto source = sourceOf(file);
    EXPECT_EQ(source->count(), 3u);
    // In any order.
    for (const uint32_t index : {2u, 0u, 1u, 2u}) {
        const auto image = source->createImage(index);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->width(), (std::array{30u, 50u, 24u})[index]);
        EXPECT_EQ(image->height(), (std::array{20u, 40u, 70u})[index]);
        EXPECT_TRUE(looksUpright(image.get()));
    }
}

TEST(ImageSource, HeadersThatCannotBeReadCountNoPicture) {
    const Bytes onlyTheMark = {0xFF, 0xD8, 0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0};
    const auto source = sourceOf(onlyTheMark);
    ASSERT_TRUE(source);
    EXPECT_EQ(source->count(), 0u);
    ImageFailure failure;
    EXPECT_FALSE(source->copyProperties(0, &failure));
    EXPECT_EQ(failure.code, ImageError::Damaged);
    failure = {};
    EXPECT_FALSE(source->createImage(0, &failure));
    EXPECT_EQ(failure.code, ImageError::Damaged);
}

TEST(ImageSource, PicturesBeyondTheLimitsAreRefusedWithAReason) {
    const Bytes file = jpegOf(testPicture(300, 200));
    const DecodeLimits before = decodeLimits();
    decodeLimits().maximumPixels = 10'000;
    ImageFailure failure;
    const auto image = sourceOf(file)->createImage(0, &failure);
    decodeLimits() = before;
    EXPECT_FALSE(image);
    EXPECT_EQ(failure.code, ImageError::LimitExceeded);
    EXPECT_NE(textOf(failure), "");
}

TEST(ImageSource, ImagesRememberTheirFile) {
    const auto jpeg = sourceOf(jpegOf(testPicture(20, 20), 0.9, Density{300, 150}))->createImage(0);
    EXPECT_EQ(jpeg->density(), (NSSize{300, 150}));
    EXPECT_EQ(jpeg->tiffCompression(), 0u);
    EXPECT_EQ(jpeg->iccProfile(), nullptr);

    TiffDirectory page = tiffPage(testPicture(20, 20));
    page.fractions(0x011A, {{240, 1}}).fractions(0x011B, {{120, 1}}).shorts(0x0128, {2});
    page.bytes(0x8773, 7, Bytes(200, 0x5A));
    const auto tiff = sourceOf(tiffBlock({page}, ByteOrder::Little))->createImage(0);
    EXPECT_EQ(tiff->density(), (NSSize{240, 120}));
    EXPECT_EQ(tiff->tiffCompression(), 1u);
    ASSERT_NE(tiff->iccProfile(), nullptr);
    EXPECT_EQ(tiff->iccProfile()->length(), 200u);
}

TEST(ImageSource, FilesWithoutADensityStateNone) {
    EXPECT_EQ(sourceOf(jpegOf(testPicture(20, 20)))->createImage(0)->density(), NSSize{});
    EXPECT_EQ(sourceOf(tiffOf(testPicture(20, 20)))->createImage(0)->density(), NSSize{});
}

TEST(ImageSource, ImagesOutliveTheirSourceAndItsFile) {
    Ref<const CGImage> image;
    {
        const TemporaryFolder folder;
        image = sourceAt(folder.write("photo.jpg", jpegOf(testPicture(80, 60))))->createImage(0);
    }
    EXPECT_TRUE(looksUpright(image.get()));
}

TEST(ImageSource, PropertiesReadTheHeadAloneAndOnlyOnce) {
    // Smooth pictures compress too well: a file much longer than its head needs detail.
    PixelBuffer detailed = testPicture(1000, 800);
    for (uint32_t y = 0; y < 800; ++y) {
        for (uint32_t x = 0; x < 1000; ++x) {
            detailed.row(y)[x * 4] = static_cast<uint8_t>(x * 7919 + y * 104729);
        }
    }
    const Bytes file = withExif(jpegOf(detailed, 1.0), {.orientation = 6, .date = "2024:01:02 03:04:05"});
    ASSERT_GT(file.size(), 200'000u);
    uint64_t bytesRead = 0;
    const auto source =
        SourceReader::makeSource(std::make_unique<CountingSource>(file, bytesRead), nullptr);
    ASSERT_TRUE(source->copyProperties(0));
    EXPECT_LT(bytesRead, 20'000u);
    const uint64_t afterFirst = bytesRead;
    EXPECT_EQ(source->count(), 1u);
    ASSERT_TRUE(source->copyProperties(0));
    EXPECT_EQ(bytesRead, afterFirst);
    ASSERT_TRUE(source->createImage(0, 100, 80));
    EXPECT_LT(bytesRead, afterFirst + file.size() + 70'000);
}

TEST(ImageSource, DamagedFilesPrintNothing) {
    const Bytes whole = jpegOf(testPicture(90, 60));
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    for (size_t at = 20; at < whole.size(); at += 7) {
        Bytes broken = whole;
        broken[at] ^= 0xFF;
        const auto source = sourceOf(broken);
        if (source) (void)source->createImage(0);
    }
    Bytes tiff = tiffOf(testPicture(20, 20));
    for (size_t at = 8; at < tiff.size(); at += 3) {
        Bytes broken = tiff;
        broken[at] ^= 0xFF;
        const auto source = sourceOf(broken);
        if (source) (void)source->createImage(0);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ImageSource, MetadataOfAnyBytesIsSurvived) {
    const Bytes block = tiffBlock(
        {exifDirectory({.orientation = 6, .date = "2024:05:06 07:08:09", .width = 9})}, ByteOrder::Big);
    const Bytes jpeg = jpegOf(testPicture(16, 16));
    for (size_t at = 0; at < block.size(); ++at) {
        for (const uint8_t flip : {uint8_t{0x01}, uint8_t{0x80}, uint8_t{0xFF}}) {
            Bytes broken = block;
            broken[at] ^= flip;
            const auto properties = sourceOf(withExif(jpeg, broken))->copyProperties(0);
            ASSERT_TRUE(properties);
            EXPECT_GE(properties->count(), 4u);
        }
    }
}

}  // namespace
}  // namespace fi::test

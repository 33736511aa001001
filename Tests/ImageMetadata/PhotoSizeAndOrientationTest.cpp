// SPDX-License-Identifier: Apache-2.0
// Size and orientation of one photo as its picture has them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "Foundation/HeaderBytes.h"
#include "Foundation/TestText.h"
#include "ImageMetadata/QuickReaders.h"
#include "Support/MakePictures.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

class PhotoSizeAndOrientationTest : public ::testing::Test {
protected:
    const TemporaryFolder m_folder;
};

}  // namespace

TEST_F(PhotoSizeAndOrientationTest, TheOrientationOfAPictureIsItsOwnOrZero) {
    const auto orientationOf = [](const std::string& path) {
        int16_t orientation = -1;
        EXPECT_EQ(readExifOrientation(urlAt(path).get(), &orientation), 0);
        return orientation;
    };
    for (uint16_t stated = 1; stated <= 8; ++stated) {
        EXPECT_EQ(orientationOf(
                      m_folder.write("a.jpg", withExif(jpegWith({}), ExifFacts{.orientation = stated}))),
                  stated);
        EXPECT_EQ(orientationOf(m_folder.write("a.tif", tiffOf(testPicture(16, 8), stated))), stated);
    }
    EXPECT_EQ(orientationOf(m_folder.write("plain.jpg", jpegWith({}))), 0);
    EXPECT_EQ(orientationOf(m_folder.write("plain.tif", tiffWith({}))), 0);
}

TEST_F(PhotoSizeAndOrientationTest, WhereNoPictureIsTheOrientationStays) {
    const auto expectUntouched = [](CFURLRef url) {
        int16_t orientation = 4711;
        EXPECT_EQ(readExifOrientation(url, &orientation), 0);
        EXPECT_EQ(orientation, 4711);
    };
    for (const std::string& path :
         {m_folder.write("text.jpg", "a text"), m_folder.write("empty.jpg", ""), m_folder.at("missing.jpg"),
          m_folder.path(), m_folder.write("cut.jpg", "\xFF\xD8\xFF\xE0")})
        expectUntouched(urlAt(path).get());
    expectUntouched(nullptr);
    expectUntouched(urlWithoutPath().get());
}

TEST_F(PhotoSizeAndOrientationTest, TheOrientationFillsItsVariableAndNothingElse) {
    struct {
        int16_t before = 0x1111;
        int16_t orientation = 0x2222;
        int16_t after = 0x3333;
        int16_t last = 0x4444;
    } area;
    const auto url = urlAt(m_folder.write("a.jpg", withExif(jpegWith({}), ExifFacts{.orientation = 6})));
    EXPECT_EQ(readExifOrientation(url.get(), &area.orientation), 0);
    EXPECT_EQ(area.before, 0x1111);
    EXPECT_EQ(area.orientation, 6);
    EXPECT_EQ(area.after, 0x3333);
    EXPECT_EQ(area.last, 0x4444);
}

TEST_F(PhotoSizeAndOrientationTest, TheSizeIsTheRememberedOne) {
    const auto url = urlAt(m_folder.write("a.jpg", jpegWith({.width = 640, .height = 480})));
    tCacheInfo record{};
    record.exifValue1 = 3000;
    record.exifValue2 = 4000;
    Rect bounds{-1, -1, -1, -1};
    EXPECT_TRUE(checkPhotoSize(&record, url.get(), &bounds));
    EXPECT_EQ(bounds, (Rect{0, 0, 4000, 3000}));
    EXPECT_TRUE(checkPhotoSize(&record, nullptr, &bounds)) << "no file is needed";
    record.exifValue2 = 40000;
    EXPECT_TRUE(checkPhotoSize(&record, url.get(), &bounds));
    EXPECT_EQ(bounds, (Rect{0, 0, -25536, 3000}));
}

TEST_F(PhotoSizeAndOrientationTest, WithoutARememberedOneTheSizeIsTheFiles) {
    const auto url = urlAt(m_folder.write("a.jpg", jpegWith({.width = 640, .height = 480})));
    struct Case {
        uint16_t width;
        uint16_t height;
    };
    for (const Case& c : {Case{0, 0}, Case{3000, 0}, Case{0, 4000}}) {
        tCacheInfo record{};
        record.exifValue1 = c.width;
        record.exifValue2 = c.height;
        Rect bounds{-1, -1, -1, -1};
        EXPECT_TRUE(checkPhotoSize(&record, url.get(), &bounds));
        EXPECT_EQ(bounds, (Rect{0, 0, 480, 640}));
    }
    Rect bounds{-1, -1, -1, -1};
    EXPECT_TRUE(checkPhotoSize(nullptr, url.get(), &bounds));
    EXPECT_EQ(bounds, (Rect{0, 0, 480, 640}));
}

TEST_F(PhotoSizeAndOrientationTest, AnEmptySizeIsNone) {
    tCacheInfo record{};
    record.exifValue1 = 3000;
    const auto expectNone = [&record](CFURLRef url) {
        Rect bounds{-1, -2, -3, -4};
        EXPECT_FALSE(checkPhotoSize(&record, url, &bounds));
        EXPECT_EQ(bounds, (Rect{-1, -2, -3, -4}));
        EXPECT_FALSE(checkPhotoSize(&record, url, nullptr));
    };
    for (const std::string& path : {m_folder.write("text.jpg", "a text"), m_folder.at("missing.jpg"),
                                    m_folder.write("a.pdf", jpegWith({})),
                                    m_folder.write("wide.jpg", jpegWith({.width = 40000, .height = 8})),
                                    m_folder.write("tall.jpg", jpegWith({.width = 8, .height = 40000}))})
        expectNone(urlAt(path).get());
    expectNone(nullptr);
}

TEST_F(PhotoSizeAndOrientationTest, WithoutARectangleTheFileSaysWhetherThereIsASize) {
    tCacheInfo record{};
    record.exifValue1 = 3000;
    record.exifValue2 = 4000;
    EXPECT_TRUE(checkPhotoSize(&record, urlAt(m_folder.write("a.jpg", jpegWith({}))).get(), nullptr));
    EXPECT_TRUE(checkPhotoSize(nullptr, urlAt(m_folder.write("a.jpg", jpegWith({}))).get(), nullptr));
    EXPECT_FALSE(checkPhotoSize(&record, urlAt(m_folder.write("text.jpg", "a text")).get(), nullptr));
    EXPECT_FALSE(checkPhotoSize(&record, nullptr, nullptr));
}

TEST_F(PhotoSizeAndOrientationTest, DisposingAnswersOne) {
    EXPECT_EQ(disposeExifTagData(nullptr), 1);
    EXPECT_EQ(disposeExifTagData(static_cast<char*>(std::malloc(20))), 1);
}

}  // namespace fi::test

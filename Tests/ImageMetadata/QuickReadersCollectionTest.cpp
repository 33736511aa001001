// SPDX-License-Identifier: Apache-2.0
// Every reader answers, with one of its codes, for every file of the collection, damaged ones and files of
// other kinds included.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Foundation/TestText.h"
#include "ImageMetadata/ExifSegment.h"
#include "ImageMetadata/QuickReaders.h"
#include "Support/Corpus.h"

namespace fi::test {

namespace {

constexpr const char* kFolders[] = {"jpeg-camera",     "jpeg-corrupt", "jpeg-metadata", "jpeg-orientation",
                                    "jpeg-structure",  "not-an-image", "tiff",          "tiff-corrupt",
                                    "tiff-orientation"};

void readAll(const std::string& path, CIMAGETAG& tags) {
    const auto url = urlAt(path);
    DateTimeRec date{-1, -1, -1, -1, -1, -1, -1};
    const OSErr code = readDateFromExifFast(url.get(), tags, date);
    EXPECT_TRUE(code == 0 || code == -43 || code == -108) << code;
    EXPECT_EQ(code == 0, date.year > 0);
    int16_t orientation = 0;
    EXPECT_EQ(readOrientationFromExifFast(url.get(), tags, orientation), code);
    EXPECT_EQ(readExifOrientation(url.get(), &orientation), 0);
    EXPECT_EQ(readDate(url.get(), 0, tags, date), 0);
    Rect bounds{};
    const bool hasSize = checkPhotoSize(nullptr, url.get(), &bounds);
    EXPECT_EQ(hasSize, bounds.bottom > 0 && bounds.right > 0);

    const ExifSegment segment = readExifSegment(url.get());
    EXPECT_TRUE(segment.code == 0 || segment.code == 1 || segment.code == 3) << segment.code;
    EXPECT_EQ(segment.block != nullptr, segment.size > 0);
    if (!segment.block) return;
    const std::string_view bytes(segment.block.get(), segment.size);
    EXPECT_EQ(bytes.substr(0, 2), "\xFF\xE1");
    const auto length = static_cast<uint8_t>(bytes[2]) * 256U + static_cast<uint8_t>(bytes[3]);
    EXPECT_EQ(length + 2, bytes.size());
}

}  // namespace

TEST(QuickReadersCollectionTest, EveryFileIsAnswered) {
    if (!corpusFolder()) GTEST_SKIP() << "no collection of photos ($FILEIMPORTER_CORPORA)";
    CIMAGETAG tags;
    size_t files = 0;
    for (const char* folder : kFolders) {
        for (const std::string& path : corpusFiles(folder)) {
            SCOPED_TRACE(path);
            readAll(path, tags);
            ++files;
        }
    }
    EXPECT_GT(files, 0U);
}

}  // namespace fi::test

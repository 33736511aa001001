// SPDX-License-Identifier: Apache-2.0
// The whole way from a file to an upright picture over the collection of real photos.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "PlatformKit/Imaging/Looks.h"
#include "PlatformKit/UprightImage.h"
#include "Support/Corpus.h"

namespace fi::test {
namespace {

/// Files of one folder of the collection whose names begin with `prefix`.
std::vector<std::string> filesBeginning(const std::string& folder, const std::string& prefix) {
    std::vector<std::string> found;
    for (const std::string& path : corpusFiles(folder)) {
        if (std::filesystem::path(path).filename().string().starts_with(prefix)) found.push_back(path);
    }
    return found;
}

Ref<const CGImage> uprightAt(const std::string& path, uint32_t side) {
    const auto source = sourceAt(path);
    return source ? createUprightImage(*source, 0, side, side) : nullptr;
}

constexpr const char* kMissing = "the collection of photos is not beside the checkout";

/// Every file shows one scene in another orientation: all must come out alike.
void expectOneScene(const std::string& folder, const std::string& prefix, size_t fewest) {
    const auto files = filesBeginning(folder, prefix);
    ASSERT_GE(files.size(), fewest) << folder << "/" << prefix;
    const auto first = uprightAt(files.front(), 200);
    ASSERT_TRUE(first) << files.front();
    for (const std::string& path : files) {
        const auto image = uprightAt(path, 200);
        ASSERT_TRUE(image) << path;
        EXPECT_LT(meanDifference(*image, *first), 6.0) << path;
    }
}

TEST(Collection, EveryOrientationOfAJpegComesOutTheSame) {
    if (!corpusFolder()) GTEST_SKIP() << kMissing;
    expectOneScene("jpeg-orientation", "pillow_hopper_orientation_", 7);
    expectOneScene("jpeg-orientation", "recurser_Landscape_", 8);
}

TEST(Collection, EveryOrientationOfATiffComesOutTheSame) {
    if (!corpusFolder()) GTEST_SKIP() << kMissing;
    expectOneScene("tiff-orientation", "pillow_g4_orientation_", 8);
}

TEST(Collection, EveryPictureComesOutOrSaysWhyNot) {
    if (!corpusFolder()) GTEST_SKIP() << kMissing;
    size_t good = 0;
    size_t bad = 0;
    for (const char* folder :
         {"jpeg-camera", "jpeg-corrupt", "jpeg-metadata", "jpeg-orientation", "jpeg-structure", "tiff",
          "tiff-corrupt", "tiff-orientation", "not-an-image", "pdf", "bmp", "pict"}) {
        for (const std::string& path : corpusFiles(folder)) {
            ImageFailure failure;
            const auto source = sourceAt(path, &failure);
            const auto image = source ? createUprightImage(*source, 0, 160, 160, &failure) : nullptr;
            EXPECT_EQ(!image, failure.code != ImageError::None) << path;
            EXPECT_TRUE(image || failure.text) << path;
            EXPECT_TRUE(!image || std::max(image->width(), image->height()) <= 160) << path;
            ++(image ? good : bad);
        }
    }
    EXPECT_GT(good, 100u);
    EXPECT_GT(bad, 10u);
}

}  // namespace
}  // namespace fi::test

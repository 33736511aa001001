// SPDX-License-Identifier: Apache-2.0
// What the headers of image files say: bounds, depth, properties.
#include "Foundation/ImageFacts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Foundation/HeaderBytes.h"
#include "Foundation/TestText.h"
#include "PlatformKit/ImageProperties.h"
#include "PlatformKit/Number.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

constexpr int32_t kUntouched = 4711;

/// The depth of a file, or kUntouched with its code in the message.
int32_t depthOf(const std::string& path) {
    int32_t depth = kUntouched;
    const OSErr code = imageDepthAt(urlAt(path).get(), &depth);
    EXPECT_EQ(code, depth == kUntouched ? -43 : 0) << path;
    return depth;
}

Rect boundsOf(const std::string& path) {
    return imageBoundsAt(urlAt(path).get());
}

}  // namespace

TEST(ImageFactsTest, BoundsAreZeroHeightAndWidth) {
    const TemporaryFolder folder;
    EXPECT_EQ(boundsOf(folder.write("photo.jpg", jpegWith({.width = 640, .height = 480}))),
              (Rect{0, 0, 480, 640}));
    EXPECT_EQ(boundsOf(folder.write("photo.tif", tiffWith({.width = 33, .height = 7}))),
              (Rect{0, 0, 7, 33}));
}

TEST(ImageFactsTest, BoundsAreInPixelsWhateverTheDensity) {
    const TemporaryFolder folder;
    const HeaderFacts facts = {.width = 300, .height = 150, .dotsPerInch = 300};
    EXPECT_EQ(boundsOf(folder.write("photo.jpg", jpegWith(facts))), (Rect{0, 0, 150, 300}));
    EXPECT_EQ(boundsOf(folder.write("photo.tif", tiffWith(facts))), (Rect{0, 0, 150, 300}));
}

TEST(ImageFactsTest, BoundsAreToldByContentAndNotByName) {
    const TemporaryFolder folder;
    EXPECT_EQ(boundsOf(folder.write("photo.tif", jpegWith({.width = 640, .height = 480}))),
              (Rect{0, 0, 480, 640}));
}

TEST(ImageFactsTest, SidesAreTakenModulo16Bits) {
    const TemporaryFolder folder;
    struct Case {
        uint16_t side;
        int16_t bound;
    };
    for (const Case& c : {Case{32767, 32767}, Case{32768, -32768}, Case{40000, -25536}, Case{65500, -36}}) {
        const Rect wide = boundsOf(folder.write("wide.jpg", jpegWith({.width = c.side, .height = 8})));
        EXPECT_EQ(wide, (Rect{0, 0, 8, c.bound})) << c.side;
        const Rect tall = boundsOf(folder.write("tall.jpg", jpegWith({.width = 8, .height = c.side})));
        EXPECT_EQ(tall, (Rect{0, 0, c.bound, 8})) << c.side;
    }
}

TEST(ImageFactsTest, WhatIsNoImageHasNoBounds) {
    const TemporaryFolder folder;
    for (const std::string& path :
         {folder.write("note.jpg", "a text"), folder.write("empty.jpg", ""), folder.at("missing.jpg"),
          folder.path(), folder.write("cut.jpg", "\xff\xd8\xff\xe0"), folder.write("cut.tif", "II*")})
        EXPECT_EQ(boundsOf(path), Rect{}) << path;
    EXPECT_EQ(imageBoundsAt(nullptr), Rect{});
    EXPECT_EQ(imageBoundsAt(urlWithoutPath().get()), Rect{});
}

TEST(ImageFactsTest, DepthIsBitsTimesComponents) {
    const TemporaryFolder folder;
    const auto tiff = [&folder](uint16_t components, uint16_t bits) {
        return depthOf(
            folder.write("photo.tif", tiffWith({.components = components, .bitsPerComponent = bits})));
    };
    EXPECT_EQ(tiff(1, 1), 1);
    EXPECT_EQ(tiff(1, 8), 8);
    EXPECT_EQ(tiff(3, 8), 24);
    EXPECT_EQ(tiff(3, 16), 48);
    EXPECT_EQ(tiff(4, 8), 32);
    EXPECT_EQ(depthOf(folder.write("gray.jpg", jpegWith({.components = 1}))), 8);
    EXPECT_EQ(depthOf(folder.write("color.jpg", jpegWith({.components = 3}))), 24);
    EXPECT_EQ(depthOf(folder.write("print.jpg", jpegWith({.components = 4}))), 32);
}

TEST(ImageFactsTest, DepthOfWhatIsNoImageIsLeftAlone) {
    const TemporaryFolder folder;
    for (const std::string& path :
         {folder.write("note.jpg", "a text"), folder.write("empty.jpg", ""), folder.at("missing.jpg"),
          folder.path(), folder.write("cut.tif", "II*")})
        EXPECT_EQ(depthOf(path), kUntouched) << path;
    int32_t depth = kUntouched;
    EXPECT_EQ(imageDepthAt(nullptr, &depth), -43);
    EXPECT_EQ(imageDepthAtPath(nullptr, &depth), -43);
    EXPECT_EQ(imageDepthAt(urlWithoutPath().get(), &depth), -43);
    EXPECT_EQ(depth, kUntouched);
}

TEST(ImageFactsTest, QalFilesHaveNoDepthThoughTheyHoldAnImage) {
    const TemporaryFolder folder;
    EXPECT_EQ(depthOf(folder.write("album.qal", jpegWith({}))), kUntouched);
    EXPECT_EQ(depthOf(folder.write("ALBUM.QAL", jpegWith({}))), kUntouched);
}

TEST(ImageFactsTest, DepthIsFoundByPathAndByTheTextOfAURL) {
    const TemporaryFolder folder;
    const std::string path = folder.write("50% off #1 \u00e9.jpg", jpegWith({}));
    int32_t depth = kUntouched;
    EXPECT_EQ(imageDepthAtPath(text(path).get(), &depth), 0);
    EXPECT_EQ(depth, 24);
    depth = kUntouched;
    EXPECT_EQ(imageDepthAtPath(urlAt(path)->string(), &depth), 0);
    EXPECT_EQ(depth, 24);
    EXPECT_EQ(depthOf(path), 24);
}

TEST(ImageFactsTest, NamesThatAreNotUTF8HaveTheirFacts) {
    const TemporaryFolder folder;
    const std::string path = folder.write("caf\xe9.jpg", jpegWith({.width = 20, .height = 10}));
    EXPECT_EQ(boundsOf(path), (Rect{0, 0, 10, 20}));
    EXPECT_EQ(depthOf(path), 24);
}

TEST(ImageFactsTest, PropertiesAreThoseOfTheFirstImageAndTheCallers) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("photo.jpg", jpegWith({.width = 640, .height = 480})));
    const auto properties = imagePropertiesAt(url.get());
    ASSERT_TRUE(properties);
    EXPECT_EQ(properties->retainCount(), 1U);
    const auto* width = properties->value<CFNumber>(kCGImagePropertyPixelWidth);
    ASSERT_NE(width, nullptr);
    EXPECT_EQ(width->int32Value(), 640);
    EXPECT_EQ(url->retainCount(), 1U);
}

TEST(ImageFactsTest, WhatIsNoImageHasNoProperties) {
    const TemporaryFolder folder;
    EXPECT_FALSE(imagePropertiesAt(urlAt(folder.write("note.jpg", "a text")).get()));
    EXPECT_FALSE(imagePropertiesAt(urlAt(folder.at("missing.jpg")).get()));
    EXPECT_FALSE(imagePropertiesAt(urlAt(folder.path()).get()));
    EXPECT_FALSE(imagePropertiesAt(nullptr));
}

}  // namespace fi::test

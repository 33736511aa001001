// SPDX-License-Identifier: Apache-2.0
// Files read into blocks that the caller frees, and what the headers of image files tell, through the
// exported functions.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "FileImporter/CFileImporterCocoa.h"
#include "Foundation/HeaderBytes.h"
#include "Foundation/TestText.h"
#include "PlatformKit/Base/ImplicitPool.h"
#include "PlatformKit/ImageProperties.h"
#include "PlatformKit/Number.h"
#include "Support/ScopedFaults.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

constexpr uint32_t kUntouched = 4711;

/// A block that must go back to the system's allocator.
struct Block {
    std::unique_ptr<char, decltype(&std::free)> bytes{nullptr, &std::free};
    uint32_t size = kUntouched;

    [[nodiscard]] std::string_view view() const {
        return bytes ? std::string_view(bytes.get(), size) : std::string_view("(null)");
    }
};

enum class Limit : uint8_t { No = 0, Yes = 1 };

Block blockOf(const std::string& path, Limit limit) {
    Block block;
    block.bytes.reset(static_cast<char*>(
        ReadFileAtURLCocoaWithLimit(urlAt(path).get(), &block.size, static_cast<uint8_t>(limit))));
    return block;
}

Block headOf(const std::string& path) {
    Block block;
    block.bytes.reset(static_cast<char*>(ReadFileAtURLCocoa(urlAt(path).get(), &block.size)));
    return block;
}

std::string patterned(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    return bytes;
}

}  // namespace

TEST(FileReadTest, ReadsAHeadOf65567Bytes) {
    const TemporaryFolder folder;
    const std::string bytes = patterned(65568);
    const Block whole = headOf(folder.write("a.jpg", bytes.substr(0, 65567)));
    EXPECT_EQ(whole.size, 65567U);
    EXPECT_TRUE(whole.view() == bytes.substr(0, 65567));
    const Block cut = headOf(folder.write("b.jpg", bytes));
    EXPECT_EQ(cut.size, 65567U);
    EXPECT_TRUE(cut.view() == bytes.substr(0, 65567));
}

TEST(FileReadTest, TheLimitIsAChoice) {
    const TemporaryFolder folder;
    const std::string bytes = patterned(100'000);
    const std::string path = folder.write("photo.jpg", bytes);
    const Block whole = blockOf(path, Limit::No);
    EXPECT_EQ(whole.size, 100'000U);
    EXPECT_TRUE(whole.view() == bytes);
    const Block head = blockOf(path, Limit::Yes);
    EXPECT_EQ(head.size, 65567U);
    EXPECT_TRUE(head.view() == bytes.substr(0, 65567));
}

TEST(FileReadTest, WhatCannotBeReadGivesNoBlockAndNoSize) {
    const TemporaryFolder folder;
    for (const std::string& path : {folder.at("missing.jpg"), folder.write("empty.jpg", ""), folder.path(),
                                    folder.write("album.qal", "bytes")}) {
        for (const Limit limit : {Limit::No, Limit::Yes}) {
            const Block block = blockOf(path, limit);
            EXPECT_FALSE(block.bytes) << path;
            EXPECT_EQ(block.size, kUntouched) << path;
        }
    }
    uint32_t size = kUntouched;
    EXPECT_EQ(ReadFileAtURLCocoa(nullptr, &size), nullptr);
    EXPECT_EQ(ReadFileAtURLCocoa(urlWithoutPath().get(), &size), nullptr);
    EXPECT_EQ(ReadFileAtURLCocoaWithLimit(nullptr, &size, 0), nullptr);
    EXPECT_EQ(size, kUntouched);
}

TEST(FileReadTest, TheSizeNeedNotBeTaken) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("photo.jpg", "bytes"));
    const std::unique_ptr<void, decltype(&std::free)> block(ReadFileAtURLCocoa(url.get(), nullptr),
                                                            &std::free);
    ASSERT_TRUE(block);
    EXPECT_EQ(std::memcmp(block.get(), "bytes", 5), 0);
    EXPECT_EQ(ReadFileAtURLCocoa(nullptr, nullptr), nullptr);
}

TEST(FileReadTest, FewerBytesThanAnnouncedMakeTheWholeFileBeReadAgain) {
    const TemporaryFolder folder;
    const std::string bytes = patterned(100'000);
    const std::string path = folder.write("photo.jpg", bytes);
    const ScopedFaults faults{Fault::ShortRead};
    for (const Limit limit : {Limit::No, Limit::Yes}) {
        const Block block = blockOf(path, limit);
        EXPECT_EQ(block.size, 100'000U);
        EXPECT_TRUE(block.view() == bytes);
    }
}

TEST(FileReadTest, FilesOfTheSystemThatAnnounceMoreThanTheyHoldAreReadWhole) {
    const std::string path = "/sys/kernel/mm/transparent_hugepage/enabled";
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) GTEST_SKIP() << "there is no " << path;
    const std::string bytes = readFile(path);
    ASSERT_LT(bytes.size(), static_cast<size_t>(status.st_size));
    EXPECT_EQ(headOf(path).view(), bytes);
}

TEST(FileReadTest, WithoutTheSecondReadThereIsNoBlockAndNoSize) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", patterned(1000));
    const ScopedFaults faults{Fault::ShortRead, Fault::WholeRead};
    const Block block = blockOf(path, Limit::Yes);
    EXPECT_FALSE(block.bytes);
    EXPECT_EQ(block.size, kUntouched);
}

TEST(FileReadTest, WithoutMemoryThereIsNoBlockButTheSize) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", patterned(1000));
    const ScopedFaults faults{Fault::Allocation};
    const Block block = blockOf(path, Limit::Yes);
    EXPECT_FALSE(block.bytes);
    EXPECT_EQ(block.size, 1000U);
}

TEST(FileReadTest, NothingIsLeftInTheCallersPool) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", patterned(1000));
    const size_t waiting = autoreleasedObjects();
    (void)headOf(path);
    EXPECT_EQ(autoreleasedObjects(), waiting);
    const ScopedFaults faults{Fault::ShortRead};
    (void)blockOf(path, Limit::No);
    (void)blockOf(folder.at("missing.jpg"), Limit::No);
    EXPECT_EQ(autoreleasedObjects(), waiting);
}

TEST(FileReadTest, BoundsAreThoseOfTheStoredPixels) {
    const TemporaryFolder folder;
    const HeaderFacts facts = {.width = 640, .height = 480, .dotsPerInch = 300};
    for (const std::string& path :
         {folder.write("photo.jpg", jpegWith(facts)), folder.write("photo.tif", tiffWith(facts))})
        EXPECT_EQ(GetFileBoundsAtURLCocoa(urlAt(path).get()), (Rect{0, 0, 480, 640})) << path;
}

TEST(FileReadTest, WhatIsNoImageHasNoBounds) {
    const TemporaryFolder folder;
    EXPECT_EQ(GetFileBoundsAtURLCocoa(nullptr), Rect{});
    EXPECT_EQ(GetFileBoundsAtURLCocoa(urlWithoutPath().get()), Rect{});
    EXPECT_EQ(GetFileBoundsAtURLCocoa(urlAt(folder.write("note.txt", "a text")).get()), Rect{});
    EXPECT_EQ(GetFileBoundsAtURLCocoa(urlAt(folder.at("missing.jpg")).get()), Rect{});
}

TEST(FileReadTest, BoundsWrapAt16Bits) {
    const TemporaryFolder folder;
    const std::string path = folder.write("wide.jpg", jpegWith({.width = 40000, .height = 8}));
    EXPECT_EQ(GetFileBoundsAtURLCocoa(urlAt(path).get()), (Rect{0, 0, 8, -25536}));
}

TEST(FileReadTest, DepthIsToldByURL) {
    const TemporaryFolder folder;
    int32_t depth = -1;
    EXPECT_EQ(imageDepthAtPathCocoa(nullptr, &depth), -43);
    EXPECT_EQ(imageDepthAtPathCocoa(urlAt(folder.write("note.jpg", "a text")).get(), &depth), -43);
    EXPECT_EQ(imageDepthAtPathCocoa(urlWithoutPath().get(), &depth), -43);
    EXPECT_EQ(depth, -1);
    const std::string path = folder.write("photo.tif", tiffWith({.components = 3, .bitsPerComponent = 16}));
    EXPECT_EQ(imageDepthAtPathCocoa(urlAt(path).get(), &depth), 0);
    EXPECT_EQ(depth, 48);
}

TEST(FileReadTest, WithoutAnImageLoaderNoImageIsRead) {
    const TemporaryFolder folder;
    EXPECT_EQ(NSImageRead(nullptr, 120), nullptr);
    EXPECT_EQ(NSImageRead(urlAt(folder.write("photo.jpg", jpegWith({}))).get(), 120), nullptr);
}

TEST(FileReadTest, PropertiesOfTheFirstImageBelongToTheCaller) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", jpegWith({.width = 640, .height = 480}));
    const size_t waiting = autoreleasedObjects();
    const auto properties = adopt(GetUserDataAtPath(text(path).get()));
    ASSERT_TRUE(properties);
    EXPECT_EQ(properties->retainCount(), 1U);
    EXPECT_EQ(autoreleasedObjects(), waiting);
    const auto* width = properties->value<CFNumber>(kCGImagePropertyPixelWidth);
    ASSERT_NE(width, nullptr);
    EXPECT_EQ(width->int32Value(), 640);
}

TEST(FileReadTest, WhatIsNoImageHasNoProperties) {
    const TemporaryFolder folder;
    EXPECT_EQ(GetUserDataAtPath(nullptr), nullptr);
    EXPECT_EQ(GetUserDataAtPath(text("").get()), nullptr);
    EXPECT_EQ(GetUserDataAtPath(text(folder.at("missing.jpg")).get()), nullptr);
    EXPECT_EQ(GetUserDataAtPath(text(folder.write("note.jpg", "a text")).get()), nullptr);
}

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// Files read into handles.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "Foundation/TestText.h"
#include "ImageMetadata/QuickReaders.h"
#include "Support/Privileges.h"
#include "Support/ScopedFaults.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

/// A handle that goes back, and the code that came with it.
struct Held {
    Handle handle = nullptr;
    int32_t got = -1;
    OSErr code = 1;

    Held() = default;
    ~Held() { DisposeHandle(handle); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

    [[nodiscard]] std::string_view bytes() const {
        return handle != nullptr ? std::string_view(*handle, GetHandleSize(handle))
                                 : std::string_view("(null)");
    }
};

char* g_somewhere = nullptr;

void readInto(Held& held, CFURLRef url) {
    held.handle = &g_somewhere;
    held.code = readDataHandle(url, &held.handle);
}

void readInto(Held& held, CFURLRef url, int32_t offset, int32_t length) {
    held.handle = &g_somewhere;
    held.code = readDataHandleOffset(url, &held.handle, offset, length, &held.got);
}

std::string patterned(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    return bytes;
}

void expectFailure(const std::string& path, OSErr code) {
    Held held;
    readInto(held, urlAt(path).get());
    EXPECT_EQ(held.code, code) << path;
    EXPECT_EQ(held.handle, nullptr) << path;
}

void expectPart(const std::string& path, int32_t offset, int32_t length, std::string_view part) {
    Held held;
    readInto(held, urlAt(path).get(), offset, length);
    EXPECT_EQ(held.code, 0) << offset << ' ' << length;
    EXPECT_TRUE(held.bytes() == part) << offset << ' ' << length;
    EXPECT_EQ(held.got, static_cast<int32_t>(part.size())) << offset << ' ' << length;
}

void expectNoPart(const std::string& path, int32_t offset, int32_t length, OSErr code) {
    Held held;
    readInto(held, urlAt(path).get(), offset, length);
    EXPECT_EQ(held.code, code) << path << ' ' << offset;
    EXPECT_EQ(held.handle, nullptr) << path << ' ' << offset;
    EXPECT_EQ(held.got, 0) << path << ' ' << offset;
}

}  // namespace

TEST(DataHandleTest, AHandleHoldsTheFile) {
    const TemporaryFolder folder;
    const std::string bytes = patterned(4000);
    const std::string path = folder.write("a.jpg", bytes);
    for (const std::string& way : {path, folder.link("link.jpg", path)}) {
        Held held;
        readInto(held, urlAt(way).get());
        EXPECT_EQ(held.code, 0);
        EXPECT_TRUE(held.bytes() == bytes);
    }
}

TEST(DataHandleTest, AHandleHoldsTheHeadOfALongFile) {
    const TemporaryFolder folder;
    const std::string bytes = patterned(65568);
    Held held;
    readInto(held, urlAt(folder.write("a.jpg", bytes)).get());
    EXPECT_EQ(held.code, 0);
    EXPECT_TRUE(held.bytes() == std::string_view(bytes).substr(0, 65567));
}

TEST(DataHandleTest, AnEmptyFileIsNotFound) {
    const TemporaryFolder folder;
    const std::string path = folder.write("empty.jpg", "");
    expectFailure(path, -43);
    expectFailure(folder.link("link.jpg", path), -43);
}

TEST(DataHandleTest, WhatCannotBeReadIsAMemoryFailure) {
    const TemporaryFolder folder;
    expectFailure(folder.at("missing.jpg"), -108);
    expectFailure(folder.makeFolder("folder.jpg"), -108);
    expectFailure(folder.write("album.qal", "bytes"), -108);
    expectFailure(folder.link("dangling.jpg", "nowhere"), -108);
    const auto withoutPath = urlWithoutPath();
    for (const CFURLRef url : {CFURLRef{nullptr}, CFURLRef{withoutPath.get()}}) {
        Held held;
        readInto(held, url);
        EXPECT_EQ(held.code, -108);
        EXPECT_EQ(held.handle, nullptr);
    }
}

TEST(DataHandleTest, AFileThatMayNotBeReadIsAMemoryFailure) {
    const TemporaryFolder folder;
    const std::string path = folder.write("secret.jpg", "bytes");
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    const OrdinaryUser user;
    expectFailure(path, -108);
    expectNoPart(path, 0, 5, -108);
}

TEST(DataHandleTest, APipeAnswersAtOnce) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.at("pipe.jpg").c_str(), 0600), 0);
    Held held;
    readInto(held, urlAt(folder.at("pipe.jpg")).get());
    EXPECT_EQ(held.code, -43) << "nothing is in it";
    EXPECT_EQ(held.handle, nullptr);
    expectNoPart(folder.at("pipe.jpg"), 0, 5, -108);
    expectNoPart("/dev/zero", 0, 5, -108);
}

TEST(DataHandleTest, WithoutMemoryThereIsNoHandle) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.jpg", "bytes");
    const ScopedFaults faults{Fault::Allocation};
    expectFailure(path, -108);
    expectNoPart(path, 0, 5, -108);
}

TEST(DataHandleTest, APartIsAsLongAsWantedOrAsTheFileHas) {
    const TemporaryFolder folder;
    const std::string bytes = patterned(1000);
    const std::string path = folder.write("a.jpg", bytes);
    const std::string_view view = bytes;
    expectPart(path, 0, 10, view.substr(0, 10));
    expectPart(path, 0, 1000, view);
    expectPart(path, 0, 1001, view);
    expectPart(path, 990, 10, view.substr(990));
    expectPart(path, 990, 11, view.substr(990));
    expectPart(path, 999, 0x7FFFFFFF, view.substr(999));
    expectPart(path, 500, 0, "");
    expectPart(path, 500, -1, view.substr(500));
}

TEST(DataHandleTest, APartMayLieBehindTheHead) {
    const TemporaryFolder folder;
    const std::string bytes = patterned(200'000);
    const std::string path = folder.write("a.jpg", bytes);
    expectPart(path, 65560, 20, std::string_view(bytes).substr(65560, 20));
    expectPart(path, 65567, 20480, std::string_view(bytes).substr(65567, 20480));
    expectPart(path, 199'000, 20480, std::string_view(bytes).substr(199'000));
}

TEST(DataHandleTest, APartAtTheEndIsEmptyAndOneBehindItIsRefused) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.jpg", patterned(1000));
    expectPart(path, 1000, 10, "");
    expectNoPart(path, 1001, 10, -108);
    expectNoPart(path, 65568, 10, -108);
    expectNoPart(path, 0x7FFFFFFF, 0x7FFFFFFF, -108);
    const std::string empty = folder.write("empty.jpg", "");
    expectPart(empty, 0, 10, "");
    expectNoPart(empty, 1, 10, -108);
}

TEST(DataHandleTest, ANegativeOffsetIsABadArgument) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.jpg", patterned(1000));
    expectNoPart(path, -1, 10, -50);
    expectNoPart(path, -1000, 10, -50);
    expectNoPart(path, INT32_MIN, 10, -50);
    expectNoPart(folder.write("empty.jpg", ""), -1, 10, -50);
}

TEST(DataHandleTest, ANegativeOffsetThatLiesInAHugeFileIsRefusedAllTheSame) {
    const TemporaryFolder folder;
    const std::string path = folder.write("huge.jpg", "start");
    if (truncate(path.c_str(), 0xC0000000) != 0) GTEST_SKIP() << "no room for a sparse file of 3 GiB";
    expectNoPart(path, static_cast<int32_t>(0xBFFFFFFF), 10, -108);
    expectNoPart(path, static_cast<int32_t>(0xC0000000), 10, -108);
    expectNoPart(path, static_cast<int32_t>(0xC0000001), 10, -50);
    expectPart(path, 0x7FFFFFF0, 10, std::string(10, '\0'));
}

TEST(DataHandleTest, APartOfWhatCannotBeReadIsAMemoryFailure) {
    const TemporaryFolder folder;
    expectNoPart(folder.at("missing.jpg"), 0, 10, -108);
    expectNoPart(folder.makeFolder("folder.jpg"), 0, 10, -108);
    expectNoPart(folder.write("album.qal", "bytes"), 0, 10, -108);
    Held held;
    readInto(held, nullptr, 0, 10);
    EXPECT_EQ(held.code, -108);
    EXPECT_EQ(held.handle, nullptr);
}

TEST(DataHandleTest, APartThatComesShortIsAMemoryFailure) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.jpg", "bytes");
    const ScopedFaults faults{Fault::ShortRead};
    expectNoPart(path, 0, 5, -108);
}

}  // namespace fi::test

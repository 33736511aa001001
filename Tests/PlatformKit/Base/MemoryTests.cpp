// SPDX-License-Identifier: Apache-2.0
// Memory blocks behind handles.
#include "PlatformKit/Memory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string_view>

namespace fi::test {

namespace {

TEST(Memory, HandleKnowsTheSizeOfItsBlock) {
    for (const size_t size : {size_t{0}, size_t{1}, size_t{100000}}) {
        const Handle handle = NewHandle(size);
        ASSERT_NE(handle, nullptr);
        ASSERT_NE(*handle, nullptr) << "also an empty block has a place";
        EXPECT_EQ(GetHandleSize(handle), size);
        std::memset(*handle, 7, size);
        DisposeHandle(handle);
    }
}

TEST(Memory, NullIsAllowed) {
    DisposeHandle(nullptr);
    EXPECT_EQ(GetHandleSize(nullptr), 0U);
}

TEST(Memory, HandleOfBytesIsACopy) {
    char bytes[] = "bytes";
    Handle handle = nullptr;
    EXPECT_EQ(PtrToHand(bytes, &handle, 5), 0);
    bytes[0] = 'x';
    EXPECT_EQ(std::string_view(*handle, GetHandleSize(handle)), "bytes");
    DisposeHandle(handle);
}

TEST(Memory, HandleOfNothingIsEmpty) {
    Handle handle = nullptr;
    EXPECT_EQ(PtrToHand(nullptr, &handle, 0), 0);
    EXPECT_EQ(GetHandleSize(handle), 0U);
    DisposeHandle(handle);
}

TEST(Memory, WithoutMemoryThereIsNoHandle) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer ends the process at an impossible allocation";
#endif
    volatile size_t impossible = SIZE_MAX / 2;
    EXPECT_EQ(NewHandle(impossible), nullptr);
    char byte = 0;
    char* block = &byte;
    Handle handle = &block;
    EXPECT_EQ(PtrToHand(&byte, &handle, impossible), -108);
    EXPECT_EQ(handle, nullptr);
}

}  // namespace

}  // namespace fi::test

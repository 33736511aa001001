// SPDX-License-Identifier: Apache-2.0
// Reference counts, constants and identity.
#include "PlatformKit/Object.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "PlatformKit/Base/CountedObject.h"
#include "PlatformKit/String.h"

namespace fi::test {

namespace {

constinit StringConstant kConstant("constant");

TEST(Object, NewObjectBelongsToItsMakerAndEndsWithTheLastRelease) {
    bool ended = false;
    const auto* object = new CountedObject([&] { ended = true; });
    EXPECT_EQ(object->retainCount(), 1U);
    object->retain();
    EXPECT_EQ(object->retainCount(), 2U);
    object->release();
    EXPECT_EQ(object->retainCount(), 1U);
    EXPECT_FALSE(ended);
    object->release();
    EXPECT_TRUE(ended);
}

TEST(Object, ConstantsAreNeverCounted) {
    const CFStringRef constant = kConstant.ref();
    const uint32_t count = constant->retainCount();
    EXPECT_GE(count, 0x8000'0000U);
    for (int i = 0; i < 3; ++i)
        constant->release();
    for (int i = 0; i < 5; ++i)
        constant->retain();
    EXPECT_EQ(constant->retainCount(), count);
    EXPECT_EQ(constant->view(), "constant");
}

TEST(Object, CountsOfManyThreadsAreNotLost) {
    bool ended = false;
    const auto* object = new CountedObject([&] { ended = true; });
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([object] {
            for (int i = 0; i < 10000; ++i) {
                object->retain();
                object->release();
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(object->retainCount(), 1U);
    object->release();
    EXPECT_TRUE(ended);
}

TEST(Object, WhoeverReleasesLastSeesWhatTheOthersWrote) {
    for (int round = 0; round < 100; ++round) {
        int written = 0;
        int seen = 0;
        const auto* object = new CountedObject([&] { seen = written; });
        object->retain();
        std::thread worker([&] {
            written = 1;
            object->release();
        });
        object->release();
        worker.join();
        EXPECT_EQ(seen, 1);
    }
}

TEST(Object, EqualityIsIdentityUnlessAClassSaysOtherwise) {
    const auto* a = new CountedObject;
    const auto* b = new CountedObject;
    EXPECT_TRUE(a->isEqual(a));
    EXPECT_FALSE(a->isEqual(b));
    EXPECT_FALSE(a->isEqual(nullptr));
    EXPECT_EQ(a->hash(), a->hash());
    a->release();
    b->release();
}

TEST(Object, FunctionsOnReferencesTakeNull) {
    EXPECT_EQ(CFRetain(static_cast<const NSObject*>(nullptr)), nullptr);
    CFRelease(nullptr);
    EXPECT_TRUE(CFEqual(nullptr, nullptr));
    EXPECT_FALSE(CFEqual(kConstant.ref(), nullptr));
    EXPECT_FALSE(CFEqual(nullptr, kConstant.ref()));
    EXPECT_TRUE(CFEqual(kConstant.ref(), CFString::create("constant").get()));
}

}  // namespace

}  // namespace fi::test

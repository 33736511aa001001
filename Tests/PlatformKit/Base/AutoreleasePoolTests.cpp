// SPDX-License-Identifier: Apache-2.0
// Pools: youngest first, nested, implicit, one set for each thread.
#include "PlatformKit/AutoreleasePool.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "PlatformKit/Base/CountedObject.h"
#include "PlatformKit/Base/ImplicitPool.h"

namespace fi::test {

namespace {

/// Autoreleases an object that adds its letter to `order` when it ends.
void giveAway(std::string& order, char letter) {
    autorelease(new CountedObject([&order, letter] { order += letter; }));
}

TEST(AutoreleasePool, ReleasesTheYoungestFirst) {
    std::string order;
    {
        const AutoreleasePool pool;
        for (const char letter : {'a', 'b', 'c'})
            giveAway(order, letter);
        EXPECT_EQ(order, "");
        EXPECT_EQ(autoreleasedObjects(), 3U);
    }
    EXPECT_EQ(order, "cba");
    EXPECT_EQ(autoreleasedObjects(), 0U);
}

TEST(AutoreleasePool, NestedPoolDrainsItsOwnObjectsOnly) {
    std::string order;
    const AutoreleasePool outer;
    giveAway(order, 'a');
    {
        const AutoreleasePool inner;
        giveAway(order, 'b');
    }
    EXPECT_EQ(order, "b");
    giveAway(order, 'c');
    {
        const AutoreleasePool inner;
        giveAway(order, 'd');
        drainImplicitPool();
        EXPECT_EQ(order, "b") << "there is no implicit pool inside of a pool";
    }
    EXPECT_EQ(order, "bd");
}

TEST(AutoreleasePool, ObjectsGivenAwayWhileDrainingAreReleasedToo) {
    std::string order;
    {
        const AutoreleasePool pool;
        giveAway(order, 'a');
        autorelease(new CountedObject([&] {
            order += 'b';
            giveAway(order, 'c');
        }));
    }
    EXPECT_EQ(order, "bca");
}

TEST(AutoreleasePool, SameObjectMayWaitSeveralTimes) {
    bool ended = false;
    auto* object = new CountedObject([&] { ended = true; });
    {
        const AutoreleasePool pool;
        autorelease(object);
        object->retain();
        autorelease(object);
        EXPECT_EQ(object->retainCount(), 2U);
    }
    EXPECT_TRUE(ended);
}

TEST(AutoreleasePool, NullIsAllowed) {
    EXPECT_EQ(autorelease(static_cast<CountedObject*>(nullptr)), nullptr);
    EXPECT_EQ(autoreleasedObjects(), 0U);
}

TEST(AutoreleasePool, ThreadWithoutAPoolHasAnImplicitOne) {
    std::string order;
    giveAway(order, 'a');
    EXPECT_EQ(order, "");
    drainImplicitPool();
    EXPECT_EQ(order, "a");
}

TEST(AutoreleasePool, ImplicitPoolDrainsWhenItsThreadEnds) {
    std::string order;
    std::thread([&] {
        giveAway(order, 'a');
        giveAway(order, 'b');
    }).join();
    EXPECT_EQ(order, "ba");
}

TEST(AutoreleasePool, ThreadsDoNotShareTheirPools) {
    std::string order;
    const AutoreleasePool mine;
    giveAway(order, 'a');
    std::thread([&] {
        EXPECT_EQ(autoreleasedObjects(), 0U);
        const AutoreleasePool pool;
        giveAway(order, 'b');
    }).join();
    EXPECT_EQ(order, "b");
    EXPECT_EQ(autoreleasedObjects(), 1U);
}

TEST(AutoreleasePool, DestructorsOfEndingThreadsMayStillGiveObjectsAway) {
    struct Late {
        std::string* order = nullptr;
        const NSObject* kept = nullptr;
        ~Late() {
            if (order == nullptr) return;
            autoreleaseObject(kept);
            const AutoreleasePool pool;
            *order += 'l';
        }
    };
    std::string order;
    const auto* object = new CountedObject([&order] { order += 'x'; });
    std::thread([&] {
        // Made before the thread's list of waiting objects, so it ends after it.
        thread_local Late late;
        late.order = &order;
        late.kept = object;
        giveAway(order, 'a');
    }).join();
    EXPECT_EQ(order, "al") << "an object that nobody can drain any more stays";
    object->release();
    EXPECT_EQ(order, "alx");
}

}  // namespace

}  // namespace fi::test

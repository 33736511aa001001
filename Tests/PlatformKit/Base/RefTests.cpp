// SPDX-License-Identifier: Apache-2.0
// The handle: what each way of making, passing and ending it does to the count.
#include "PlatformKit/Ref.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "PlatformKit/Base/CountedObject.h"

namespace fi::test {

namespace {

class Derived final : public CountedObject {
public:
    using CountedObject::CountedObject;
};

static_assert(!std::is_convertible_v<CountedObject*, Ref<CountedObject>>,
              "adopted or retained, never guessed");
static_assert(!std::is_constructible_v<Ref<CountedObject>, CountedObject*>);
static_assert(std::is_convertible_v<Ref<Derived>, Ref<const NSObject>>);
static_assert(!std::is_convertible_v<Ref<const NSObject>, Ref<NSObject>>);
static_assert(std::is_nothrow_move_constructible_v<Ref<Derived>>);
static_assert(sizeof(Ref<Derived>) == sizeof(void*));

TEST(Ref, AdoptingTakesTheReferenceOver) {
    auto* object = new CountedObject;
    const auto handle = adopt(object);
    EXPECT_EQ(object->retainCount(), 1U);
    EXPECT_EQ(handle.get(), object);
}

TEST(Ref, RetainingTakesAReferenceOfItsOwn) {
    const auto owner = make<CountedObject>();
    {
        const auto second = retain(owner.get());
        EXPECT_EQ(owner->retainCount(), 2U);
    }
    EXPECT_EQ(owner->retainCount(), 1U);
    EXPECT_FALSE(retain(static_cast<CountedObject*>(nullptr)));
}

TEST(Ref, CopyCountsAndMoveDoesNot) {
    auto first = make<CountedObject>();
    const auto copy = first;
    EXPECT_EQ(first->retainCount(), 2U);
    const auto moved = std::move(first);
    EXPECT_EQ(moved->retainCount(), 2U);
    EXPECT_EQ(moved, copy);
}

TEST(Ref, AssignmentReleasesWhatWasHeld) {
    bool ended = false;
    auto handle = make<CountedObject>([&] { ended = true; });
    handle = make<CountedObject>();
    EXPECT_TRUE(ended);
    const auto& same = handle;
    handle = same;
    EXPECT_EQ(handle->retainCount(), 1U);
    handle = nullptr;
    EXPECT_FALSE(handle);
}

TEST(Ref, ConvertsToHandlesOfABase) {
    auto derived = make<Derived>();
    const Ref<const NSObject> base = derived;
    EXPECT_EQ(derived->retainCount(), 2U);
    const Ref<const CountedObject> moved = std::move(derived);
    EXPECT_EQ(base->retainCount(), 2U);
}

TEST(Ref, HandingOverLeavesTheReferenceToTheCaller) {
    auto handle = make<CountedObject>();
    auto* object = handle.handOver();
    EXPECT_FALSE(handle);
    EXPECT_EQ(object->retainCount(), 1U);
    object->release();
}

TEST(Ref, AutoreleasedLivesUntilThePoolDrains) {
    bool ended = false;
    {
        const AutoreleasePool pool;
        const auto* object = make<CountedObject>([&] { ended = true; }).autoreleased();
        EXPECT_EQ(object->retainCount(), 1U);
        EXPECT_FALSE(ended);
    }
    EXPECT_TRUE(ended);
}

}  // namespace

}  // namespace fi::test

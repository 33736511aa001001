// SPDX-License-Identifier: Apache-2.0
// Lists of objects, fixed and changing.
#include "PlatformKit/Array.h"

#include <gtest/gtest.h>

#include "PlatformKit/Base/CountedObject.h"
#include "PlatformKit/Number.h"
#include "PlatformKit/String.h"

namespace fi::test {

namespace {

Ref<const CFArray> words() {
    return CFArray::create({CFString::create("a"), CFString::create("b")});
}

TEST(Array, HoldsAReferenceToEachElement) {
    const auto object = make<CountedObject>();
    {
        const auto array = CFArray::create({object, object});
        EXPECT_EQ(object->retainCount(), 3U);
        EXPECT_EQ(array->at(1), object.get());
        EXPECT_EQ(object->retainCount(), 3U) << "what at() gives is borrowed";
    }
    EXPECT_EQ(object->retainCount(), 1U);
}

TEST(Array, AnswersNullBeyondTheEndAndForAnotherType) {
    const auto array = words();
    EXPECT_EQ(array->count(), 2U);
    EXPECT_EQ(array->at<CFString>(1)->view(), "b");
    EXPECT_EQ(array->at<CFNumber>(1), nullptr);
    EXPECT_EQ(array->at(2), nullptr);
    EXPECT_EQ(array->at(SIZE_MAX), nullptr);
}

TEST(Array, EqualityIsThatOfTheElementsInOrder) {
    EXPECT_TRUE(words()->isEqual(words().get()));
    EXPECT_EQ(words()->hash(), words()->hash());
    EXPECT_FALSE(words()->isEqual(CFArray::create({CFString::create("b"), CFString::create("a")}).get()));
    EXPECT_FALSE(words()->isEqual(CFArray::create({CFString::create("a")}).get()));
    EXPECT_FALSE(words()->isEqual(nullptr));
    EXPECT_TRUE(words()->isEqual(NSMutableArray::createCopy(*words()).get()));
}

TEST(Array, MutableListChangesInPlace) {
    const auto list = NSMutableArray::create();
    EXPECT_EQ(list->count(), 0U);
    for (const char* text : {"a", "b", "c"})
        list->append(CFString::create(text));
    list->replaceAt(0, CFString::create("x"));
    list->removeAt(1);
    ASSERT_EQ(list->count(), 2U);
    EXPECT_EQ(list->at<CFString>(0)->view(), "x");
    EXPECT_EQ(list->at<CFString>(1)->view(), "c");
    list->removeAll();
    EXPECT_EQ(list->count(), 0U);
}

TEST(Array, ChangesBeyondTheEndDoNothing) {
    const auto list = NSMutableArray::createCopy(*words());
    list->replaceAt(2, CFString::create("x"));
    list->removeAt(2);
    list->removeAt(SIZE_MAX);
    EXPECT_TRUE(list->isEqual(words().get()));
}

TEST(Array, RemovedAndReplacedElementsAreReleased) {
    const auto object = make<CountedObject>();
    const auto list = NSMutableArray::create();
    list->append(object);
    list->append(object);
    list->replaceAt(0, CFString::create("x"));
    EXPECT_EQ(object->retainCount(), 2U);
    list->removeAt(1);
    EXPECT_EQ(object->retainCount(), 1U);
}

TEST(Array, CopyDoesNotFollowTheOriginal) {
    const auto original = NSMutableArray::createCopy(*words());
    const auto copy = NSMutableArray::createCopy(*original);
    original->removeAll();
    EXPECT_EQ(copy->count(), 2U);
}

}  // namespace

}  // namespace fi::test

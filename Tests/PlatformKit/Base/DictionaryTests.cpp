// SPDX-License-Identifier: Apache-2.0
// Objects by name, also while two threads work on them.
#include "PlatformKit/Dictionary.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <random>
#include <thread>

#include "PlatformKit/Base/CountedObject.h"
#include "PlatformKit/Number.h"

namespace fi::test {

namespace {

Ref<const CFNumber> number(int64_t value) {
    return CFNumber::create(value);
}

Ref<const CFDictionary> twoEntries() {
    CFDictionary::Entries entries;
    entries.emplace(CFString::create("a"), number(1));
    entries.emplace(CFString::create("b"), CFString::create("text"));
    return CFDictionary::create(std::move(entries));
}

TEST(Dictionary, FindsValuesByTextAndByString) {
    const auto dictionary = twoEntries();
    EXPECT_EQ(dictionary->count(), 2U);
    EXPECT_EQ(dictionary->value<CFNumber>("a")->int64Value(), 1);
    EXPECT_EQ(dictionary->value<CFString>(CFString::create("b").get())->view(), "text");
    EXPECT_EQ(dictionary->value("c"), nullptr);
    EXPECT_EQ(dictionary->value<CFString>("a"), nullptr) << "of another type";
}

TEST(Dictionary, HoldsReferencesToKeysAndValues) {
    const auto key = CFString::create("key");
    const auto value = make<CountedObject>();
    {
        CFDictionary::Entries entries;
        entries.emplace(key, value);
        const auto dictionary = CFDictionary::create(std::move(entries));
        EXPECT_EQ(key->retainCount(), 2U);
        EXPECT_EQ(value->retainCount(), 2U);
        EXPECT_EQ(dictionary->copyValue("key")->retainCount(), 3U);
        EXPECT_EQ(dictionary->value("key")->retainCount(), 2U) << "borrowed";
    }
    EXPECT_EQ(key->retainCount(), 1U);
    EXPECT_EQ(value->retainCount(), 1U);
}

TEST(Dictionary, EqualityIsThatOfTheEntries) {
    const auto copy = NSMutableDictionary::createCopy(*twoEntries());
    EXPECT_TRUE(twoEntries()->isEqual(copy.get()));
    EXPECT_TRUE(copy->isEqual(twoEntries().get()));
    EXPECT_EQ(copy->hash(), twoEntries()->hash());
    copy->set("a", number(2));
    EXPECT_FALSE(twoEntries()->isEqual(copy.get()));
    copy->remove("a");
    EXPECT_FALSE(copy->isEqual(twoEntries().get()));
    EXPECT_FALSE(copy->isEqual(nullptr));
    EXPECT_FALSE(copy->isEqual(number(1).get()));
}

TEST(Dictionary, SetReplacesAndNullRemoves) {
    const auto dictionary = NSMutableDictionary::create();
    const auto first = make<CountedObject>();
    dictionary->set("a", first);
    EXPECT_EQ(first->retainCount(), 2U);
    dictionary->set("a", number(2));
    EXPECT_EQ(first->retainCount(), 1U);
    EXPECT_EQ(dictionary->count(), 1U);
    dictionary->set("a", nullptr);
    EXPECT_EQ(dictionary->count(), 0U);
    dictionary->remove("never there");
    dictionary->set("b", number(1));
    dictionary->removeAll();
    EXPECT_EQ(dictionary->count(), 0U);
}

TEST(Dictionary, SnapshotDoesNotFollowTheOriginal) {
    const auto dictionary = NSMutableDictionary::createCopy(*twoEntries());
    const auto entries = dictionary->copyEntries();
    dictionary->removeAll();
    EXPECT_EQ(entries.size(), 2U);
}

TEST(Dictionary, ValuesMayUseTheDictionaryWhileTheyEnd) {
    const auto dictionary = NSMutableDictionary::create();
    size_t seen = 0;
    const auto curious = [&] { return make<CountedObject>([&] { seen += 1 + dictionary->count(); }); };
    dictionary->set("a", curious());
    dictionary->set("a", number(1));
    EXPECT_EQ(seen, 2U);
    dictionary->set("a", curious());
    dictionary->remove("a");
    EXPECT_EQ(seen, 3U);
    dictionary->set("a", curious());
    dictionary->removeAll();
    EXPECT_EQ(seen, 4U);
}

TEST(Dictionary, AgreesWithASlowModel) {
    std::mt19937 random(3);
    const auto dictionary = NSMutableDictionary::create();
    std::map<std::string, int64_t> model;
    for (int64_t step = 0; step < 5000; ++step) {
        const std::string key = "key " + std::to_string(random() % 50);
        if (random() % 3 == 0) {
            dictionary->remove(key);
            model.erase(key);
        } else {
            dictionary->set(key, number(step));
            model[key] = step;
        }
        ASSERT_EQ(dictionary->count(), model.size());
    }
    for (const auto& [key, value] : model)
        EXPECT_EQ(dictionary->value<CFNumber>(key)->int64Value(), value);
}

TEST(Dictionary, TwoThreadsMayWriteAndReadAtTheSameTime) {
    const auto dictionary = NSMutableDictionary::create();
    dictionary->set("shared", number(0));
    std::atomic<bool> stop{false};
    std::thread reader([&] {
        int64_t last = 0;
        while (!stop) {
            const auto value = dictionary->copyValue("shared");
            const int64_t now = dynamic_cast<const CFNumber&>(*value).int64Value();
            EXPECT_GE(now, last);
            last = now;
            EXPECT_GE(dictionary->copyEntries().size(), 1U);
        }
    });
    std::thread other([&] {
        for (int i = 0; i < 2000; ++i) {
            dictionary->set("other", number(i));
            dictionary->remove("other");
        }
    });
    for (int64_t i = 1; i <= 2000; ++i)
        dictionary->set("shared", number(i));
    other.join();
    stop = true;
    reader.join();
    EXPECT_EQ(dictionary->count(), 1U);
}

}  // namespace

}  // namespace fi::test

// SPDX-License-Identifier: Apache-2.0
// The queue below the loop, where moments can be chosen exactly.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "PlatformKit/RunLoop/LoopSupport.h"
#include "PlatformKit/RunLoop/MainQueue.h"

namespace fi::test {

namespace {

using Clock = MainQueue::Clock;

/// Takes one turn.
void turn(MainQueue& queue) {
    const uint64_t mark = queue.beginTurn();
    while (const auto work = queue.next(mark))
        (*work)();
}

TEST(RunLoopQueue, EqualMomentsKeepTheOrderOfTheRequests) {
    MainQueue queue;
    const auto moment = Clock::now();
    std::vector<int> order;
    for (int i = 0; i < 100; ++i)
        queue.appendAt(moment, [&order, i] { order.push_back(i); });
    turn(queue);
    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(RunLoopQueue, AgreesWithASlowModel) {
    std::mt19937 random(7);
    MainQueue queue;
    const auto base = Clock::now() - std::chrono::seconds(10);
    std::vector<int> performed;
    std::vector<int> expected;
    for (int round = 0; round < 200; ++round) {
        std::vector<int> line;
        std::vector<std::pair<int, int>> later;
        for (int i = 0; i < 20; ++i) {
            const auto work = [&performed, i] { performed.push_back(i); };
            if (random() % 2 == 0) {
                queue.append(work);
                line.push_back(i);
            } else {
                const int moment = static_cast<int>(random() % 5);
                queue.appendAt(base + std::chrono::milliseconds(moment), work);
                later.emplace_back(moment, i);
            }
        }
        turn(queue);
        std::stable_sort(later.begin(), later.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        expected.insert(expected.end(), line.begin(), line.end());
        for (const auto& [moment, i] : later)
            expected.push_back(i);
    }
    EXPECT_EQ(performed, expected);
}

TEST(RunLoopQueue, MarkOfAnOuterTurnHoldsAfterAnInnerOne) {
    MainQueue queue;
    for (int i = 0; i < 3; ++i)
        queue.append([] {});
    const uint64_t outer = queue.beginTurn();
    EXPECT_TRUE(queue.next(outer));
    const uint64_t inner = queue.beginTurn();
    EXPECT_TRUE(queue.next(inner));
    EXPECT_TRUE(queue.next(inner));
    EXPECT_FALSE(queue.next(inner));
    queue.append([] {});
    EXPECT_FALSE(queue.next(outer)) << "came after the outer turn had begun";
    EXPECT_TRUE(queue.next(queue.beginTurn()));
}

TEST(RunLoopQueue, WaitEndsAtOnceWhenSomethingIsDue) {
    MainQueue queue;
    queue.append([] {});
    const auto start = Clock::now();
    queue.waitUntil(start + std::chrono::seconds(60));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(30));
}

TEST(RunLoopQueue, DescriptorMadeLateKnowsWhatWaits) {
    MainQueue queue;
    queue.append([] {});
    pollfd watched{queue.descriptor(), POLLIN, 0};
    EXPECT_EQ(::poll(&watched, 1, 0), 1);
    turn(queue);
    EXPECT_EQ(::poll(&watched, 1, 0), 0);

    MainQueue other;
    other.appendAt(Clock::now(), [] {});
    watched.fd = other.descriptor();
    EXPECT_EQ(::poll(&watched, 1, 1000), 1);
    turn(other);
    EXPECT_EQ(::poll(&watched, 1, 0), 0);
}

}  // namespace

}  // namespace fi::test

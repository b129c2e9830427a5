// SPDX-License-Identifier: Apache-2.0
#include "support/Queue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace nearcast {

namespace {

std::vector<int> contents(const Queue<int>& queue) {
    std::vector<int> result;
    for (const int sample : queue) result.push_back(sample);
    return result;
}

TEST(Queue, IsCreatedEmpty) {
    const auto queue = Queue<int>::queueWithSize(3);
    EXPECT_EQ(queue.count(), 0u);
    EXPECT_EQ(queue.maxCount(), 3u);
    EXPECT_EQ(queue.lastObject(), nullptr);
    EXPECT_EQ(contents(queue), std::vector<int>{});
}

TEST(Queue, HoldsSamplesOldestFirst) {
    Queue<int> queue(3);
    queue.enqueue(1);
    queue.enqueue(2);
    EXPECT_EQ(contents(queue), (std::vector<int>{1, 2}));
    EXPECT_EQ(queue[0], 1);
    EXPECT_EQ(queue[1], 2);
    EXPECT_EQ(*queue.lastObject(), 2);
}

TEST(Queue, DiscardsTheOldestOnlyWhenItIsFull) {
    Queue<int> queue(3);
    for (int sample = 1; sample <= 3; ++sample) queue.enqueue(sample);
    EXPECT_EQ(contents(queue), (std::vector<int>{1, 2, 3}));
    queue.enqueue(4);
    EXPECT_EQ(contents(queue), (std::vector<int>{2, 3, 4}));
    EXPECT_EQ(queue.count(), 3u);
}

class QueueOf : public testing::TestWithParam<int> {};

TEST_P(QueueOf, HoldsTheNewestOverManyRounds) {
    const int size = GetParam();
    Queue<int> queue(static_cast<std::uint64_t>(size));
    for (int sample = 0; sample < 4 * size + 1; ++sample) {
        queue.enqueue(sample);
        EXPECT_EQ(*queue.lastObject(), sample);
        EXPECT_EQ(queue[queue.count() - 1], sample);
        EXPECT_EQ(queue[0], sample < size ? 0 : sample - size + 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Capacities, QueueOf, testing::Values(1, 2, 7));

TEST(Queue, OfCapacityZeroStaysEmpty) {
    Queue<int> queue(0);
    queue.enqueue(1);
    EXPECT_EQ(queue.count(), 0u);
    EXPECT_EQ(queue.lastObject(), nullptr);
}

TEST(Queue, TakesNoMemoryForAHugeCapacity) {
    Queue<int> queue(std::numeric_limits<std::uint64_t>::max());
    queue.enqueue(1);
    EXPECT_EQ(contents(queue), std::vector<int>{1});
    EXPECT_EQ(queue.maxCount(), std::numeric_limits<std::uint64_t>::max());
}

TEST(Queue, IsAValueOfItsOwnWhenCopied) {
    Queue<std::string> queue(1);
    queue.enqueue("first");
    const Queue<std::string> copy = queue;
    queue.enqueue("second");
    EXPECT_EQ(*copy.lastObject(), "first");
}

}  // namespace

}  // namespace nearcast

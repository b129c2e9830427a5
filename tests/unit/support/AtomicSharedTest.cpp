// SPDX-License-Identifier: Apache-2.0
#include "support/AtomicShared.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <memory>
#include <thread>
#include <vector>

namespace nearcast {
namespace {

TEST(AtomicShared, BeginsEmptyAndHoldsWhatWasStoredLast) {
    AtomicShared<int> shared;
    EXPECT_EQ(shared.load(), nullptr);
    const auto one = std::make_shared<int>(1);
    shared.store(one);
    EXPECT_EQ(shared.load(), one);
    shared.store(nullptr);
    EXPECT_EQ(shared.load(), nullptr);
    EXPECT_EQ(one.use_count(), 1);
}

TEST(AtomicShared, IsEmptiedOnlyWhereItStillHoldsTheExpected) {
    AtomicShared<int> shared;
    const auto one = std::make_shared<int>(1);
    const auto two = std::make_shared<int>(1);
    shared.store(one);
    shared.clearIf(two);
    EXPECT_EQ(shared.load(), one);
    shared.clearIf(one);
    EXPECT_EQ(shared.load(), nullptr);
    EXPECT_EQ(one.use_count(), 1);
}

TEST(AtomicShared, DestroysAReplacedObjectThatUsesItAgain) {
    struct Reentrant {
        AtomicShared<Reentrant>* place;
        bool* destroyed;
        ~Reentrant() {
            *destroyed = place->load() == nullptr;  // would hang if the place were still held
        }
    };
    bool destroyed = false;
    AtomicShared<Reentrant> shared;
    shared.store(std::make_shared<Reentrant>(Reentrant{&shared, &destroyed}));
    destroyed = false;
    shared.store(nullptr);
    EXPECT_TRUE(destroyed);
    auto again = std::make_shared<Reentrant>(Reentrant{&shared, &destroyed});
    shared.store(again);
    destroyed = false;
    std::weak_ptr<Reentrant> watched = again;
    again.reset();
    shared.clearIf(watched.lock());
    EXPECT_TRUE(destroyed);
}

TEST(AtomicShared, WhatIsBorrowedLivesUntilItIsGivenBack) {
    AtomicShared<int> shared;
    auto object = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = object;
    shared.store(std::move(object));
    {
        const AtomicShared<int>::Borrowed first(shared);
        {
            const AtomicShared<int>::Borrowed second(shared);
            shared.store(std::make_shared<int>(2));
            EXPECT_EQ(*second.get(), 1);
        }
        EXPECT_FALSE(watched.expired());
        EXPECT_EQ(*first.get(), 1);
    }
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(*shared.load(), 2);
}

TEST(AtomicShared, ABorrowerThatReadsAnewSeesWhatWasStoredLastAndLetsGoOfTheOther) {
    AtomicShared<int> shared;
    AtomicShared<int>::Borrowed lent(shared);
    EXPECT_EQ(lent.get(), nullptr);
    auto object = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = object;
    shared.store(std::move(object));
    EXPECT_EQ(lent.get(), nullptr);
    lent.reload();
    EXPECT_EQ(*lent.get(), 1);
    shared.store(nullptr);
    EXPECT_FALSE(watched.expired());
    lent.reload();
    EXPECT_EQ(lent.get(), nullptr);
    EXPECT_TRUE(watched.expired());
    EXPECT_TRUE(shared.empty());
}

TEST(AtomicShared, ManyThreadsNeverSeeAnObjectThatIsGone) {
    struct Counted {
        explicit Counted(std::atomic<int>& alive) : alive_(alive) { ++alive_; }
        ~Counted() {
            value = 0;
            --alive_;
        }
        Counted(const Counted&) = delete;
        Counted& operator=(const Counted&) = delete;
        int value = 42;
        std::atomic<int>& alive_;
    };
    std::atomic<int> alive{0};
    std::atomic<int> wrong{0};
    {
        AtomicShared<Counted> shared;
        std::barrier start(4);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&, thread] {
                start.arrive_and_wait();
                for (int count = 0; count < 5000; ++count) {
                    if (thread == 0) shared.store(std::make_shared<Counted>(alive));
                    if (const auto seen = shared.load(); seen != nullptr && seen->value != 42) ++wrong;
                    AtomicShared<Counted>::Borrowed lent(shared);
                    if (lent.get() != nullptr && lent.get()->value != 42) ++wrong;
                    lent.reload();
                    if (lent.get() != nullptr && lent.get()->value != 42) ++wrong;
                    if (thread == 1) shared.clearIf(shared.load());
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace nearcast

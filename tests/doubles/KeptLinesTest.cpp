// SPDX-License-Identifier: Apache-2.0
#include "doubles/KeptLines.h"

#include <gtest/gtest.h>

#include <thread>

namespace nearcast {

namespace {

TEST(KeptLines, KeepsLinesInOrder) {
    KeptLines console;
    console.NSLog("first");
    console.NSLog("second");
    EXPECT_EQ(console.lines(), (std::vector<std::string>{"first", "second"}));
}

TEST(KeptLines, AwaitsLinesOfAnotherThread) {
    KeptLines console;
    std::thread other([&] { console.NSLog("late"); });
    console.await(1);
    EXPECT_EQ(console.lines().size(), 1u);
    other.join();
}

}  // namespace

}  // namespace nearcast

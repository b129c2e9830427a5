// SPDX-License-Identifier: Apache-2.0
#include "support/Holding.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace nearcast {
namespace {

using Texts = std::vector<std::string>;

class HoldingTest : public testing::Test {
protected:
    void say(const std::string& text) {
        Holding::afterwards([this, text] { said_.push_back(text); });
    }
    Texts said_;
};

TEST_F(HoldingTest, RunsATaskAtOnceWhereTheThreadHoldsNothing) {
    EXPECT_FALSE(Holding::any());
    say("now");
    EXPECT_EQ(said_, Texts{"now"});
}

TEST_F(HoldingTest, RunsTasksInTheirOrderOnceTheLastThingIsLetGo) {
    std::optional<Holding> first(std::in_place);
    std::optional<Holding> second(std::in_place);
    say("a");
    say("b");
    first.reset();
    EXPECT_TRUE(Holding::any());
    EXPECT_EQ(said_, Texts{});
    second.reset();
    EXPECT_EQ(said_, (Texts{"a", "b"}));
    EXPECT_FALSE(Holding::any());
}

TEST_F(HoldingTest, RunsATaskOnce) {
    for (int times = 0; times < 2; ++times) {
        const Holding holding;
        if (times == 0) say("once");
    }
    EXPECT_EQ(said_, Texts{"once"});
}

TEST_F(HoldingTest, LetsATaskHoldSomethingItself) {
    {
        const Holding outer;
        Holding::afterwards([this] {
            const Holding inner;
            say("inside");
            said_.emplace_back("before");
        });
        say("after");
    }
    EXPECT_EQ(said_, (Texts{"before", "inside", "after"}));
}

TEST_F(HoldingTest, IsOfOneThreadAlone) {
    const Holding holding;
    bool other = true;
    std::thread([&] {
        other = Holding::any();
        say("other");
    }).join();
    EXPECT_FALSE(other);
    EXPECT_EQ(said_, Texts{"other"});
}

}  // namespace
}  // namespace nearcast

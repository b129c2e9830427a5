// SPDX-License-Identifier: Apache-2.0
#include "platform/Guarded.h"

#include "doubles/Journal.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using Lines = std::vector<std::string>;

TEST(Guarded, RunsTheCallbackAndSaysNothing) {
    doubles::Journal journal;
    bool ran = false;
    guarded(journal, "a test", [&] { ran = true; });
    EXPECT_TRUE(ran);
    EXPECT_EQ(journal.lines(), Lines{});
}

TEST(Guarded, PutsWhatIsThrownOnTheConsoleInWords) {
    doubles::Journal journal;
    guarded(journal, "a test", [] { throw std::runtime_error("out of paper"); });
    guarded(journal, "a test", [] { throw 7; });
    EXPECT_EQ(journal.lines(), (Lines{"console The handler of a test failed: out of paper",
                                      "console The handler of a test failed: an exception of an unknown kind"}));
}

}  // namespace
}  // namespace nearcast

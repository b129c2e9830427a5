// SPDX-License-Identifier: Apache-2.0
#include "common/radio/HeldLines.h"
#include "common/radio/Readiness.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast::cli {
namespace {

RadioHealth healthWith(CBManagerState state, std::string why = {}) {
    RadioHealth health;
    health.state = state;
    health.why = std::move(why);
    return health;
}

TEST(Readiness, OfEveryState) {
    EXPECT_EQ(readinessOf(healthWith(CBManagerStatePoweredOn)), Readiness::ready);
    EXPECT_EQ(readinessOf(healthWith(CBManagerStatePoweredOff)), Readiness::awaited);
    EXPECT_EQ(readinessOf(healthWith(CBManagerStateResetting)), Readiness::awaited);
    EXPECT_EQ(readinessOf(healthWith(CBManagerStateUnknown)), Readiness::awaited);
    EXPECT_EQ(readinessOf(healthWith(CBManagerStateUnsupported)), Readiness::missing);
    EXPECT_EQ(readinessOf(healthWith(CBManagerStateUnauthorized)), Readiness::missing);
    EXPECT_EQ(readinessOf(healthWith(static_cast<CBManagerState>(6))), Readiness::awaited) << "one of the future";
}

TEST(Readiness, ARadioThatDoesNotKnowItsStateIsGivenTimeUntilItHasToldAnything) {
    EXPECT_FALSE(isSettled(healthWith(CBManagerStateUnknown), false));
    EXPECT_TRUE(isSettled(healthWith(CBManagerStateUnknown), true));
    EXPECT_FALSE(isSettled(healthWith(CBManagerStateResetting), true)) << "it is coming up";
    EXPECT_TRUE(isSettled(healthWith(CBManagerStatePoweredOff), false));
    EXPECT_TRUE(isSettled(healthWith(CBManagerStateUnsupported), false));
}

TEST(Readiness, WhatIsMissingIsSaidWithWhatToTry) {
    const std::string said =
        RadioMissing(healthWith(CBManagerStateUnsupported, "there is no Bluetooth adapter")).what();
    EXPECT_EQ(said,
              "there is no Bluetooth adapter; 'nearcast doctor' says what to do about it, and "
              "'--radio simulator' needs no radio");
    EXPECT_EQ(
        std::string(RadioMissing(healthWith(CBManagerStateUnauthorized)).what()).find("the radio is unauthorized; "),
        0U);
}

TEST(Readiness, WhatIsWaitedForIsSaidWithItsReason) {
    EXPECT_EQ(awaitedInWords(healthWith(CBManagerStatePoweredOff, "hci0 is blocked")),
              "waiting for the radio: hci0 is blocked; 'nearcast doctor' tells more");
    EXPECT_EQ(awaitedInWords(healthWith(CBManagerStatePoweredOff)),
              "waiting for the radio: the radio is powered off; 'nearcast doctor' tells more");
}

TEST(Readiness, ThatNothingWasHeardIsSaidWithTheReasonUnlessThatWasSaid) {
    const RadioHealth health = healthWith(CBManagerStatePoweredOff, "hci0 is blocked");
    EXPECT_EQ(nothingHeardInWords(health, false), "nothing was heard: the radio is powered off (hci0 is blocked)");
    EXPECT_EQ(nothingHeardInWords(health, true), "nothing was heard: the radio did not come");
}

TEST(HeldLines, AreSaidInTheirOrderWhenTheyAreReleasedAndThenAtOnce) {
    std::vector<std::string> said;
    HeldLines lines([&](std::string_view line) { said.emplace_back(line); });
    lines.say("a");
    lines.say("b");
    EXPECT_TRUE(said.empty());
    lines.release();
    EXPECT_EQ(said, (std::vector<std::string>{"a", "b"}));
    lines.say("c");
    lines.release();
    EXPECT_EQ(said, (std::vector<std::string>{"a", "b", "c"}));
}

}  // namespace
}  // namespace nearcast::cli

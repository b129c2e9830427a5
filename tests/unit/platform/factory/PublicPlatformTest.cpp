// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Platform.h>
#include <nearcast/QXNearcastManager.h>

#include "doubles/MadeDescriptors.h"
#include "doubles/TemporaryFolder.h"
#include "platform/system/SystemClock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

namespace nearcast {
namespace {

// Each test runs in a process of its own: the choice is the process's.
void choose(const std::string& radio, bool ownLoop) {
    PlatformOptions options;
    options.radio = radio;
    options.ownLoop = ownLoop;
    options.console = [](std::string_view) {};
    Platform::choose(options);
}

TEST(PublicPlatform, IsDrivenOnlyOnceItIsChosen) {
    EXPECT_THROW((void)Platform::descriptor(), std::logic_error);
    EXPECT_THROW(Platform::dispatch(), std::logic_error);
    EXPECT_THROW(Platform::runFor(0), std::logic_error);
    EXPECT_THROW((void)Platform::failure(), std::logic_error);
    EXPECT_NO_THROW(Platform::interrupt());
}

TEST(PublicPlatform, ARadioThatIsNotUnderstoodChangesNothing) {
    choose("simulator?speed=max", true);
    EXPECT_THROW(choose("bluetooth", true), std::invalid_argument);
    EXPECT_THROW(choose("simulator?speed=max", false), std::invalid_argument) << "it would run ahead of its caller";
    EXPECT_TRUE(Platform::runFor(1));
    EXPECT_EQ(Platform::now(), 1.0);
}

TEST(PublicPlatform, CanBeChosenAgainUntilTheManagerIsMade) {
    choose("none", true);
    EXPECT_NO_THROW(choose("simulator?speed=max", true));
    QXNearcastManager::sharedManager();
    EXPECT_THROW(choose("none", true), std::logic_error);
    EXPECT_TRUE(Platform::runFor(0.5)) << "the first choice still stands";
}

double machineTime() { return std::chrono::duration<double>(SystemClock::now()).count(); }

TEST(PublicPlatform, BeforeAChoiceNowIsTheMachinesTime) {
    const double before = machineTime();
    const double now = Platform::now();
    EXPECT_GE(now, before);
    EXPECT_LE(now, machineTime());
}

TEST(PublicPlatform, AskingForTheTimeLeavesTheChoiceOpen) {
    Platform::now();
    EXPECT_NO_THROW(choose("simulator?speed=max", true));
    EXPECT_EQ(Platform::now(), 0.0) << "from now on it is the time of the platform chosen";
    EXPECT_NO_THROW(choose("simulator?speed=max", true));
}

TEST(PublicPlatform, AskingForTheTimeMakesNoPlatform) {
    Platform::now();
    EXPECT_THROW((void)Platform::descriptor(), std::logic_error);
}

TEST(PublicPlatform, ARadioWithATimeOfItsOwnRunsAsLongAsItIsToldTo) {
    choose("simulator?speed=max&seed=1", true);
    EXPECT_EQ(Platform::descriptor(), -1);
    EXPECT_TRUE(Platform::runFor(2.5));
    EXPECT_EQ(Platform::now(), 2.5);
    EXPECT_TRUE(Platform::runFor(-1));
    EXPECT_TRUE(Platform::runFor(std::nan("")));
    EXPECT_EQ(Platform::now(), 2.5) << "no time and none that is a number pass nothing";
    EXPECT_EQ(Platform::failure(), "");
}

/// Any time from a nanosecond to a quarter of an hour, small ones as often as large ones.
double anyDuration(std::mt19937_64& random) {
    return std::pow(10, std::uniform_real_distribution<double>(-9, 3)(random));
}

TEST(PublicPlatform, ALoopOnTheRestOfItsTimeComesToItsEnd) {
    choose("simulator?speed=max&seed=1", true);
    std::mt19937_64 random(1);
    for (int count = 0; count < 5000; ++count) {
        const double begin = Platform::now();
        const double end = begin + anyDuration(random);
        for (int runs = 0; Platform::now() < end; ++runs) {
            ASSERT_LT(runs, 4) << "from " << begin << " to " << end;
            Platform::runFor(end - Platform::now());
        }
        ASSERT_LE(Platform::now(), end + 2e-6) << "from " << begin;
    }
}

TEST(PublicPlatform, TheShortestTimeThatIsOneIsAMicrosecond) {
    choose("simulator?speed=max&seed=1", true);
    for (const double seconds : {std::numeric_limits<double>::denorm_min(), 1e-9, 4.9e-7, 5e-7, 1e-6}) {
        const double before = Platform::now();
        Platform::runFor(seconds);
        EXPECT_EQ(std::llround((Platform::now() - before) * 1e6), 1) << seconds;
    }
}

TEST(PublicPlatform, TheClockStopsWhereItsTimesEnd) {
    choose("simulator?speed=max&seed=1", true);
    int runs = 0;
    while (Platform::runFor(std::numeric_limits<double>::infinity())) ASSERT_LT(++runs, 10);
    EXPECT_EQ(Platform::now(), 9.2e9);
    EXPECT_FALSE(Platform::runFor(1));
    EXPECT_EQ(Platform::now(), 9.2e9);
}

TEST(PublicPlatform, WhoseDescriptorsWereClosedSaysSo) {
    for (const char* radio : {"simulator?seed=1", "none"}) {
        const MadeDescriptors made;
        choose(radio, true);
        made.closeAll();
        EXPECT_THROW(Platform::runFor(3600), std::system_error) << radio;
    }
}

TEST(PublicPlatform, OfARecordingWhoseDescriptorsWereClosedTellsItsFailure) {
    const TemporaryFolder folder;
    const MadeDescriptors made;
    choose("replay:" + folder.write("shop.jsonl", "{\"at\": 3600, \"do\": \"end\"}\n"), true);
    QXNearcastManager::sharedManager().startScan();
    made.closeAll();
    EXPECT_THROW(Platform::runFor(7200), std::system_error);
    EXPECT_NE(Platform::failure().find("its descriptors were closed"), std::string::npos) << Platform::failure();
}

TEST(PublicPlatform, AnInterruptBeforeARunEndsTheNextOne) {
    choose("simulator?speed=max&seed=1", true);
    Platform::interrupt();
    Platform::runFor(std::numeric_limits<double>::infinity());
    EXPECT_LT(Platform::now(), 1e9);
}

TEST(PublicPlatform, WithALoopOfTheApplicationThereIsADescriptorToWaitFor) {
    choose("none", true);
    EXPECT_GE(Platform::descriptor(), 0);
    EXPECT_NO_THROW(Platform::dispatch());
}

TEST(PublicPlatform, TakesATapOnlyOnceItIsChosen) {
    EXPECT_THROW(Platform::setTap([](const HeardAdvertisement&) {}), std::logic_error);
}

TEST(PublicPlatform, GivesTheTapWhatTheRadioHearsAndWhen) {
    choose("simulator?speed=max&seed=1", true);
    auto& manager = QXNearcastManager::sharedManager();
    int dongles = 0;
    double last = -1;
    Platform::setTap([&](const HeardAdvertisement& heard) {
        if (heard.manufacturerData && heard.manufacturerData->size() == 8 && heard.wanted) ++dongles;
        EXPECT_GE(heard.at, last);
        last = heard.at;
    });
    manager.setDelegate(std::make_shared<QXNearcastManagerDelegate>());
    manager.startScan();
    Platform::runFor(2);
    EXPECT_GT(dongles, 10);
    EXPECT_GT(last, 1.5);
    EXPECT_LE(last, 2.0);
}

TEST(PublicPlatform, TellsATapNothingOnceItWasTakenAway) {
    choose("simulator?speed=max&seed=1", true);
    auto& manager = QXNearcastManager::sharedManager();
    int heard = 0;
    Platform::setTap([&](const HeardAdvertisement&) { ++heard; });
    manager.startScan();
    Platform::runFor(1);
    const int before = heard;
    EXPECT_GT(before, 0);
    Platform::setTap({});
    Platform::runFor(1);
    EXPECT_EQ(heard, before);
}

TEST(PublicPlatform, WithoutARadioNoScanStarts) {
    choose("none", true);
    EXPECT_FALSE(QXNearcastManager::sharedManager().startScan());
}

}  // namespace
}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/ReplayPlatform.h"

#include "unit/platform/hciformat/HciBytes.h"
#include "unit/platform/replay/ReplayFixture.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace nearcast::replay {

namespace {

using std::chrono::microseconds;
using Signals = std::vector<int>;
using End = Timeline::End;

class ReplayRadioTest : public ::testing::Test {
protected:
    void open(std::vector<RecordedItem> items, std::string damage = {}, RecordingOptions options = {}) {
        auto script = std::make_unique<Script>(std::move(items), std::move(damage));
        radio = std::make_unique<ReplayRadio>(listener, console, monitor, *timeline,
                                              Recording{"file", std::move(script), options});
    }
    void scan(std::optional<std::vector<CBUUID>> services = std::vector{dongleUUID()}) {
        radio->scanForPeripheralsWithServices(services, {.allowDuplicates = true});
    }
    [[nodiscard]] Signals heard() const { return signalsOf(listener.deliveries); }

    KeptLines console;
    std::shared_ptr<Timeline> timeline = std::make_shared<Timeline>(console);
    Listener listener{*timeline};
    RadioMonitor monitor{console, [this] { return NSDate(timeline->now()); }};
    std::unique_ptr<ReplayRadio> radio;
};

TEST_F(ReplayRadioTest, IsPoweredOnFromTheBegin) {
    open({});
    EXPECT_EQ(radio->state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(listener.states.empty());
}

TEST_F(ReplayRadioTest, StartsItsClockAtTheFirstScan) {
    open({dongleReport(0, -1), dongleReport(1'500, -2)});
    EXPECT_EQ(timeline->runUntil(microseconds(10'000)), End::reached);
    EXPECT_TRUE(listener.deliveries.empty());
    scan();
    timeline->runToLastHappening();
    ASSERT_EQ(heard(), (Signals{-1, -2}));
    EXPECT_EQ(listener.deliveries[0].at, 10'000);
    EXPECT_EQ(listener.deliveries[1].at, 11'500);
}

TEST_F(ReplayRadioTest, DeliversNothingBeforeItsMoment) {
    open({dongleReport(1'000, -1), dongleReport(2'000, -2)});
    scan();
    timeline->runUntil(microseconds(999));
    EXPECT_EQ(heard(), Signals{});
    timeline->runUntil(microseconds(1'000));
    EXPECT_EQ(heard(), Signals{-1});
    timeline->runUntil(microseconds(1'999));
    EXPECT_EQ(heard(), Signals{-1});
}

TEST_F(ReplayRadioTest, TellsWhenTheRecordingHasEnded) {
    open({dongleReport(1'000, -1)});
    scan();
    EXPECT_EQ(timeline->runUntil(microseconds(5'000)), End::exhausted);
    EXPECT_EQ(timeline->now(), microseconds(1'000));
    EXPECT_EQ(timeline->runUntil(microseconds(5'000)), End::reached);
    EXPECT_EQ(radio->failure(), "");
    EXPECT_TRUE(console.lines().empty());
}

TEST_F(ReplayRadioTest, LosesNothingWhenTheScanIsRestarted) {
    std::vector<RecordedItem> items;
    for (int i = 0; i < 100; ++i) items.emplace_back(dongleReport(i * 10'000, -i));
    open(std::move(items));
    scan();
    const auto restart = timeline->scheduledTimer(microseconds(30'000), [&](NSTimer&) {
        radio->stopScan();
        scan();
    });
    timeline->runToLastHappening();
    restart->invalidate();
    ASSERT_EQ(heard().size(), 100U);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(listener.deliveries[static_cast<std::size_t>(i)].at, i * 10'000);
}

TEST_F(ReplayRadioTest, RunsOnWhileNoScanRuns) {
    open({dongleReport(1'000, -1), dongleReport(2'000, -2), dongleReport(3'000, -3)});
    scan();
    timeline->runUntil(microseconds(1'500));
    radio->stopScan();
    timeline->runUntil(microseconds(2'500));
    scan();
    timeline->runUntil(microseconds(3'500));
    EXPECT_EQ(heard(), (Signals{-1, -3}));
    EXPECT_EQ(listener.deliveries.back().at, 3'000);
}

/// Items whose handlers each sleep, so that the next one happens inside.
std::vector<RecordedItem> closeTogether(int count) {
    std::vector<RecordedItem> items;
    for (int i = 0; i < count; ++i) items.emplace_back(dongleReport(i, -1));
    return items;
}

TEST_F(ReplayRadioTest, LetsFiveHundredReportsHappenInsideOneAnother) {
    open(closeTogether(500));
    listener.then = [&] { timeline->sleep(microseconds(1'000)); };
    scan();
    timeline->runToLastHappening();
    EXPECT_EQ(heard().size(), 500U);
    EXPECT_EQ(radio->failure(), "");
}

TEST_F(ReplayRadioTest, EndsWithAMessageAtOneMoreAndTheCallsInProgressStillEnd) {
    open(closeTogether(100'000));
    int ended = 0;
    listener.then = [&] {
        timeline->sleep(microseconds(200'000));
        ++ended;
    };
    scan();
    EXPECT_EQ(timeline->runUntil(microseconds(1'000'000)), End::exhausted);
    EXPECT_EQ(heard().size(), 500U);
    EXPECT_EQ(ended, 500);
    EXPECT_EQ(radio->failure(), "file: 500 calls sleep inside one another already");
    EXPECT_EQ(console.lines(), std::vector<std::string>{radio->failure()});
}

TEST_F(ReplayRadioTest, CountsOnlyWhatIsStillInProgress) {
    open(closeTogether(1'200));
    int calls = 0;
    listener.then = [&] {
        if (++calls % 400 != 0) timeline->sleep(microseconds(1));
    };
    scan();
    timeline->runToLastHappening();
    EXPECT_EQ(heard().size(), 1'200U);
    EXPECT_EQ(radio->failure(), "");
}

TEST_F(ReplayRadioTest, FiltersByService) {
    RecordedReport foreign = dongleReport(1'000, -1);
    foreign.report.services = {CBUUID::UUIDWithShort(0x180F)};
    open({foreign, dongleReport(2'000, -2)});
    scan();
    timeline->runToLastHappening();
    EXPECT_EQ(heard(), Signals{-2});
}

TEST_F(ReplayRadioTest, LetsEverythingPassWithServicesAny) {
    RecordedReport foreign = dongleReport(1'000, -1);
    foreign.report.services = {CBUUID::UUIDWithShort(0x180F)};
    foreign.report.manufacturerData = hex("4C00 01");
    open({foreign}, {}, {.anyService = true});
    scan();
    timeline->runToLastHappening();
    ASSERT_EQ(heard(), Signals{-1});
    EXPECT_EQ(listener.deliveries[0].manufacturerData, hex("4C00 01"));
}

TEST_F(ReplayRadioTest, LetsEverySenderPlayADongle) {
    RecordedReport foreign = dongleReport(1'000, -1);
    foreign.report.services.clear();
    foreign.report.manufacturerData = hex("4C00 01");
    foreign.report.address = alice;
    open({foreign}, {}, {.asDongles = true});
    scan();
    timeline->runToLastHappening();
    ASSERT_EQ(heard(), Signals{-1});
    EXPECT_EQ(listener.deliveries[0].manufacturerData, hex("FFFF A11112131415"));
}

TEST_F(ReplayRadioTest, DeliversChangesOfState) {
    open({RecordedState{microseconds(1'000), 4}, dongleReport(2'000, -1), RecordedState{microseconds(3'000), 99}});
    scan();
    timeline->runToLastHappening();
    EXPECT_EQ(listener.states, (std::vector<std::pair<std::int64_t, int>>{{1'000, 4}, {3'000, 99}}));
    EXPECT_EQ(radio->state(), 99);
    EXPECT_EQ(heard(), Signals{-1});
}

TEST_F(ReplayRadioTest, LastsAsLongAsTheRecordingSays) {
    open({dongleReport(1'000, -1), RecordedEnd{microseconds(9'000)}});
    scan();
    EXPECT_EQ(timeline->runUntil(microseconds(20'000)), End::exhausted);
    EXPECT_EQ(timeline->now(), microseconds(9'000));
}

TEST_F(ReplayRadioTest, PlaysUpToDamageAndSaysSoOnce) {
    open({dongleReport(1'000, -1)}, "it is torn");
    scan();
    EXPECT_EQ(timeline->runUntil(microseconds(5'000)), End::exhausted);
    EXPECT_EQ(timeline->runUntil(microseconds(6'000)), End::reached);
    EXPECT_EQ(heard(), Signals{-1});
    const std::string text = "file: damaged at byte 77: it is torn";
    EXPECT_EQ(console.lines(), std::vector{text});
    EXPECT_EQ(radio->failure(), text);
}

TEST_F(ReplayRadioTest, LetsWhatFollowsHappenInsideAHandlerThatSleeps) {
    open({dongleReport(1'000, -1), dongleReport(2'000, -2), dongleReport(3'000, -3)});
    listener.then = [&] {
        if (listener.deliveries.size() == 1) timeline->sleep(microseconds(1'500));
    };
    scan();
    timeline->runToLastHappening();
    EXPECT_EQ(heard(), (Signals{-1, -2, -3}));
    EXPECT_EQ(listener.deliveries[2].at, 3'000);
}

TEST_F(ReplayRadioTest, GoesOnAfterAHandlerThatThrows) {
    open({dongleReport(1'000, -1), dongleReport(2'000, -2)});
    listener.then = [] { throw std::runtime_error("no"); };
    scan();
    timeline->runToLastHappening();
    EXPECT_EQ(heard(), (Signals{-1, -2}));
    EXPECT_EQ(console.lines().size(), 2U);
}

TEST_F(ReplayRadioTest, LetsWhatIsLateHappenNow) {
    open({dongleReport(-5'000, -1), dongleReport(3'000, -2), dongleReport(1'000, -3)});
    scan();
    timeline->runToLastHappening();
    ASSERT_EQ(heard(), (Signals{-1, -2, -3}));
    EXPECT_EQ(listener.deliveries[0].at, 0);
    EXPECT_EQ(listener.deliveries[2].at, 3'000);
}

TEST_F(ReplayRadioTest, LeavesTheTimelineWhenItIsDestroyed) {
    open({dongleReport(1'000, -1)});
    scan();
    radio.reset();
    EXPECT_EQ(timeline->runUntil(microseconds(5'000)), End::reached);
    EXPECT_TRUE(listener.deliveries.empty());
}

}  // namespace

}  // namespace nearcast::replay

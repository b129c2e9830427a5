// SPDX-License-Identifier: Apache-2.0
#include "DecisionBench.h"

#include <nearcast/Nearest.h>

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace nearcast {

namespace {

using nearest::barMAC;
using nearest::recordOf;
using nearest::tillMAC;

constexpr std::array<std::uint8_t, 8> barPayload = {0xFF, 0xFF, 0x02, 0, 0, 0, 0, 0x0A};
constexpr std::array<std::uint8_t, 8> tillPayload = {0xFF, 0xFF, 0x02, 0, 0, 0, 0, 0x0B};

/// A `Nearest` on a registry, a clock and a radio of the test's.
class NearestTest : public testing::Test {
protected:
    Nearest::Sources sources() {
        return {[this] {
                    ++reads;
                    return std::make_shared<const Settings>(registry);
                },
                [this] { return clock; },
                [this] {
                    ++healthAsked;
                    return health;
                }};
    }
    void report(double at, const char* portName, const char* MACAddr, std::int32_t RSSI) {
        clock = at;
        nearest.didDiscoverPort(portName, QXDeviceTypeDesktopPrinter, MACAddr, RSSI);
    }
    void hear(double at, std::int32_t RSSI, bool wanted = true) {
        clock = at;
        nearest.tap()({{}, barPayload, RSSI, wanted, at});
    }
    void hearTill(double at, std::int32_t RSSI) {
        clock = at;
        nearest.tap()({{}, tillPayload, RSSI, true, at});
    }
    void update(double at) {
        clock = at;
        nearest.update();
    }
    [[nodiscard]] std::vector<std::string> told() const {
        std::vector<std::string> texts;
        for (const NearestChange& change : changes) {
            texts.push_back(change.now.device ? change.now.device->portName : "");
            if (change.now.stale) texts.back() += " stale";
        }
        return texts;
    }

    Settings registry{{"Bar", recordOf(barMAC, -60)}, {"Till", recordOf(tillMAC, -60)}};
    double clock = 0;
    RadioHealth health{.state = CBManagerStatePoweredOn, .since = 0, .why = {}, .lastReportAge = {}};
    int reads = 0;
    int healthAsked = 0;
    std::vector<NearestChange> changes;
    Nearest nearest{sources(), [this](const NearestChange& change) { changes.push_back(change); },
                    nearest::plainSettings()};
};

TEST_F(NearestTest, TellsOfAChangeWithWhatWasBeforeAndWhen) {
    report(0, "Bar", barMAC, -55);
    update(1.5);
    ASSERT_EQ(told(), (std::vector<std::string>{"Bar"}));
    EXPECT_FALSE(changes[0].before.device);
    EXPECT_EQ(changes[0].now.device->signal, -55);
    EXPECT_EQ(changes[0].now.device->threshold, -60);
    EXPECT_EQ(changes[0].now.rule, NearestRule::entered);
    EXPECT_EQ(changes[0].at, 1.5);
}

TEST_F(NearestTest, TellsNothingWhereNothingChanges) {
    report(0, "Bar", barMAC, -55);
    for (int quarter = 0; quarter < 20; ++quarter) report(quarter * 0.25, "Bar", barMAC, -55);
    EXPECT_EQ(changes.size(), 1U);
}

TEST_F(NearestTest, HandsEverythingOnToTheApplicationsDelegate) {
    std::vector<std::string> heard;
    auto next = std::make_shared<QXNearcastManagerDelegate>();
    next->didDiscoverPort = [&](auto portName, auto type, auto MACAddr, auto RSSI) {
        heard.push_back(std::string(portName) + std::to_string(type) + std::string(MACAddr) + std::to_string(RSSI));
    };
    next->didUpdateState = [&](auto portName, auto) { heard.push_back("silent " + std::string(portName)); };
    nearest.setNext(next);
    report(0, "Bar", barMAC, -55);
    nearest.didUpdateState("Bar", barMAC);
    EXPECT_EQ(heard, (std::vector<std::string>{"Bar102:00:00:00:00:0A-55", "silent Bar"}));
}

TEST_F(NearestTest, GetsAlongWithADelegateThatImplementsNothing) {
    nearest.setNext(std::make_shared<QXNearcastManagerDelegate>());
    report(0, "Bar", barMAC, -55);
    nearest.didUpdateState("Bar", barMAC);
    EXPECT_EQ(nearest.explain().at(0).smoothed, -55);
}

TEST_F(NearestTest, DropsTheChosenDeviceWhenTheManagerTellsThatItIsSilent) {
    report(0, "Bar", barMAC, -55);
    update(1);
    clock = 5;
    nearest.didUpdateState("Bar", barMAC);
    EXPECT_EQ(told(), (std::vector<std::string>{"Bar", ""}));
    EXPECT_EQ(changes.back().now.rule, NearestRule::silent);
}

TEST_F(NearestTest, KeepsAChoiceThatItHearsByTheTapThoughTheManagerHearsNothing) {
    hear(0, -55);
    hear(4, -55);
    clock = 5;
    nearest.didUpdateState("Bar", barMAC);
    EXPECT_EQ(told(), (std::vector<std::string>{"Bar"}));
}

TEST_F(NearestTest, AsksHowTheRadioIsBeforeADeviceFallsSilent) {
    report(0, "Bar", barMAC, -55);
    update(1);
    health.state = CBManagerStatePoweredOff;
    health.since = 2;
    report(6, "", tillMAC, -90);
    EXPECT_EQ(told(), (std::vector<std::string>{"Bar", "Bar stale"}));
}

TEST_F(NearestTest, AsksHowTheRadioIsBeforeADeviceFallsSilentByTheTapToo) {
    report(0, "Bar", barMAC, -55);
    update(1);
    health.state = CBManagerStatePoweredOff;
    health.since = 2;
    hearTill(6, -90);
    EXPECT_EQ(told(), (std::vector<std::string>{"Bar", "Bar stale"}));
}

TEST_F(NearestTest, DoesNotAskHowTheRadioIsWhileTheChosenDeviceIsHeard) {
    report(0, "Bar", barMAC, -55);
    update(1);
    const int asked = healthAsked;
    report(2, "Bar", barMAC, -55);
    hear(5, -55);
    hearTill(6, -90);
    EXPECT_EQ(healthAsked, asked);
}

TEST_F(NearestTest, TellsThatAChoiceIsNotStaleAnyMore) {
    report(0, "Bar", barMAC, -55);
    update(1);
    health.state = CBManagerStateResetting;
    health.since = 2;
    update(2);
    health.state = CBManagerStatePoweredOn;
    health.since = 3;
    update(3);
    report(4, "Bar", barMAC, -55);
    EXPECT_EQ(told(), (std::vector<std::string>{"Bar", "Bar stale", "Bar"}));
}

TEST_F(NearestTest, LeavesAsideWhatTheScanDoesNotWantAndWhatHasNoReading) {
    hear(0, -55, false);
    hear(0, 127);
    EXPECT_FALSE(nearest.explain().at(0).raw);
    hear(0, -55);
    EXPECT_EQ(nearest.explain().at(0).raw, -55);
}

TEST_F(NearestTest, DoesNotTakeASenderWithoutANameForADeviceWithoutADongle) {
    registry = {{"Bar", recordOf(barMAC, -60)}, {"BT:NoDongle", std::make_shared<const SettingRecord>()}};
    nearest.refresh();
    constexpr std::array<std::uint8_t, 3> foreign = {0x4C, 0x00, 0x02};
    for (double at = 0; at < 6; at += 0.5) {
        hear(at, -55);
        nearest.tap()({"", foreign, -40, true, at});
    }
    EXPECT_EQ(told(), std::vector<std::string>{"Bar"});
}

TEST_F(NearestTest, GivesATapThatMayOutliveIt) {
    std::function<void(const HeardAdvertisement&)> tap;
    {
        Nearest gone(sources(), {});
        tap = gone.tap();
    }
    const int readsBefore = reads;
    EXPECT_NO_THROW(tap({{}, barPayload, -50, true, 1}));
    EXPECT_EQ(reads, readsBefore);
}

TEST_F(NearestTest, ReadsTheRegistryAgainWhenAReportDoesNotFit) {
    registry.emplace("Cellar", recordOf("02:00:00:00:00:0C", -60));
    report(2, "Cellar", "02:00:00:00:00:0C", -50);
    EXPECT_EQ(reads, 2);
    EXPECT_EQ(nearest.explain().at(1).smoothed, -50);
}

TEST_F(NearestTest, ReadsTheRegistryOnceASecondAtMostByItself) {
    report(1, "Gone", "02:00:00:00:00:0D", -50);
    EXPECT_EQ(reads, 2);
    report(1.999, "Gone", "02:00:00:00:00:0D", -50);
    EXPECT_EQ(reads, 2);
    report(2, "Gone", "02:00:00:00:00:0D", -50);
    EXPECT_EQ(reads, 3);
}

TEST_F(NearestTest, AppliesAThresholdAfterARefresh) {
    registry["Bar"] = recordOf(barMAC, -40);
    nearest.refresh();
    EXPECT_EQ(nearest.explain().at(0).threshold, -40);
}

TEST_F(NearestTest, AReadOfTheRegistryThatWasOvertakenByALaterOneIsDropped) {
    Nearest* self = nullptr;
    bool overtaken = false;
    const auto slowRegistry = [&] {
        auto read = std::make_shared<const Settings>(registry);
        if (std::exchange(overtaken, false)) {
            registry["Bar"] = recordOf(barMAC, -40);
            self->refresh();
        }
        return read;
    };
    Nearest reading({slowRegistry, sources().clock, sources().health}, {});
    self = &reading;
    overtaken = true;
    reading.refresh();
    EXPECT_EQ(reading.explain().at(0).threshold, -40);
}

TEST_F(NearestTest, TakesAnAbsentRegistryForAnEmptyOne) {
    Nearest without({[] { return nullptr; }, [] { return 0.0; }, [] { return RadioHealth(); }}, {});
    EXPECT_TRUE(without.explain().empty());
}

TEST_F(NearestTest, TellsInOrderWhatTheCalledOneBringsAbout) {
    std::vector<std::string> order;
    Nearest* self = nullptr;
    const auto changed = [&](const NearestChange& change) {
        const std::string name = change.now.device ? change.now.device->portName : "none";
        order.push_back("begin " + name);
        if (change.now.device) {
            registry.clear();
            self->refresh();
        }
        order.push_back("end " + name);
    };
    Nearest deep(sources(), changed, nearest::plainSettings());
    self = &deep;
    deep.didDiscoverPort("Bar", QXDeviceTypeUnknown, barMAC, -50);
    clock = 1;
    deep.update();
    EXPECT_EQ(order, (std::vector<std::string>{"begin Bar", "end Bar", "begin none", "end none"}));
}

TEST_F(NearestTest, GoesOnTellingAfterTheCalledOneThrew) {
    int calls = 0;
    Nearest throwing(
        sources(),
        [&](const NearestChange&) {
            if (++calls == 1) throw std::runtime_error("the printer is on fire");
        },
        nearest::plainSettings());
    throwing.didDiscoverPort("Bar", QXDeviceTypeUnknown, barMAC, -50);
    clock = 1;
    EXPECT_THROW(throwing.update(), std::runtime_error);
    clock = 7;
    EXPECT_NO_THROW(throwing.update());
    EXPECT_EQ(calls, 2);
}

TEST_F(NearestTest, RefusesSettingsAndSourcesThatCannotBe) {
    NearestSettings settings;
    settings.decay = 0;
    EXPECT_THROW(Nearest(sources(), {}, settings), std::invalid_argument);
    EXPECT_THROW(Nearest({{}, [] { return 0.0; }, [] { return RadioHealth(); }}, {}), std::invalid_argument);
    EXPECT_THROW(Nearest({sources().registry, {}, sources().health}, {}), std::invalid_argument);
    EXPECT_THROW(Nearest({sources().registry, sources().clock, {}}, {}), std::invalid_argument);
}

TEST_F(NearestTest, GivesTheChoiceOfThisMoment) {
    report(0, "Bar", barMAC, -55);
    clock = 1;
    EXPECT_EQ(nearest.choice().device->portName, "Bar");
    clock = 5;
    EXPECT_FALSE(nearest.choice().device);
    EXPECT_EQ(told(), (std::vector<std::string>{"Bar", ""}));
}

}  // namespace

}  // namespace nearcast

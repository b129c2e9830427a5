// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Platform.h>
#include <nearcast/Proximity.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast {
namespace {

PlatformOptions radio(std::string text) {
    PlatformOptions options;
    options.radio = std::move(text);
    options.ownLoop = true;
    options.console = [](std::string_view) {};
    return options;
}

/// The till of the simulated shop at which the walk begins, and another one.
const Device front{.portName = "BT:Front", .address = Address("02:4E:43:00:00:01"), .threshold = -75};
const Device bar{.portName = "BT:Bar", .address = Address("02:4E:43:00:00:03"), .threshold = -75};

class ProximityTest : public testing::Test {
protected:
    void open(const std::string& radioString) {
        proximity.emplace(radio(radioString), [this](const NearestChange& change) {
            changes.push_back(change.now.device ? change.now.device->portName : "nobody");
        });
    }

    std::vector<std::string> changes;
    std::optional<Proximity> proximity;
};

TEST_F(ProximityTest, TellsWhoIsNearestWithNothingElseWired) {
    open("simulator?speed=max");
    proximity->addDevice(front);
    proximity->addDevice(bar);
    ASSERT_TRUE(proximity->start());
    Platform::runFor(120);
    EXPECT_FALSE(changes.empty());
    EXPECT_EQ(changes.front(), "BT:Front");
}

TEST_F(ProximityTest, HearsByTheTap) {
    open("simulator?speed=max");
    proximity->addDevice(front);
    ASSERT_TRUE(proximity->start());
    Platform::runFor(5);
    const auto explained = proximity->nearest().explain();
    ASSERT_EQ(explained.size(), 1U);
    EXPECT_TRUE(explained[0].raw.has_value());
}

TEST_F(ProximityTest, NoticesWithoutAnyReportThatTimePasses) {
    open("simulator?speed=max");
    proximity->addDevice(front);
    ASSERT_TRUE(proximity->start());
    Platform::runFor(5);
    ASSERT_EQ(proximity->choice().device->portName, "BT:Front");
    proximity->stop();  // nothing is heard any more
    Platform::runFor(60);
    EXPECT_EQ(changes.back(), "nobody");
}

TEST_F(ProximityTest, DecidesByAChangedRecordAtOnce) {
    open("simulator?speed=max");
    proximity->addDevice(front);
    ASSERT_TRUE(proximity->start());
    Platform::runFor(5);
    ASSERT_TRUE(proximity->changeDevice("BT:Front", [](const auto& record) { return withThreshold(record, 20); }));
    EXPECT_EQ(proximity->nearest().explain()[0].threshold, 20);
    EXPECT_FALSE(proximity->changeDevice("BT:Nowhere", [](const auto& record) { return withThreshold(record, 20); }));
}

TEST_F(ProximityTest, TakesAllDevicesOfAFile) {
    open("simulator?speed=max");
    const SettingRecord record{{"MAC Address", bar.address.text()}};
    proximity->setDevices({{"BT:Bar", std::make_shared<const SettingRecord>(record)}});
    ASSERT_EQ(proximity->nearest().explain().size(), 1U);
    EXPECT_EQ(proximity->nearest().explain()[0].portName, "BT:Bar");
}

TEST_F(ProximityTest, HandsEverythingOnToTheApplicationsDelegate) {
    open("simulator?speed=max");
    proximity->addDevice(front);
    int reports = 0;
    auto delegate = std::make_shared<QXNearcastManagerDelegate>();
    delegate->didDiscoverPort = [&](auto, auto, auto, auto) { ++reports; };
    proximity->setDelegate(delegate);
    ASSERT_TRUE(proximity->start());
    Platform::runFor(5);
    EXPECT_GT(reports, 10);
}

TEST_F(ProximityTest, SaysWhyAScanDoesNotStart) {
    open("none");
    const auto started = proximity->start();
    EXPECT_FALSE(started);
    EXPECT_EQ(started.why, "the radio is unsupported: there is no radio");
}

TEST_F(ProximityTest, SaysThatAScanRunsAlready) {
    open("simulator?speed=max");
    ASSERT_TRUE(proximity->start());
    EXPECT_EQ(proximity->start().why, "a scan or a calibration runs already");
    proximity->stop();
    EXPECT_TRUE(proximity->start());
}

TEST_F(ProximityTest, CallsNobodyOnceItIsGone) {
    open("simulator?speed=max");
    proximity->addDevice(front);
    ASSERT_TRUE(proximity->start());
    Platform::runFor(2);
    QXNearcastManager& manager = proximity->manager();
    proximity.reset();
    changes.clear();
    EXPECT_EQ(manager.delegate(), nullptr);
    ASSERT_TRUE(manager.startScan()) << "its scan was stopped";
    Platform::runFor(60);
    EXPECT_TRUE(changes.empty());
}

TEST_F(ProximityTest, IsRefusedBesideAnother) {
    open("none");
    EXPECT_THROW(Proximity(radio("none")), std::logic_error);
}

TEST_F(ProximityTest, RefusesWrongSettingsBeforeAnythingIsFixed) {
    NearestSettings wrong;
    wrong.patience = -1;
    EXPECT_THROW(Proximity(radio("none"), {}, wrong), std::invalid_argument);
    EXPECT_NO_THROW(open("none"));
}

}  // namespace
}  // namespace nearcast

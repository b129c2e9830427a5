// SPDX-License-Identifier: Apache-2.0
#include "doubles/FakeBluez.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

const std::string adapter = "/org/bluez/hci0";

/// A client without any wits.
class FakeBluezTest : public testing::Test, public SystemBusListener {
protected:
    FakeBluezTest() { bluez.place({}); }

    void connect() {
        EXPECT_FALSE(bluez.connect(*this));
        pass(1s);
    }
    void pass(Time duration) { bluez.runUntil(bluez.now() + duration); }
    /// The error's name, or nothing where the call went well.
    Done note() {
        return [this](const auto& failure) { answers.push_back(failure ? failure->name : ""); };
    }
    void discover() {
        bluez.setDiscoveryFilter(adapter, note());
        bluez.startDiscovery(adapter, note());
        pass(1s);
    }

    void busLost(const Failure& failure) override { told.push_back("lost " + failure.name); }
    void daemonChanged(bool there) override { told.emplace_back(there ? "daemon" : "no daemon"); }
    void adapterAdded(std::string_view /*path*/, const AdapterNews& /*news*/) override { told.emplace_back("adapter"); }
    void adapterChanged(std::string_view /*path*/, const AdapterNews& news) override {
        if (news.discovering) told.emplace_back(*news.discovering ? "discovers" : "does not discover");
    }
    void adapterRemoved(std::string_view /*path*/) override { told.emplace_back("no adapter"); }
    void monitorsOffered(std::string_view /*adapter*/) override { told.emplace_back("monitors"); }
    void deviceListed(std::string_view /*path*/, const DeviceNews& /*news*/) override { told.emplace_back("listed"); }
    void deviceAdded(std::string_view /*path*/, const DeviceNews& /*news*/) override { ++added; }
    void deviceChanged(std::string_view /*path*/, const DeviceNews& news) override {
        ++changed;
        manufacturer = news.manufacturer.has_value();
    }
    void deviceRemoved(std::string_view /*path*/) override { ++removed; }
    void monitorReleased() override { told.emplace_back("released"); }
    void forged() override { told.emplace_back("forged"); }

    FakeBluez bluez;
    std::vector<std::string> answers;
    std::vector<std::string> told;
    int added = 0;
    int changed = 0;
    int removed = 0;
    bool manufacturer = false;
};

using Words = std::vector<std::string>;
using Octets = std::vector<std::uint8_t>;

TEST_F(FakeBluezTest, TellsWhetherBluetoothdIsThere) {
    connect();
    EXPECT_EQ(told, Words{"daemon"});
    bluez.killDaemon();
    pass(1s);
    EXPECT_EQ(told.back(), "no daemon");
}

TEST_F(FakeBluezTest, ShowsADeviceOnceAndThenItsChanges) {
    connect();
    discover();
    EXPECT_EQ(answers, (Words{"", ""}));
    EXPECT_EQ(added, 1);
    EXPECT_GE(changed, 8);
    EXPECT_TRUE(manufacturer);
    EXPECT_EQ(bluez.reports(), added + changed);
}

TEST_F(FakeBluezTest, KeepsMostBackWithoutTheFilter) {
    connect();
    bluez.startDiscovery(adapter, note());
    pass(10s);
    EXPECT_EQ(changed, 0);
    bluez.dongle(0).RSSI = -52;
    pass(1s);
    EXPECT_EQ(changed, 1);
    EXPECT_FALSE(manufacturer);
}

TEST_F(FakeBluezTest, HasTheRealErrors) {
    connect();
    bluez.stopDiscovery(adapter, note());
    bluez.startDiscovery(adapter, note());
    bluez.startDiscovery(adapter, note());
    bluez.startDiscovery("/org/bluez/hci5", note());
    pass(1s);
    bluez.power("hci0", false);
    bluez.startDiscovery(adapter, note());
    pass(1s);
    EXPECT_EQ(answers, (Words{"org.bluez.Error.Failed", "", "org.bluez.Error.InProgress",
                              "org.freedesktop.DBus.Error.UnknownObject", "org.bluez.Error.NotReady"}));
}

TEST_F(FakeBluezTest, EndsADiscoveryWithThePowerForGood) {
    connect();
    discover();
    bluez.power("hci0", false);
    bluez.power("hci0", true);
    pass(1s);
    EXPECT_FALSE(bluez.discovers("hci0"));
    EXPECT_EQ(told.back(), "does not discover");
    EXPECT_EQ(removed, 1);
}

TEST_F(FakeBluezTest, SaysNothingOfTheDiscoveryThatDiedWithBluetoothd) {
    connect();
    discover();
    bluez.killDaemon();
    bluez.startDaemon();
    pass(1s);
    EXPECT_EQ(told, (Words{"daemon", "discovers", "no daemon", "daemon"}));
    EXPECT_FALSE(bluez.discovers("hci0"));
}

TEST_F(FakeBluezTest, KeepsToItselfWhatHasNoReadingUnlessAnotherDiscoversToo) {
    bluez.dongle(0).RSSI = 127;
    connect();
    discover();
    EXPECT_EQ(bluez.reports(), 0);
    bluez.discoverForAnother("hci0");
    pass(1s);
    EXPECT_GE(bluez.reports(), 8);
}

TEST_F(FakeBluezTest, ShowsOneOfTwoDevicesOfOnePathUntilItIsSilent) {
    bluez.place({.randomAddress = true});
    connect();
    discover();
    EXPECT_EQ(added, 1);
    EXPECT_LE(changed, 10);
    bluez.dongle(0).silent = true;
    pass(29s);
    EXPECT_EQ(added, 1);
    pass(3s);
    EXPECT_EQ(removed, 1);
    EXPECT_EQ(added, 2);
}

TEST_F(FakeBluezTest, WaitsForAScanResponseUntilAnotherAdvertises) {
    bluez.dongle(0).asked = true;
    connect();
    discover();
    EXPECT_EQ(bluez.reports(), 0);
    bluez.place({.address = "02:00:00:00:00:02"});
    pass(1s);
    EXPECT_EQ(added, 2);
    bluez.dongle(1).silent = true;
    bluez.dongle(0).response = Octets{};
    const int before = bluez.reports();
    pass(1s);
    EXPECT_GE(bluez.reports(), before + 8);
}

TEST_F(FakeBluezTest, ReadsOctetsItself) {
    bluez.dongle(0).data = Octets{4, 0xFF, 0x4C, 0, 1};
    connect();
    discover();
    EXPECT_GE(changed, 8);
    EXPECT_TRUE(manufacturer);
    bluez.dongle(0).data = Octets{2, 1, 6};
    pass(1s);
    EXPECT_FALSE(manufacturer);
}

TEST_F(FakeBluezTest, BeginsNoScanAgainThatItHasLost) {
    connect();
    discover();
    bluez.starve("hci0");
    added = changed = 0;
    for (int i = 0; i < 2; ++i) bluez.stopDiscovery(adapter, note());
    pass(1s);
    discover();
    EXPECT_EQ(answers, (Words{"", "", "org.bluez.Error.InProgress", "org.bluez.Error.Failed", "", ""}));
    EXPECT_EQ(added + changed, 0);
    EXPECT_EQ(told.back(), "discovers") << "it never says otherwise";
}

TEST_F(FakeBluezTest, DoesNotFindALostScanAgainByPowerOffAndOn) {
    connect();
    discover();
    bluez.starve("hci0");
    bluez.power("hci0", false);
    bluez.power("hci0", true);
    pass(1s);
    added = changed = 0;
    discover();
    EXPECT_EQ(answers.back(), "");
    EXPECT_EQ(added + changed, 0);
}

TEST_F(FakeBluezTest, GoesOnWithALostScanWhenTheKernelEndsAnother) {
    connect();
    discover();
    bluez.starve("hci0");
    EXPECT_EQ(bluez.startInKernel("hci0"), 0x00);
    EXPECT_EQ(bluez.stopInKernel("hci0"), 0x00);
    changed = 0;
    pass(1s);
    EXPECT_GE(changed, 9);
    EXPECT_EQ(bluez.startInKernel("hci0"), 0x0A) << "busy";
}

TEST_F(FakeBluezTest, StopsNothingInTheKernelWhereNothingRuns) {
    EXPECT_EQ(bluez.stopInKernel("hci0"), 0x0B);
    bluez.power("hci0", false);
    EXPECT_EQ(bluez.startInKernel("hci0"), 0x0F);
    EXPECT_EQ(bluez.startInKernel("hci7"), 0x11);
}

TEST_F(FakeBluezTest, FindsTheRoundOfADeadOneInItsWay) {
    bluez.leaveRounds(8s);
    connect();
    discover();
    bluez.killDaemon();
    bluez.startDaemon();
    pass(7s);
    bluez.startDiscovery(adapter, note());
    pass(1s);
    EXPECT_EQ(answers.back(), "org.bluez.Error.InProgress");
    bluez.startDiscovery(adapter, note());
    pass(1s);
    EXPECT_EQ(answers.back(), "");
}

TEST_F(FakeBluezTest, TellsWhatTheKernelDiscovers) {
    std::vector<bool> news;
    bluez.kernelDiscovers = [&](const std::string& name, bool on) {
        EXPECT_EQ(name, "hci0");
        news.push_back(on);
    };
    connect();
    discover();
    bluez.starve("hci0");
    bluez.startInKernel("hci0");
    bluez.stopInKernel("hci0");
    pass(1s);
    EXPECT_EQ(news, (std::vector<bool>{true, false, true, false, true}));
}

TEST_F(FakeBluezTest, RemovesADeviceThatIsSilentForThirtySeconds) {
    connect();
    discover();
    bluez.dongle(0).silent = true;
    pass(29s);
    EXPECT_EQ(removed, 0);
    pass(3s);
    EXPECT_EQ(removed, 1);
}

TEST_F(FakeBluezTest, ReportsOnceARoundWhereTheControllerIsStrict) {
    bluez.beStrict();
    connect();
    discover();
    pass(40s);
    EXPECT_EQ(added + changed, 4);
}

TEST_F(FakeBluezTest, HearsOfALostBusAndOfNothingAfterwards) {
    connect();
    bluez.breakBus({"broken", ""});
    pass(1s);
    EXPECT_EQ(told.back(), "lost broken");
    bluez.disconnect();
    bluez.killDaemon();
    pass(1s);
    EXPECT_EQ(told.back(), "lost broken");
    EXPECT_TRUE(bluez.connect(*this));
}

TEST_F(FakeBluezTest, FailsWhenAskedTo) {
    connect();
    bluez.failNext("StartDiscovery", "once");
    bluez.failAlways("StopDiscovery", "always");
    for (int i = 0; i < 2; ++i) bluez.startDiscovery(adapter, note());
    for (int i = 0; i < 2; ++i) bluez.stopDiscovery(adapter, note());
    pass(1s);
    EXPECT_EQ(answers, (Words{"once", "", "always", "always"}));
}

TEST_F(FakeBluezTest, TakesAsLongToAnswerAsItIsTold) {
    connect();
    bluez.answerAfter(100ms);
    bluez.setDiscoveryFilter(adapter, note());
    pass(100ms - 1ns);
    EXPECT_TRUE(answers.empty());
    pass(1ns);
    EXPECT_EQ(answers, Words{""});
}

TEST_F(FakeBluezTest, DoesWhatItIsAskedWhileItHoldsTheAnswer) {
    connect();
    bluez.holdAnswers("StartDiscovery");
    bluez.setDiscoveryFilter(adapter, note());
    bluez.startDiscovery(adapter, note());
    pass(1s);
    EXPECT_EQ(answers, Words{""}) << "the filter's alone";
    EXPECT_TRUE(bluez.discovers("hci0"));
    bluez.releaseAnswers();
    pass(0s);
    EXPECT_EQ(answers, (Words{"", ""}));
    bluez.startDiscovery(adapter, note());
    pass(1s);
    EXPECT_EQ(answers.size(), 3U) << "later ones are not held";
}

TEST_F(FakeBluezTest, ReleasesOneAnswerAtATime) {
    connect();
    bluez.holdAnswers("StopDiscovery");
    bluez.holdAnswers("StartDiscovery");
    bluez.stopDiscovery(adapter, note());
    bluez.startDiscovery(adapter, note());
    pass(1s);
    bluez.releaseOldestAnswer();
    pass(1s);
    EXPECT_EQ(answers, Words{"org.bluez.Error.Failed"});
}

TEST_F(FakeBluezTest, ReleasesNothingWhereItHoldsNoAnswer) {
    connect();
    bluez.releaseOldestAnswer();
    pass(1s);
    EXPECT_TRUE(answers.empty());
}

TEST_F(FakeBluezTest, SaysNoMoreOfAnAdapterThatIsUnpluggedWhileItBlinks) {
    connect();
    bluez.blink("hci0", 2s);
    pass(1s);
    bluez.unplug("hci0");
    pass(2s);
    EXPECT_EQ(told, (Words{"daemon", "does not discover", "no adapter"}));
}

TEST_F(FakeBluezTest, AnswersForABluetoothdThatHasDiedAfterTheNewsOfItsDeath) {
    connect();
    bluez.holdAnswers("StartDiscovery");
    bluez.startDiscovery(adapter, note());
    pass(1s);
    bluez.killDaemon();
    bluez.startDaemon();
    pass(1s);
    EXPECT_EQ(told.back(), "daemon");
    EXPECT_TRUE(answers.empty());
    bluez.releaseAnswers();
    pass(0s);
    EXPECT_EQ(answers, Words{"org.freedesktop.DBus.Error.NoReply"});
}

TEST_F(FakeBluezTest, DoesNothingOfACallWhoseBluetoothdHasDied) {
    connect();
    bluez.startDiscovery(adapter, note());
    bluez.killDaemon();
    bluez.startDaemon();
    pass(1s);
    EXPECT_EQ(answers, Words{"org.freedesktop.DBus.Error.NoReply"});
    EXPECT_FALSE(bluez.discovers("hci0"));
}

TEST_F(FakeBluezTest, AnswersNobodyWhoHasDisconnected) {
    connect();
    bluez.holdAnswers("StartDiscovery");
    bluez.startDiscovery(adapter, note());
    pass(1s);
    bluez.stopDiscovery(adapter, note());
    bluez.disconnect();
    bluez.releaseAnswers();
    pass(1s);
    EXPECT_TRUE(answers.empty());
    connect();
    pass(1s);
    EXPECT_TRUE(answers.empty()) << "another connection";
    EXPECT_FALSE(bluez.discovers("hci0"));
}

TEST_F(FakeBluezTest, SaysNothingOfAdaptersWhileItIsDead) {
    connect();
    bluez.killDaemon();
    pass(1s);
    told.clear();
    bluez.power("hci0", false);
    bluez.unplug("hci0");
    bluez.plug("hci1");
    pass(1s);
    EXPECT_TRUE(told.empty());
}

TEST_F(FakeBluezTest, ShowsADeviceThatItHasNotHeard) {
    connect();
    bluez.showUnheard(0);
    pass(1s);
    EXPECT_EQ(added, 1);
    EXPECT_EQ(changed, 0);
}

TEST_F(FakeBluezTest, TellsOfTheReportsOfAnothersDiscovery) {
    bluez.plug("hci10");
    bluez.discoverForAnother("hci10");
    bluez.place({.adapter = "hci10"});
    connect();
    EXPECT_EQ(added, 1);
    EXPECT_GE(changed, 8);
    EXPECT_FALSE(bluez.discovers("hci10"));
}

}  // namespace

}  // namespace nearcast::bluez

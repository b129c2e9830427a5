// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/bluez/BluezSessionFixture.h"

#include <algorithm>
#include <memory>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

/// Answers that come when what they were for is gone: the bluetoothd that was asked, the adapter, the session.
class SessionLateAnswer : public BluezSessionTest {
protected:
    /// bluetoothd is replaced by another, and what the first one had not answered yet comes to nothing.
    void replaceDaemon() {
        bluez().killDaemon();
        bluez().startDaemon();
        bench.pass(0s);
        bluez().releaseAnswers();
        bench.pass(0s);
    }
    [[nodiscard]] bool wasTold(std::string_view words) const {
        return std::any_of(bench.conditions.begin(), bench.conditions.end(), [&](const RadioCondition& condition) {
            return condition.why.find(words) != std::string::npos;
        });
    }
};

TEST_F(SessionLateAnswer, OfAFormerBluetoothdToTheListIsOfNoInterest) {
    bluez().holdAnswers("GetManagedObjects");
    bench.settle();
    replaceDaemon();
    bench.pass(10s);
    EXPECT_FALSE(wasTold("does not answer"));
    EXPECT_EQ(bluez().count("GetManagedObjects"), 2) << "once of each";
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
}

TEST_F(SessionLateAnswer, OfAFormerBluetoothdToAQuestionAboutADeviceDoesNotEndTheNextOne) {
    bluez().forgetToTell(true);
    bluez().failAlways("GetAll", "org.bluez.Error.Failed");  // so the device stays unknown
    bluez().holdAnswers("GetAll");
    scan();
    bluez().killDaemon();
    bluez().startDaemon();
    bench.settle();
    ASSERT_EQ(bluez().count("GetAll"), 2) << "the second one is pending";
    bluez().releaseOldestAnswer();
    bench.settle();
    EXPECT_EQ(bluez().count("GetAll"), 2) << "one at a time";
    bluez().releaseOldestAnswer();
    bench.settle();
    EXPECT_EQ(bluez().count("GetAll"), 3);
}

TEST_F(SessionLateAnswer, OfAnAdapterThatIsGoneDoesNotCountForTheNextOne) {
    bluez().plug("hci1");
    bluez().holdAnswers("StartDiscovery");
    scan();
    EXPECT_EQ(bluez().count("StartDiscovery"), 1);
    bluez().power("hci0", false);
    bench.pass(0s);
    bluez().releaseAnswers();
    bench.settle();
    EXPECT_TRUE(bluez().discovers("hci1"));
    EXPECT_EQ(bluez().count("SetDiscoveryFilter"), 2) << "once on each";
}

TEST_F(SessionLateAnswer, ToAMonitorOfAnAdapterThatIsGoneDoesNotCountForTheNextOne) {
    bluez().plug("hci0", true, true);
    bluez().plug("hci1", true, true);
    bluez().holdAnswers("RegisterMonitor");
    scan();
    bluez().failAlways("RegisterMonitor", error::failed);
    bluez().power("hci0", false);
    bench.settle();
    ASSERT_EQ(bluez().count("RegisterMonitor"), 2);
    bluez().releaseOldestAnswer();
    bench.session.want(false);
    bench.pass(5s);
    EXPECT_EQ(bluez().count("UnregisterMonitor"), 0) << "there is none on hci1";
}

TEST_F(SessionLateAnswer, OfAStopDoesNotEndAScanThatIsWantedAgain) {
    scan();
    bluez().holdAnswers("StopDiscovery");
    bench.session.want(false);
    bench.pass(2s);
    bench.session.want(true);
    bench.settle();
    EXPECT_FALSE(bluez().discovers("hci0"));
    bluez().releaseAnswers();
    EXPECT_GE(bench.reportsIn(1s), 9);
}

TEST_F(SessionLateAnswer, ReachesNoSessionThatHasEnded) {
    BluezBench other;
    auto session = std::make_unique<BluezSession>(other.bluez, other.rfkill, other.mgmt, other, "");
    other.bluez.holdAnswers("GetManagedObjects");
    session->want(true);
    session->pass(0s);
    other.bluez.runUntil(1s);
    ASSERT_EQ(other.bluez.count("GetManagedObjects"), 1);
    session.reset();
    other.bluez.releaseAnswers();
    other.bluez.runUntil(2s);
    EXPECT_TRUE(other.conditions.empty());
    EXPECT_EQ(other.bluez.count("StartDiscovery"), 0);
}

TEST_F(SessionLateAnswer, IsWaitedFor) {
    bluez().answerAfter(5s);
    bench.session.want(true);
    bench.pass(60s);
    EXPECT_EQ(bluez().count("GetManagedObjects"), 1);
    EXPECT_EQ(bluez().count("StartDiscovery"), 1);
    EXPECT_GE(bench.reportsIn(1s), 9);
}

}  // namespace

}  // namespace nearcast::bluez

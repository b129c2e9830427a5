// SPDX-License-Identifier: Apache-2.0
#include "doctor/Checks.h"
#include "unit/apps/FakeMachine.h"

#include <gtest/gtest.h>

namespace nearcast::cli {
namespace {

bool says(const Finding& finding, Level level, std::string_view text, std::string_view advice = "") {
    return finding.level == level && finding.text.find(text) != std::string::npos &&
           finding.advice.find(advice) != std::string::npos;
}

class BluezChecks : public testing::Test {
protected:
    BluezChecks() { machine_.reading.adapters.reserve(4); }
    BusAdapter& adapter() { return machine_.reading.adapters.at(0); }
    /// Another one, as good as the first.
    BusAdapter& add(const char* name, const char* address) {
        BusAdapter& other = machine_.reading.adapters.emplace_back(adapter());
        other.name = name;
        other.address = address;
        return other;
    }
    void withoutDaemon() { machine_.reading = {}; }

    FakeMachine machine_ = goodMachine();
};

TEST_F(BluezChecks, ABusThatCannotBeReachedIsAFault) {
    EXPECT_EQ(checkBus(machine_).at(0).level, Level::good);
    withoutDaemon();
    machine_.reading.unreachable = BusProblem{"", "No such file or directory"};
    EXPECT_TRUE(says(checkBus(machine_).at(0), Level::fault, "No such file", "start dbus"));
    EXPECT_TRUE(checkDaemon(machine_).empty());
}

TEST_F(BluezChecks, TheDaemonIsNamedWithItsVersion) {
    EXPECT_EQ(checkDaemon(machine_).at(0).text, "version 5.66, process 412");
}

TEST_F(BluezChecks, ADaemonWithExperimentalInterfacesSaysSo) {
    machine_.files["/proc/412/cmdline"] = std::string("/usr/libexec/bluetooth/bluetoothd\0-n\0-E\0", 40);
    EXPECT_EQ(checkDaemon(machine_).at(0).text, "version 5.66, process 412, experimental interfaces on");
}

TEST_F(BluezChecks, AProgramInNoUsualPlaceIsNotRunForItsVersion) {
    machine_.files["/proc/412/cmdline"] = std::string("/tmp/bluetoothd\0", 16);
    machine_.versions["/tmp/bluetoothd"] = "6.66";
    EXPECT_EQ(checkDaemon(machine_).at(0).text, "of an unknown version, process 412");
}

TEST_F(BluezChecks, AnAbsentDaemonIsAFault) {
    withoutDaemon();
    EXPECT_TRUE(says(checkDaemon(machine_).at(0), Level::fault, "does not run", "systemctl enable --now bluetooth"));
    EXPECT_TRUE(checkPolicy(machine_).empty());
    EXPECT_TRUE(checkPower(machine_).empty());
}

TEST_F(BluezChecks, ADaemonThatTheBusCanStartIsRemarkedUpon) {
    withoutDaemon();
    machine_.reading.available = true;
    EXPECT_TRUE(says(checkDaemon(machine_).at(0), Level::remark, "the bus starts it", "systemctl enable"));
}

TEST_F(BluezChecks, APolicyThatForbidsIsAFault) {
    EXPECT_EQ(checkPolicy(machine_).at(0).level, Level::good);
    machine_.reading.adapters.clear();
    machine_.reading.refused = BusProblem{"org.freedesktop.DBus.Error.AccessDenied", "Rejected"};
    EXPECT_TRUE(says(checkPolicy(machine_).at(0), Level::fault, "forbids", "usermod -aG bluetooth"));
    EXPECT_TRUE(checkPower(machine_).empty());
}

TEST_F(BluezChecks, ADaemonThatDoesNotAnswerIsAFault) {
    machine_.reading.refused = BusProblem{"org.freedesktop.DBus.Error.NoReply", "timed out"};
    EXPECT_TRUE(says(checkPolicy(machine_).at(0), Level::fault, "does not answer: timed out", "restart bluetooth"));
}

TEST_F(BluezChecks, AnAdapterThatIsOffIsAFault) {
    EXPECT_EQ(checkPower(machine_).at(0).level, Level::good);
    adapter().powered = false;
    EXPECT_TRUE(says(checkPower(machine_).at(0), Level::fault, "hci0 (02:4E:43:00:00:AA) is powered off", "power on"));
}

TEST_F(BluezChecks, AnAdapterThatIsOffIsANoteBesideOneThatIsOn) {
    add("hci1", "02:4E:43:00:00:AB").powered = false;
    const auto findings = checkPower(machine_);
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[0].level, Level::good);
    EXPECT_TRUE(says(findings[1], Level::note, "hci1"));
}

TEST_F(BluezChecks, AnAdapterThatTheKernelHasAndTheDaemonHasNotIsAFault) {
    machine_.reading.adapters.clear();
    EXPECT_TRUE(says(checkPower(machine_).at(0), Level::fault, "although the kernel has hci0", "end the program"));
    machine_.kernel.adapters.clear();
    EXPECT_TRUE(checkPower(machine_).empty());
}

TEST_F(BluezChecks, AnAdapterWithoutLowEnergyIsAFaultAndOneThatDoesNotSayIsNot) {
    adapter().central = false;
    EXPECT_TRUE(says(checkLowEnergy(machine_).at(0), Level::fault, "hci0", "Bluetooth 4.0"));
    adapter().central.reset();
    EXPECT_EQ(checkLowEnergy(machine_).at(0).level, Level::good);
}

TEST_F(BluezChecks, AnAdapterWithoutLowEnergyIsANoteBesideOneWithIt) {
    add("hci1", "02:4E:43:00:00:AB");
    adapter().central = false;
    EXPECT_TRUE(says(checkLowEnergy(machine_).at(0), Level::note, "hci0", "Bluetooth 4.0"));
    EXPECT_EQ(checkLowEnergy(machine_).at(1).level, Level::good);
}

TEST_F(BluezChecks, OneAdapterIsNoChoice) { EXPECT_TRUE(checkChoice(machine_).empty()); }

TEST_F(BluezChecks, TheBestAdapterIsNamedWithItsReasons) {
    add("hci1", "02:4E:43:00:00:AB");
    add("hci2", "02:4E:43:00:00:AC").powered = false;
    add("hci3", "02:4E:43:00:00:AD");
    adapter().central = false;
    EXPECT_TRUE(says(checkChoice(machine_).at(0), Level::note,
                     "'bluez' takes hci1 (02:4E:43:00:00:AB), the best of them: hci0 is of the classic kind, hci2 is "
                     "powered off, hci3 is as good, with a higher number",
                     "'--radio bluez:02:4E:43:00:00:AB'"));
}

TEST_F(BluezChecks, AnAdapterThatIsOffIsBetterThanAClassicOne) {
    add("hci1", "").powered = false;
    adapter().central = false;
    EXPECT_TRUE(says(checkChoice(machine_).at(0), Level::note, "'bluez' takes hci1, the best", "bluez:hci1'"));
}

TEST_F(BluezChecks, AdaptersWithTheSameAddressAreRemarkedUpon) {
    EXPECT_TRUE(checkAddresses(machine_).empty());
    machine_.kernel.adapters.push_back(controller(1));
    const auto findings = checkAddresses(machine_);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_TRUE(
        says(findings[0], Level::remark, "hci0 and hci1 have the same address 02:4E:43:00:00:AA", "different makes"));
    machine_.kernel.adapters[0].address = machine_.kernel.adapters[1].address = {};
    EXPECT_TRUE(checkAddresses(machine_).empty()) << "they have not been asked yet";
}

TEST_F(BluezChecks, AnAdapterWithoutAnAddressIsANote) {
    adapter().address.clear();
    EXPECT_TRUE(says(checkAddresses(machine_).at(0), Level::note, "hci0 has no address", "number"));
    EXPECT_EQ(checkPower(machine_).at(0).text, "hci0 is powered on");
}

TEST_F(BluezChecks, MissingAdvertisementMonitorsAreANoteThatSaysHowTheyAreHad) {
    EXPECT_EQ(checkMonitors(machine_).at(0).level, Level::good);
    adapter().advertisementMonitors = false;
    const Finding missing = checkMonitors(machine_).at(0);
    EXPECT_TRUE(says(missing, Level::note, "no advertisement monitors", "systemctl edit bluetooth"));
    EXPECT_TRUE(says(missing, Level::note, "started without -E", "/usr/libexec/bluetooth/bluetoothd -E"));
}

TEST_F(BluezChecks, AScanThatBluetoothdLosesStaysDeadWithoutMonitorsAndWithoutTheCapability) {
    adapter().advertisementMonitors = false;
    machine_.allowed.netAdmin = false;
    EXPECT_TRUE(says(checkMending(machine_).at(0), Level::note, "stays dead", "bluetoothd with -E"));
    machine_.allowed.netAdmin = true;
    EXPECT_TRUE(says(checkMending(machine_).at(0), Level::good, "begun again in the kernel"));
    machine_.allowed.netAdmin = false;
    adapter().advertisementMonitors = true;
    EXPECT_TRUE(says(checkMending(machine_).at(0), Level::good, "a monitor keeps"));
    withoutDaemon();
    EXPECT_TRUE(checkMending(machine_).empty());
}

TEST_F(BluezChecks, SomebodyElsesDiscoveryIsANoteAndWhatBesideNeeds) {
    EXPECT_TRUE(checkDiscovery(machine_).empty());
    EXPECT_TRUE(says(checkSomebodyDiscovers(machine_).at(0), Level::remark, "nobody discovers", "bluetoothctl scan"));
    adapter().discovering = true;
    EXPECT_EQ(checkDiscovery(machine_).at(0).level, Level::note);
    EXPECT_EQ(checkSomebodyDiscovers(machine_).at(0).level, Level::good);
}

}  // namespace
}  // namespace nearcast::cli

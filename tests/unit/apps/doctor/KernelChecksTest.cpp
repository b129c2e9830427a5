// SPDX-License-Identifier: Apache-2.0
#include "doctor/Checks.h"
#include "unit/apps/FakeMachine.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace nearcast::cli {
namespace {

bool says(const Finding& finding, Level level, std::string_view text, std::string_view advice = "") {
    return finding.level == level && finding.text.find(text) != std::string::npos &&
           finding.advice.find(advice) != std::string::npos;
}

class KernelChecks : public testing::Test {
protected:
    FakeMachine machine_ = goodMachine();
};

TEST_F(KernelChecks, AKernelWithBluetoothIsNamed) {
    EXPECT_TRUE(says(checkKernel(machine_).at(0), Level::good, "Linux 6.1.0-18-amd64 with Bluetooth"));
}

TEST_F(KernelChecks, AKernelWithoutBluetoothIsAFault) {
    machine_.kernel = {{}, EAFNOSUPPORT};
    EXPECT_TRUE(says(checkKernel(machine_).at(0), Level::fault, "without Bluetooth", "modprobe bluetooth"));
}

TEST_F(KernelChecks, AKernelThatMayNotBeAskedIsAFault) {
    machine_.kernel = {{}, EPERM};
    EXPECT_TRUE(says(checkKernel(machine_).at(0), Level::fault, "Operation not permitted", "sandbox"));
}

TEST_F(KernelChecks, LoadedDriversAreNamed) {
    machine_.files["/sys/module/hci_vhci/refcnt"] = "0\n";
    EXPECT_EQ(checkDrivers(machine_).at(0).text, "btusb, hci_vhci");
}

TEST_F(KernelChecks, NoDriverIsAFaultOnlyWhereThereIsNoAdapter) {
    machine_.files.erase("/sys/module/btusb/refcnt");
    EXPECT_EQ(checkDrivers(machine_).at(0).level, Level::note);
    machine_.kernel.adapters.clear();
    EXPECT_TRUE(says(checkDrivers(machine_).at(0), Level::fault, "no driver", "modprobe btusb"));
}

TEST_F(KernelChecks, AdaptersAreNamedWithAddressAndBus) {
    machine_.kernel.adapters.push_back(controller(1));
    machine_.kernel.adapters[1].address = {};
    const auto findings = checkAdapters(machine_);
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[0].text, "hci0 (02:4E:43:00:00:AA, USB)");
    EXPECT_EQ(findings[1].text, "hci1 (USB)");
}

TEST_F(KernelChecks, AnAdapterWithoutLowEnergyIsAFaultUnlessAnotherHasIt) {
    machine_.kernel.adapters[0].lowEnergy = false;
    EXPECT_TRUE(says(checkAdapters(machine_).at(0), Level::fault, "cannot listen to Low Energy", "Bluetooth 4.0"));
    machine_.kernel.adapters.push_back(controller(1));
    EXPECT_TRUE(says(checkAdapters(machine_).at(0), Level::note, "cannot listen to Low Energy"));
    EXPECT_EQ(checkAdapters(machine_).at(1).level, Level::good);
}

TEST_F(KernelChecks, NoAdapterIsAFault) {
    machine_.kernel.adapters.clear();
    EXPECT_TRUE(says(checkAdapters(machine_).at(0), Level::fault, "knows no Bluetooth adapter", "plug one in"));
}

TEST_F(KernelChecks, SwitchesOfOtherRadiosDoNotMatter) {
    EXPECT_TRUE(says(checkSwitches(machine_).at(0), Level::good, "nothing is blocked"));
}

TEST_F(KernelChecks, ASoftBlockIsAFaultThatRfkillMends) {
    machine_.files["/sys/class/rfkill/rfkill1/soft"] = "1\n";
    EXPECT_TRUE(says(checkSwitches(machine_).at(0), Level::fault, "hci0 is blocked", "rfkill unblock bluetooth"));
}

TEST_F(KernelChecks, AHardBlockIsAFaultThatAHandMends) {
    machine_.files["/sys/class/rfkill/rfkill1/hard"] = "1\n";
    EXPECT_TRUE(says(checkSwitches(machine_).at(0), Level::fault, "switched off by a switch", "switch wireless on"));
}

TEST_F(KernelChecks, ABlockIsARemarkWhereAnotherAdapterIsOpen) {
    machine_.files["/sys/class/rfkill/rfkill1/soft"] = "1\n";
    machine_.files["/sys/class/rfkill/rfkill2/type"] = "bluetooth\n";
    machine_.files["/sys/class/rfkill/rfkill2/soft"] = "0\n";
    const auto findings = checkSwitches(machine_);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_TRUE(says(findings[0], Level::remark, "hci0 is blocked"));
}

TEST_F(KernelChecks, EachCapabilityIsAskedForByItself) {
    machine_.allowed = {true, false};
    EXPECT_EQ(checkTaking(machine_).at(0).level, Level::good);
    EXPECT_TRUE(says(checkListening(machine_).at(0), Level::fault, "CAP_NET_RAW", "+eip /usr/bin/nearcast"));
    machine_.allowed = {false, true};
    EXPECT_TRUE(says(checkTaking(machine_).at(0), Level::fault, "CAP_NET_ADMIN", "+eip /usr/bin/nearcast"));
    EXPECT_EQ(checkListening(machine_).at(0).level, Level::good);
}

TEST_F(KernelChecks, AControllerThatIsInUseCannotBeTaken) {
    machine_.kernel.adapters[0].up = true;
    const auto findings = checkUse(machine_);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_TRUE(says(findings[0], Level::fault, "hci0 is in use", "systemctl disable --now bluetooth"));
    EXPECT_TRUE(says(findings[0], Level::fault, "hci0 is in use", "AutoEnable=false below [Policy]"));
}

TEST_F(KernelChecks, AControllerThatBluetoothdSwitchesOnCanBeTakenForAWhileOnly) {
    const auto findings = checkUse(machine_);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_TRUE(says(findings[0], Level::remark, "bluetoothd switches hci0 on by itself", "AutoEnable=false"));
}

TEST_F(KernelChecks, AControllerIsFreeWhereBluetoothdDoesNotSwitchItOn) {
    machine_.files["/etc/bluetooth/main.conf"] = "[Policy]\nAutoEnable=false\n";
    EXPECT_TRUE(checkUse(machine_).empty());
    machine_.files.clear();
    machine_.reading.bluetoothd = false;
    EXPECT_TRUE(checkUse(machine_).empty());
}

}  // namespace
}  // namespace nearcast::cli

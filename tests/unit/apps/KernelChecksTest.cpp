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

class KernelChecks : public testing::Test {
protected:
    FakeMachine machine_ = goodMachine();
};

TEST_F(KernelChecks, AKernelWithBluetoothIsNamed) {
    EXPECT_TRUE(says(checkKernel(machine_).at(0), Level::good, "Linux 6.1.0-18-amd64 with Bluetooth"));
}

TEST_F(KernelChecks, AKernelWithoutBluetoothIsAFault) {
    machine_.files.erase("/sys/class/bluetooth/hci0/uevent");
    machine_.files.erase("/sys/class/bluetooth/hci0:11/uevent");
    EXPECT_TRUE(says(checkKernel(machine_).at(0), Level::fault, "without Bluetooth", "modprobe bluetooth"));
}

TEST_F(KernelChecks, LoadedDriversAreNamed) {
    machine_.files["/sys/module/hci_vhci/refcnt"] = "0\n";
    EXPECT_EQ(checkDrivers(machine_).at(0).text, "btusb, hci_vhci");
}

TEST_F(KernelChecks, NoDriverIsAFaultOnlyWhereThereIsNoAdapter) {
    machine_.files.erase("/sys/module/btusb/refcnt");
    EXPECT_EQ(checkDrivers(machine_).at(0).level, Level::note);
    machine_.files.erase("/sys/class/bluetooth/hci0/uevent");
    EXPECT_TRUE(says(checkDrivers(machine_).at(0), Level::fault, "no driver", "modprobe btusb"));
}

TEST_F(KernelChecks, AdaptersAreNamedWithoutTheirConnections) {
    machine_.files["/sys/class/bluetooth/hci10/uevent"] = "";
    machine_.files["/sys/class/bluetooth/hci2/uevent"] = "";
    EXPECT_EQ(checkAdapters(machine_).at(0).text, "hci0, hci2, hci10");
}

TEST_F(KernelChecks, NoAdapterIsAFault) {
    machine_.files.erase("/sys/class/bluetooth/hci0/uevent");
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
    EXPECT_EQ(checkTaking(machine_).at(0).level, Level::good);
    EXPECT_EQ(checkListening(machine_).at(0).level, Level::good);
    machine_.files["/proc/self/status"] = "CapEff:\t0000000000001000\n";  // bit 12: CAP_NET_ADMIN
    EXPECT_EQ(checkTaking(machine_).at(0).level, Level::good);
    EXPECT_TRUE(says(checkListening(machine_).at(0), Level::fault, "CAP_NET_RAW", "setcap"));
    machine_.files["/proc/self/status"] = "CapEff:\t0000000000002000\n";  // bit 13: CAP_NET_RAW
    EXPECT_TRUE(says(checkTaking(machine_).at(0), Level::fault, "CAP_NET_ADMIN", "setcap"));
    EXPECT_EQ(checkListening(machine_).at(0).level, Level::good);
}

TEST_F(KernelChecks, WithoutAStatusThereAreNoCapabilities) {
    machine_.files.erase("/proc/self/status");
    EXPECT_EQ(checkTaking(machine_).at(0).level, Level::fault);
}

}  // namespace
}  // namespace nearcast::cli

// SPDX-License-Identifier: Apache-2.0
#include "radios/RadioList.h"
#include "unit/apps/FakeMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

namespace nearcast::cli {
namespace {

RadioEntry entry(const Machine& machine, std::string_view radio) {
    for (const RadioEntry& one : radiosOf(machine)) {
        if (one.radio == radio) return one;
    }
    ADD_FAILURE() << "no radio " << radio;
    return {};
}

bool refuses(const RadioEntry& entry, std::string_view about, std::string_view advice) {
    return !entry.opens && entry.about.find(about) != std::string::npos &&
           entry.advice.find(advice) != std::string::npos;
}

class RadioList : public testing::Test {
protected:
    FakeMachine machine_ = goodMachine();
};

TEST_F(RadioList, OnAGoodMachineBluezAndTheControllerOpen) {
    for (const std::string_view radio : {"auto", "bluez", "bluez:hci0", "hci:0"}) {
        EXPECT_TRUE(entry(machine_, radio).opens) << radio;
    }
    EXPECT_EQ(entry(machine_, "auto").about, "takes bluez");
}

TEST_F(RadioList, AnAdapterOfBluezIsListedByItsNumberAndByItsAddress) {
    EXPECT_EQ(entry(machine_, "bluez").about, "bluetoothd, by hci0");
    EXPECT_EQ(entry(machine_, "bluez:hci0").about, "02:4E:43:00:00:AA, powered on");
    EXPECT_EQ(entry(machine_, "bluez:02:4E:43:00:00:AA").about, "hci0 at present, powered on");
}

TEST_F(RadioList, TheBestOfSeveralAdaptersIsWhatBluezTakes) {
    machine_.reading.adapters[0].central = false;
    machine_.reading.adapters.push_back({"hci1", "02:4E:43:00:00:AB", true, false, true, true});
    EXPECT_EQ(entry(machine_, "bluez").about, "bluetoothd, by hci1, the best adapter");
    EXPECT_TRUE(refuses(entry(machine_, "bluez:hci0"), "without Low Energy", "Bluetooth 4.0"));
    EXPECT_TRUE(refuses(entry(machine_, "bluez:02:4E:43:00:00:AA"), "hci0 at present, without Low Energy", ""));
    machine_.reading.adapters.pop_back();
    EXPECT_TRUE(refuses(entry(machine_, "bluez"), "hci0 is of the classic kind", "Bluetooth 4.0"));
}

TEST_F(RadioList, AnAddressOfTwoAdaptersIsListedOnceAndNoneNotAtAll) {
    machine_.reading.adapters.push_back(machine_.reading.adapters[0]);
    machine_.reading.adapters[1].name = "hci1";
    machine_.reading.adapters.push_back({"hci2", "", true, false, true, true});
    const auto all = radiosOf(machine_);
    const auto count = [&](std::string_view radio) {
        return std::count_if(all.begin(), all.end(), [&](const RadioEntry& one) { return one.radio == radio; });
    };
    EXPECT_EQ(count("bluez:02:4E:43:00:00:AA"), 1);
    EXPECT_EQ(count("bluez:hci1"), 1);
    EXPECT_EQ(count("bluez:"), 0);
    EXPECT_EQ(entry(machine_, "bluez:hci2").about, "no address, powered on");
}

TEST_F(RadioList, WhatNeedsNoRadioOpensAnywhere) {
    for (const std::string_view radio : {"simulator", "replay:FILE", "none"}) {
        EXPECT_TRUE(entry(FakeMachine(), radio).opens) << radio;
    }
}

TEST_F(RadioList, AnAdapterThatIsOffDoesNotOpenByBluez) {
    machine_.reading.adapters[0].powered = false;
    EXPECT_TRUE(refuses(entry(machine_, "bluez:hci0"), "02:4E:43:00:00:AA, powered off", "power on"));
    EXPECT_TRUE(refuses(entry(machine_, "bluez"), "powered off", "power on"));
    EXPECT_TRUE(refuses(entry(machine_, "auto"), "takes bluez: hci0 (02:4E:43:00:00:AA) is powered off", "power on"));
}

TEST_F(RadioList, WithoutCapabilitiesTheControllerDoesNotOpen) {
    machine_.allowed = {};
    EXPECT_TRUE(refuses(entry(machine_, "hci:0"), "CAP_NET_ADMIN", "setcap"));
    EXPECT_TRUE(refuses(entry(machine_, "hci:0?beside"), "CAP_NET_RAW", "setcap"));
    EXPECT_TRUE(entry(machine_, "bluez").opens);
}

TEST_F(RadioList, BluezOpensInAContainerThatHasTheBusAlone) {
    machine_.kernel = {{}, EAFNOSUPPORT};
    EXPECT_TRUE(entry(machine_, "bluez").opens);
    machine_.reading.adapters.clear();
    EXPECT_TRUE(refuses(entry(machine_, "bluez"), "knows no Bluetooth adapter", "plug one in"));
}

TEST_F(RadioList, AControllerThatIsInUseOrBlockedDoesNotOpen) {
    machine_.kernel.adapters[0].up = true;
    EXPECT_TRUE(refuses(entry(machine_, "hci:0"), "in use", "systemctl disable --now bluetooth"));
    machine_.kernel.adapters[0].blocked.soft = true;
    EXPECT_TRUE(refuses(entry(machine_, "hci:0"), "hci0 is blocked", "rfkill unblock"));
    machine_.kernel.adapters[0].blocked.hard = true;
    EXPECT_TRUE(refuses(entry(machine_, "hci:0?beside"), "switched off at the machine", ""));
}

TEST_F(RadioList, ListeningBesideOpensWhileTheAdapterIsOn) {
    EXPECT_TRUE(refuses(entry(machine_, "hci:0?beside"), "hci0 is off", "power on"));
    machine_.kernel.adapters[0].up = true;
    EXPECT_TRUE(entry(machine_, "hci:0?beside").opens);
}

TEST_F(RadioList, WithoutAnythingTheAutomaticRadioIsNone) {
    FakeMachine empty;
    empty.kernel.error = EAFNOSUPPORT;
    EXPECT_TRUE(refuses(entry(empty, "auto"), "neither bluetoothd nor an adapter", "doctor"));
    EXPECT_TRUE(refuses(entry(empty, "hci"), "without Bluetooth", "modprobe"));
    EXPECT_TRUE(refuses(entry(empty, "bluez"), "bluetoothd does not run", "systemctl"));
}

}  // namespace
}  // namespace nearcast::cli

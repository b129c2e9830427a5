// SPDX-License-Identifier: Apache-2.0
#include "doctor/Checks.h"
#include "machine/Facts.h"
#include "unit/apps/FakeMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

namespace nearcast::cli {
namespace {

Level worstOf(const std::vector<CheckedFinding>& findings, std::string_view check) {
    Level worst = Level::good;
    for (const auto& one : findings) {
        if (one.check == check) worst = std::max(worst, one.finding.level);
    }
    return worst;
}

TEST(Checks, OnAGoodMachineNothingIsRemarked) {
    FakeMachine machine = goodMachine();
    machine.files["/etc/bluetooth/main.conf"] = "[Policy]\nAutoEnable=false\n";
    for (const Way way : {byBluez, byUser}) {
        const auto findings = examine(machine, way);
        EXPECT_FALSE(findings.empty());
        for (const auto& one : findings) EXPECT_EQ(one.finding.level, Level::good) << one.check;
    }
}

TEST(Checks, WhatIsWrongElsewhereIsANote) {
    FakeMachine machine = goodMachine();
    machine.reading = {};
    EXPECT_EQ(worstOf(examine(machine, byBluez), "bluetoothd"), Level::fault);
    EXPECT_EQ(worstOf(examine(machine, byUser), "bluetoothd"), Level::note);
    machine.allowed = {};
    EXPECT_EQ(worstOf(examine(machine, byUser), "capabilities"), Level::fault);
    EXPECT_EQ(worstOf(examine(machine, byBluez), "capabilities"), Level::note);
}

TEST(Checks, InAContainerThatHasTheBusAloneTheKernelDoesNotMatterToBluez) {
    FakeMachine machine = goodMachine();
    machine.kernel = {{}, EAFNOSUPPORT};
    machine.files.erase("/sys/module/btusb/refcnt");
    EXPECT_EQ(worstOf(examine(machine, byBluez), "kernel"), Level::note);
    EXPECT_EQ(worstOf(examine(machine, byUser), "kernel"), Level::fault);
    machine.reading.adapters[0].powered = false;
    EXPECT_EQ(worstOf(examine(machine, byBluez), "kernel"), Level::fault);
}

TEST(Checks, ListeningBesideNeedsADiscoveryThatOthersDoNot) {
    EXPECT_EQ(worstOf(examine(goodMachine(), byBeside), "discovery"), Level::remark);
    EXPECT_EQ(worstOf(examine(goodMachine(), byUser), "discovery"), Level::good);
}

TEST(Checks, ARecordingNeedsNothingOfTheMachine) { EXPECT_TRUE(examine(FakeMachine(), noWay).empty()); }

TEST(Checks, TheRadioStringTellsTheWay) {
    EXPECT_EQ(wayOf("bluez"), byBluez);
    EXPECT_EQ(wayOf("bluez:hci1"), byBluez);
    EXPECT_EQ(wayOf("none"), byBluez);
    EXPECT_EQ(wayOf("hci"), byUser);
    EXPECT_EQ(wayOf("hci:1"), byUser);
    EXPECT_EQ(wayOf("hci:0?beside"), byBeside);
    EXPECT_EQ(wayOf("simulator?speed=max"), noWay);
    EXPECT_EQ(wayOf("replay:hci.btsnoop"), noWay);
}

TEST(Facts, TheAutomaticRadioIsThatOfThePlatform) {
    FakeMachine machine = goodMachine();
    EXPECT_EQ(automaticRadio(machine), "bluez");
    machine.reading = {};
    machine.kernel.adapters = {controller(2), controller(3)};
    EXPECT_EQ(automaticRadio(machine), "hci:2");
    EXPECT_EQ(automaticRadio(FakeMachine()), "none");
}

}  // namespace
}  // namespace nearcast::cli

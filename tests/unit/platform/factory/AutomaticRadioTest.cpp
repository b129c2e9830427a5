// SPDX-License-Identifier: Apache-2.0
#include "platform/factory/AutomaticRadio.h"

#include <gtest/gtest.h>

namespace nearcast {

namespace {

hci::HciAdapter controller(int index, std::optional<bool> lowEnergy = true) {
    hci::HciAdapter adapter;
    adapter.index = index;
    adapter.lowEnergy = lowEnergy;
    return adapter;
}

TEST(AutomaticRadio, IsBluezWhereThereIsBluetoothd) {
    EXPECT_EQ(automaticRadio({.bluetoothd = true, .controllers = {controller(0)}}), "bluez");
}

TEST(AutomaticRadio, IsBluezEvenWithoutAControllerForOneMayBePluggedIn) {
    EXPECT_EQ(automaticRadio({.bluetoothd = true, .controllers = {}}), "bluez");
}

TEST(AutomaticRadio, IsTheFirstControllerWhereThereIsNoBluetoothd) {
    EXPECT_EQ(automaticRadio({.bluetoothd = false, .controllers = {controller(1), controller(2)}}), "hci:1");
}

TEST(AutomaticRadio, PassesOverAControllerWithoutLowEnergy) {
    EXPECT_EQ(automaticRadio({.bluetoothd = false, .controllers = {controller(0, false), controller(2)}}), "hci:2");
}

TEST(AutomaticRadio, TakesAControllerThatHasNotBeenAskedYet) {
    EXPECT_EQ(automaticRadio({.bluetoothd = false, .controllers = {controller(0, std::nullopt)}}), "hci:0");
}

TEST(AutomaticRadio, IsNoneWhereThereIsNothing) {
    EXPECT_EQ(automaticRadio({.bluetoothd = false, .controllers = {}}), "none");
    EXPECT_EQ(automaticRadio({.bluetoothd = false, .controllers = {controller(0, false)}}), "none");
}

}  // namespace

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SimulatorSettings.h"

#include <nearcast/QXBluetoothManager.h>

#include <memory>
#include <utility>

namespace nearcast::simulator {

namespace {

SettingRecord recordOf(const Dongle& dongle, const Device& device) {
    const bool drawer = device.type == Device::Type::drawer;
    SettingRecord record;
    const auto put = [&](std::string_view key, SettingValue value) { record.emplace(key, std::move(value)); };
    put(kQXDeviceType, static_cast<std::int32_t>(drawer ? QXDeviceTypeTFTillfox : QXDeviceTypeDesktopPrinter));
    put(kQXWithDrawer, drawer || device.withDrawer);
    put(kQXDongleMACAddr, dongle.address);
    put(kQXNickName, device.nickName.value_or("(null)"));
    if (device.portSettings) put(kQXPortSettings, *device.portSettings);
    if (device.threshold) put(kQXThreshouldRSSI, *device.threshold);
    return record;
}

}  // namespace

Settings simulatorSettings(const Scene& scene) {
    Settings settings;
    for (const Dongle& dongle : scene.dongles) {
        if (!dongle.device) continue;
        settings.emplace(dongle.device->portName,
                         std::make_shared<const SettingRecord>(recordOf(dongle, *dongle.device)));
    }
    return settings;
}

}  // namespace nearcast::simulator

// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SimulatorOptions.h"

#include "platform/simulator/SceneReader.h"
#include "platform/timeline/TimelinePlatform.h"

#include <nearcast/QXBluetoothManager.h>

#include <charconv>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace nearcast::simulator {

namespace {

std::uint64_t parseSeed(const RadioString& radio, std::string_view text) {
    std::uint64_t seed = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, seed);
    if (result.ec != std::errc() || result.ptr != end) {
        throw std::invalid_argument("radio '" + radio.text + "': seed '" + std::string(text) +
                                    "' is not a whole number from 0 to 18446744073709551615");
    }
    return seed;
}

// The waiter passes the front desk and its till within 9 s and reaches the bar after 14 s. The terrace's dongle is
// switched off from 3 s to 30 s, so that its silence is told 10 s after the start, and back when the waiter gets there.
constexpr std::string_view restaurant = R"json({
    "name": "Restaurant",
    "seed": 1,
    "floor": {
        "width": 16,
        "depth": 10,
        "walls": [
            {"name": "kitchen", "points": [[10, 0], [10, 3.6]], "loss": 5},
            {"name": "kitchen, beyond the door", "points": [[10, 4.8], [10, 6], [16, 6]], "loss": 5},
            {"name": "bar counter", "points": [[5.5, 8.4], [9.5, 8.4]], "loss": 1},
            {"name": "terrace window", "points": [[0, 7], [2.6, 7]], "loss": 2},
            {"name": "pillar", "points": [[5.8, 4.8], [6.2, 4.8], [6.2, 5.2], [5.8, 5.2], [5.8, 4.8]], "loss": 1.5}
        ]
    },
    "user": {
        "speed": 1.3,
        "loop": true,
        "bodyLoss": 6,
        "path": [
            {"at": [3.6, 4]},
            {"at": [2, 1.8], "pause": 3, "facing": -110},
            {"at": [4.2, 1.8], "pause": 2, "facing": -90},
            {"at": [6.4, 7.8], "pause": 3, "facing": 90},
            {"at": [8.6, 7.8], "pause": 3.5, "facing": 90},
            {"at": [9.4, 4.2]},
            {"at": [11, 4.2]},
            {"at": [13, 2], "pause": 10, "facing": -60},
            {"at": [11, 4.2]},
            {"at": [9.4, 4.2]},
            {"at": [3.2, 6]},
            {"at": [1.8, 8], "pause": 8, "facing": 120},
            {"at": [3.2, 6]}
        ]
    },
    "dongles": [
        {
            "address": "02:4E:43:00:00:01", "at": [1.6, 0.8], "txPower": 0, "interval": 0.1,
            "device": {"portName": "BT:Front Desk", "type": "printer", "withDrawer": true,
                       "portSettings": "receipt", "threshold": -62, "nickName": "Front desk, with drawer"}
        },
        {
            "address": "02:4E:43:00:00:02", "at": [4.4, 0.8], "txPower": 0, "interval": 0.1525,
            "device": {"portName": "BT:Front Till", "type": "drawer", "threshold": -62, "nickName": "Till at the front"}
        },
        {
            "address": "02:4E:43:00:00:03", "at": [6.2, 9], "txPower": 0, "interval": 0.1,
            "device": {"portName": "BT:Bar", "type": "printer",
                       "portSettings": "slips", "threshold": -62, "nickName": "Bar"}
        },
        {
            "address": "02:4E:43:00:00:04", "at": [8.8, 9], "txPower": -4, "interval": 0.2, "payload": "name",
            "device": {"portName": "BT:Bar Till", "type": "drawer", "threshold": -66, "nickName": "Till at the bar"}
        },
        {
            "address": "02:4E:43:00:00:05", "at": [13.6, 1], "txPower": 4, "interval": 0.25, "payload": "both",
            "device": {"portName": "BT:Kitchen", "type": "printer",
                       "portSettings": "orders", "threshold": -60, "nickName": "Kitchen"}
        },
        {
            "address": "02:4E:43:00:00:06", "at": [1.2, 9], "txPower": 0, "interval": 0.1525,
            "off": [[3, 30]], "offEvery": 60,
            "device": {"portName": "BT:Terrace", "type": "printer", "nickName": "Terrace"}
        }
    ]
}
)json";

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

SimulatorOptions SimulatorOptions::from(const RadioString& radio) {
    SimulatorOptions options;
    options.sceneFile = radio.argument;
    if (const auto seed = radio.options.find("seed"); seed != radio.options.end()) {
        options.seed = parseSeed(radio, seed->second);
    }
    options.speed = parseSpeed(radio);
    return options;
}

Scene SimulatorOptions::scene() const {
    Scene scene = sceneFile.empty() ? readScene(builtInScene(), builtInSceneName) : readSceneFile(sceneFile);
    if (seed) scene.seed = *seed;
    return scene;
}

std::string_view builtInScene() { return restaurant; }

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

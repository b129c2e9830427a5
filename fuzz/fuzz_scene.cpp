// SPDX-License-Identifier: Apache-2.0
// Any bytes as a scene; what is one is run for some seconds, alone and with a manager who listens.
#include "Expect.h"
#include "core/Manager.h"
#include "platform/json/JSONSerialization.h"
#include "platform/simulator/SceneReader.h"
#include "platform/simulator/Shop.h"
#include "platform/simulator/SimulatorOptions.h"
#include "platform/simulator/SimulatorPlatform.h"
#include "settings/SavedSettings.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace nearcast::fuzz {

namespace {

using namespace simulator;

const JSONSerialization JSON;

class NoConsole : public Console {
public:
    void NSLog(std::string_view /*line*/) noexcept override {}
};

bool isReading(std::int32_t RSSI) { return (RSSI >= kQXMinRSSI && RSSI <= 20) || RSSI == kQXInvalidRSSI; }

void checkShop(const Scene& scene) {
    constexpr int advertisements = 300;
    Shop shop(scene);
    Shop again(scene);
    Shop::Time before{0};
    for (int count = 0; count < advertisements && shop.due(); ++count) {
        const Advertisement one = shop.next();
        expect(one.at >= before, "time does not go back");
        expect(one.dongle < scene.dongles.size(), "a dongle of the scene has sent it");
        expect(!one.RSSI || isReading(*one.RSSI), "a controller may report it");
        const Advertisement other = again.next();
        expect(one.at == other.at && one.dongle == other.dongle && one.RSSI == other.RSSI,
               "the same scene with the same seed is the same");
        before = one.at;
    }
}

void checkSettings(const Scene& scene) {
    const Settings settings = simulatorSettings(scene);
    const auto text = savedSettings(settings, JSON);
    expect(text.has_value(), "a scene's devices can be saved");
    const auto loaded = loadedSettings(*text, JSON);
    expect(loaded && loaded->size() == settings.size(), "and loaded again");
}

/// What a manager in the shop tells is of the dongles that are there.
void checkManager(const Scene& scene) {
    NoConsole console;
    SimulatorPlatform platform(console, JSON, nullptr, scene);
    Manager manager(&platform, platform);
    manager.init();
    manager.setSettings(simulatorSettings(scene));
    std::set<std::string, std::less<>> addresses;
    for (const Dongle& dongle : scene.dongles) addresses.insert(dongle.address);
    auto delegate = std::make_shared<QXNearcastManagerDelegate>();
    delegate->didDiscoverPort = [&](std::string_view, QXDeviceType, std::string_view MACAddr, std::int32_t RSSI) {
        expect(addresses.contains(MACAddr), "what is heard is there");
        expect(isReading(RSSI) && RSSI != kQXInvalidRSSI, "a signal is a reading");
    };
    delegate->didUpdateState = [&](std::string_view, std::string_view MACAddr) {
        expect(addresses.contains(MACAddr), "what falls silent is there");
    };
    manager.setDelegate(delegate);
    manager.startScan();
    platform.timeline().runUntil(std::chrono::seconds(6));
    manager.stopScan();
}

void checkScene(std::string_view text) {
    Scene scene;
    try {
        scene = readScene(text, "input");
    } catch (const SceneError& problem) {
        expect(std::string_view(problem.what()).starts_with("input: "), "the message names the scene");
        return;
    }
    checkShop(scene);
    checkSettings(scene);
    checkManager(scene);
}

}  // namespace

}  // namespace nearcast::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::checkScene({reinterpret_cast<const char*>(data), size});
    return 0;
}

// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONSerialization.h"
#include "platform/simulator/SimulatorOptions.h"
#include "platform/simulator/SimulatorPlatform.h"
#include "unit/platform/simulator/SimulatorRadioFixture.h"

#include <nearcast/QXNearcastManager.h>

#include <gtest/gtest.h>

#include <map>

namespace nearcast::simulator {

namespace {

/// The manager of this process in the built-in scene, and what it last said of each port.
struct ManagerBench {
    ManagerBench() {
        const auto options = SimulatorOptions::from(RadioString::parse("simulator?speed=max"));
        auto own = std::make_unique<SimulatorPlatform>(console, JSON, nullptr, options.scene());
        platform = own.get();
        setCurrentPlatform(std::move(own));
        const auto delegate = std::make_shared<QXNearcastManagerDelegate>();
        delegate->didDiscoverPort = [this](std::string_view port, QXDeviceType type, std::string_view,
                                           std::int32_t RSSI) {
            near.insert_or_assign(std::string(port), RSSI);
            types.insert_or_assign(std::string(port), type);
        };
        delegate->didUpdateState = [this](std::string_view port, std::string_view) { gone.emplace_back(port); };
        QXNearcastManager& manager = QXNearcastManager::sharedManager();
        manager.setSettings(simulatorSettings(platform->scene()));
        manager.setDelegate(delegate);
        EXPECT_TRUE(manager.startScan());
    }
    void runUntil(int seconds) const { platform->timeline().runUntil(std::chrono::seconds(seconds)); }

    static inline LineConsole console;  // like the platform, it lives as long as the process
    static inline const JSONSerialization JSON;
    SimulatorPlatform* platform = nullptr;
    std::map<std::string, std::int32_t> near;
    std::map<std::string, QXDeviceType> types;
    std::vector<std::string> gone;
};

// One test, for there is one manager in a process.
TEST(ManagerInTheShop, HearsAllDevicesByTheirPortsAndTellsOfTheOneThatIsSwitchedOff) {
    ManagerBench bench;
    bench.runUntil(4);
    EXPECT_EQ(bench.types, (std::map<std::string, QXDeviceType>{{"BT:Bar", QXDeviceTypeDesktopPrinter},
                                                                {"BT:Bar Till", QXDeviceTypeTFTillfox},
                                                                {"BT:Front Desk", QXDeviceTypeDesktopPrinter},
                                                                {"BT:Front Till", QXDeviceTypeTFTillfox},
                                                                {"BT:Kitchen", QXDeviceTypeDesktopPrinter},
                                                                {"BT:Terrace", QXDeviceTypeDesktopPrinter}}));
    EXPECT_GT(bench.near.at("BT:Front Desk"), -62) << "the waiter stands before it";
    EXPECT_LT(bench.near.at("BT:Bar"), -65);
    bench.runUntil(9);
    EXPECT_TRUE(bench.gone.empty());
    bench.runUntil(10);
    EXPECT_EQ(bench.gone, std::vector<std::string>{"BT:Terrace"});
    bench.runUntil(16);
    EXPECT_GT(bench.near.at("BT:Bar"), -62) << "now the waiter is here";
    EXPECT_LT(bench.near.at("BT:Front Desk"), -65);
    EXPECT_EQ(bench.gone.size(), 1U);
}

}  // namespace

}  // namespace nearcast::simulator

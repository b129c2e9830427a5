// SPDX-License-Identifier: Apache-2.0
// Saving and loading a registry of 100,000 devices: through the manager, its lock and its JSON.
#include "core/Manager.h"
#include "core/Runs.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace nearcast::bench {

namespace {

class QuietConsole : public Console {
public:
    void NSLog(std::string_view line) noexcept override {
        std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
    }
};

/// As a shop registers them: each key that there is, every fourth name with a letter beyond ASCII.
SettingRecord recordOf(std::uint32_t device) {
    std::array<char, 24> address{};
    std::snprintf(address.data(), address.size(), "02:4E:43:%02X:%02X:%02X", device >> 16U & 0xFFU,
                  device >> 8U & 0xFFU, device & 0xFFU);
    const bool drawer = device % 2 != 0;
    return {{std::string(kQXDeviceType), drawer ? QXDeviceTypeTFTillfox : QXDeviceTypeDesktopPrinter},
            {std::string(kQXWithDrawer), drawer},
            {std::string(kQXDongleMACAddr), address.data()},
            {std::string(kQXNickName), (device % 4 == 0 ? "Küche " : "Counter ") + std::to_string(device)},
            {std::string(kQXPortSettings), "mini;speed=115200"},
            {std::string(kQXThreshouldRSSI), -40 - static_cast<int>(device % 50)}};
}

Settings registryOf(std::uint32_t devices) {
    Settings settings;
    for (std::uint32_t device = 0; device < devices; ++device) {
        settings.emplace("BT:Printer " + std::to_string(device),
                         std::make_shared<const SettingRecord>(recordOf(device)));
    }
    return settings;
}

struct Shop {
    QuietConsole console;
    JSONSerialization JSON;
    VirtualPlatform platform{console, JSON};
    Manager manager{this, platform};

    explicit Shop(std::uint32_t devices) {
        manager.init();
        manager.setSettings(registryOf(devices));
    }
};

bool same(const Settings& left, const Settings& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](const auto& one, const auto& other) {
        return one.first == other.first && *one.second == *other.second;
    });
}

void measure(const Request& request) {
    Shop shop(request.quick ? 1'000 : 100'000);
    const auto registered = shop.manager.getSettings();
    Line saving("saving a registry of 100,000", "ms", 500, "value");
    Line loading("loading a registry of 100,000", "ms", 500, "value");
    for (int run = 0; run < request.runs; ++run) {
        std::optional<std::string> data;
        saving.add(nanoseconds(CLOCK_THREAD_CPUTIME_ID, [&] { data = shop.manager.serializedSettings(); }) / 1e6);
        if (!data) throw std::runtime_error("the registry could not be saved");
        bool loaded = false;
        // The one of the run before goes meanwhile, as in an application that loads again.
        loading.add(nanoseconds(CLOCK_THREAD_CPUTIME_ID, [&] { loaded = shop.manager.deserializeSettings(*data); }) /
                    1e6);
        if (!loaded || !same(*registered, *shop.manager.getSettings())) {
            throw std::runtime_error("a load gave something else");
        }
    }
    saving.print();
    loading.print();
}

}  // namespace

}  // namespace nearcast::bench

int main(int argc, char** argv) {
    using namespace nearcast::bench;
    try {
        measure(Request::of(argc, argv));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "persistence_bench: %s\n", error.what());
        return 2;
    }
}

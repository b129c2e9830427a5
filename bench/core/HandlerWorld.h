// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "SilentRadio.h"
#include "core/Manager.h"
#include "platform/json/JSONSerialization.h"
#include "platform/system/SystemPlatform.h"
#include "support/AddressText.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::bench {

class ErrorConsole : public Console {
public:
    void NSLog(std::string_view line) noexcept override {
        std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
    }
};

/// The machine's platform, with a clock that can be put forward.
class BenchPlatform : public SystemPlatform {
public:
    using SystemPlatform::SystemPlatform;
    [[nodiscard]] NSDate date() const override { return NSDate::dateWithTimeInterval(ahead, SystemPlatform::date()); }
    std::chrono::nanoseconds ahead{0};
};

/// Addresses as no maker gives them out: spread over all values.
inline std::vector<std::uint64_t> someAddresses(std::size_t count) {
    std::mt19937_64 random(1);
    std::vector<std::uint64_t> addresses(count);
    for (std::uint64_t& address : addresses) address = (random() >> 16) | 1;
    return addresses;
}

/// What is heard: payloads and readings in random order, made beforehand, so that a loop over them reads forward.
class Air {
public:
    struct Advertisement {
        std::array<std::uint8_t, 8> payload;
        std::int32_t RSSI;
    };

    Air(const std::vector<std::uint64_t>& dongles, std::size_t count) : advertisements_(count) {
        std::mt19937 random(2);
        for (Advertisement& one : advertisements_) {
            one = heardOf(dongles[random() % dongles.size()], -90 + static_cast<std::int32_t>(random() % 50));
        }
    }
    /// Every dongle `times` times, in turn.
    static Air inTurn(const std::vector<std::uint64_t>& dongles, std::size_t times) {
        Air air(dongles, 0);
        for (std::size_t time = 0; time < times; ++time) {
            for (const std::uint64_t dongle : dongles) {
                air.advertisements_.push_back(heardOf(dongle, -60 - static_cast<std::int32_t>(time % 5)));
            }
        }
        return air;
    }

    [[nodiscard]] const std::vector<Advertisement>& advertisements() const { return advertisements_; }

private:
    static Advertisement heardOf(std::uint64_t address, std::int32_t RSSI) {
        Advertisement one{{0xFF, 0xFF}, RSSI};
        for (std::size_t octet = 0; octet < 6; ++octet) {
            one.payload[2 + octet] = static_cast<std::uint8_t>(address >> (8 * (5 - octet)));
        }
        return one;
    }

    std::vector<Advertisement> advertisements_;
};

/// A manager that scans on a radio of ours, with an empty registry and a delegate that counts.
class HandlerWorld {
public:
    explicit HandlerWorld(std::uint64_t window = 7) {
        manager_.init();
        auto delegate = std::make_shared<QXNearcastManagerDelegate>();
        delegate->didDiscoverPort = [](std::string_view, QXDeviceType, std::string_view, std::int32_t) {};
        delegate->didUpdateState = [](std::string_view, std::string_view) {};
        manager_.setDelegate(std::move(delegate));
        manager_.startScan(window);
        manager_.stopScan();  // the timers stay away; the window size stays
    }

    [[nodiscard]] Manager& manager() { return manager_; }
    [[nodiscard]] BenchPlatform& platform() { return platform_; }

    void registerPort(std::uint64_t address) {
        const std::string name = "BT:Printer " + std::to_string(ports_++);
        manager_.addSettingForPrinterPortName(name, {}, false, AddressText(address).view(), {}, {});
    }
    void registerAll(const std::vector<std::uint64_t>& addresses) {
        for (const std::uint64_t address : addresses) registerPort(address);
    }

    /// As a radio calls it.
    void hear(std::span<const std::uint8_t> payload, std::int32_t RSSI) {
        CBCentralManagerDelegate& delegate = manager_;
        delegate.centralManagerDidDiscoverPeripheral(radio_, CBPeripheral{}, AdvertisementData{payload}, RSSI);
    }
    void hear(const Air& air) {
        for (const Air::Advertisement& one : air.advertisements()) hear(one.payload, one.RSSI);
    }

private:
    ErrorConsole console_;
    JSONSerialization JSON_;
    SilentRadio radio_;
    BenchPlatform platform_{console_, JSON_,
                            [](CBCentralManagerDelegate&, RadioMonitor&) { return std::make_unique<SilentRadio>(); },
                            TimerService::Loop::ownThread, nullptr};
    Manager manager_{this, platform_};
    std::size_t ports_ = 0;
};

}  // namespace nearcast::bench

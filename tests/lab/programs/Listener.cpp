// SPDX-License-Identifier: Apache-2.0
// Opens a radio and writes down what its delegate is told, a line each, for the lab's tests to read:
//
//     TIME state NUMBER WHY
//     TIME report MANUFACTURER-DATA RSSI     octets in hexadecimal, - without any
//     TIME health RESTARTS WHY
//
//     lab_listener RADIO [dongles|everything]
//
// TIME is in seconds since the machine's start. It scans from its start on, for those that advertise the dongles'
// service or for everything. On standard input it takes the lines `stop` and `scan`; it ends with its input.
#include <nearcast/Platform.h>

#include "platform/factory/PlatformFactory.h"
#include "support/Dongle.h"

#include <cinttypes>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <time.h>

namespace nearcast {
namespace {

double now() {
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Writes whole lines at once, from any thread.
class Diary {
public:
    void state(CBManagerState state, const std::string& why) {
        const std::lock_guard lock(mutex_);
        std::printf("%.6f state %" PRId64 " %s\n", now(), std::int64_t{state}, why.c_str());
        std::fflush(stdout);
    }
    void health(const RadioHealth& health) {
        const std::lock_guard lock(mutex_);
        std::printf("%.6f health %" PRIu64 " %s\n", now(), health.restarts, health.why.c_str());
        std::fflush(stdout);
    }
    void report(std::string_view octets, std::int32_t rssi) {
        const std::lock_guard lock(mutex_);
        std::printf("%.6f report %.*s %" PRId32 "\n", now(), static_cast<int>(octets.size()), octets.data(), rssi);
        std::fflush(stdout);
    }

private:
    std::mutex mutex_;
};

std::string hexadecimal(const std::optional<std::span<const std::uint8_t>>& octets) {
    if (!octets) return "-";
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t octet : *octets) {
        text += digits[octet >> 4U];
        text += digits[octet & 0xfU];
    }
    return text;
}

class Delegate : public CBCentralManagerDelegate {
public:
    /// @param diary, monitor live longer
    Delegate(Diary& diary, RadioMonitor& monitor) : diary_(diary), monitor_(monitor) {}

    void centralManagerDidUpdateState(CBCentralManager& central) override {
        diary_.state(central.state(), monitor_.health().why);
    }
    void centralManagerDidDiscoverPeripheral(CBCentralManager&, const CBPeripheral&, const AdvertisementData& data,
                                             std::int32_t RSSI) override {
        diary_.report(hexadecimal(data.manufacturerData), RSSI);
    }

private:
    Diary& diary_;
    RadioMonitor& monitor_;
};

using Services = std::optional<std::vector<CBUUID>>;

void listen(const std::string& radio, const Services& services) {
    PlatformOptions options;
    options.radio = radio;
    const OpenedPlatform platform = openPlatform(options);
    Diary diary;
    Delegate delegate(diary, *platform.monitor);
    platform.monitor->setHealthChanged([&diary](const RadioHealth& health) { diary.health(health); });
    const std::unique_ptr<CBCentralManager> central = platform.services->centralManager(delegate);
    diary.state(central->state(), platform.monitor->health().why);
    constexpr ScanOptions everyReport{.allowDuplicates = true};
    central->scanForPeripheralsWithServices(services, everyReport);
    for (std::string line; std::getline(std::cin, line);) {
        if (line == "stop") central->stopScan();
        if (line == "scan") central->scanForPeripheralsWithServices(services, everyReport);
    }
}

}  // namespace
}  // namespace nearcast

int main(int argc, char** argv) {
    try {
        if (argc < 2) throw std::invalid_argument("usage: lab_listener RADIO [dongles|everything]");
        nearcast::Services services;
        if (argc < 3 || std::string_view(argv[2]) == "dongles") {
            services = {nearcast::CBUUID::UUIDWithString(nearcast::dongle::serviceUUID)};
        }
        nearcast::listen(argv[1], services);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lab_listener: %s\n", error.what());
        return 1;
    }
}

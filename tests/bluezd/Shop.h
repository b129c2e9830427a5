// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace nearcast::bluezd {

/// One device that the daemon hears.
struct Device {
    std::array<std::uint8_t, 6> address{};  ///< most significant octet first
    std::string path;                       ///< of its object, below the adapter
    std::int16_t RSSI = -60;                ///< of the latest report
    bool shown = false;                     ///< whether its object is on the bus
    bool silent = false;
};

/// Devices that take turns in advertising, so many reports a second altogether.
class Shop {
public:
    using Time = std::chrono::nanoseconds;

    /// @param rate reports a second, all devices together; 0: none
    Shop(std::size_t devices, double rate);

    [[nodiscard]] std::vector<Device>& devices() noexcept { return devices_; }
    /// The device with that address as text, or null.
    Device* find(const std::string& address);

    /// From now on.
    void start(Time now);
    void stop() noexcept { running_ = false; }
    [[nodiscard]] bool running() const noexcept { return running_; }
    /// When the next report is due.
    [[nodiscard]] Time due() const noexcept { return due_; }
    /// The device of the next report, with another signal than before; null when that one is silent.
    Device* next();

    static std::string text(const std::array<std::uint8_t, 6>& address, char separator);

private:
    std::vector<Device> devices_;
    Time interval_;
    Time due_{0};
    bool running_ = false;
    std::size_t turn_ = 0;
};

}  // namespace nearcast::bluezd

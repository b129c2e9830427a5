// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SystemBus.h"
#include "platform/radio/AdvertisingReport.h"
#include "support/SecretHash.h"

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>

namespace nearcast::bluez {

/// What is remembered of each device, so that a signal with hardly more than a reading becomes a whole report. Of too
/// many devices the one that was silent for longest is forgotten. In the steady state nothing is allocated. Not for
/// several threads at once.
class DeviceTable {
public:
    static constexpr std::size_t defaultDevices = 8192;

    struct Heard {
        const AdvertisingReport* report = nullptr;  ///< null: that was no report; valid until the next call
        bool stranger = false;                      ///< the device has never been listed: its services are unknown
    };

    /// @param most how many devices are remembered
    explicit DeviceTable(std::size_t most = defaultDevices) : most_(most) {}

    /// Learns all that BlueZ knows of a device; that is no report. What was known before is forgotten: two devices
    /// whose addresses differ in nothing but their kind, public or random, take turns in being shown under one path.
    void learn(std::string_view path, const DeviceNews& news);
    /// A device has changed; that is a report where it has a reading or manufacturer data. What the news do not mention
    /// is as it was before.
    Heard changed(std::string_view path, const DeviceNews& news);
    void remove(std::string_view path);
    void clear();
    [[nodiscard]] std::size_t size() const noexcept { return devices_.size(); }

private:
    struct Device {
        std::string path;
        AdvertisingReport report;
        bool described = false;
    };
    using Devices = std::list<Device>;  // in the order in which they were last heard

    Device& reach(std::string_view path);

    std::size_t most_;
    Devices devices_;
    /// The keys point to the devices' paths, which hold the addresses from the air.
    std::unordered_map<std::string_view, Devices::iterator, SecretHash> places_;
};

}  // namespace nearcast::bluez

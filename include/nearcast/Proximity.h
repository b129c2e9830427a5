// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Device.h>
#include <nearcast/Export.h>
#include <nearcast/Nearest.h>
#include <nearcast/NearestSettings.h>
#include <nearcast/Platform.h>
#include <nearcast/QXNearcastManager.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace nearcast {

/// Everything wired together: the platform is chosen, the manager made, and `Nearest` is its delegate, hears by the tap
/// and is told that time passes. An application that wants to know who is nearest needs nothing else.
///
/// @code
/// nearcast::Proximity proximity({.radio = "bluez"}, [](const nearcast::NearestChange& change) {
///     std::cout << change.now.text() << '\n';
/// });
/// proximity.addDevice({.portName = "BT:Front", .address = nearcast::Address("00:11:22:AA:BB:CC"), .threshold = -65});
/// if (const auto started = proximity.start(); !started) std::cerr << started.why << '\n';
/// @endcode
///
/// There is one in a process, for there is one manager in it. Every operation may be called from any thread. What the
/// callbacks may call: docs/callbacks.md.
class NEARCAST_EXPORT Proximity {
public:
    /// @param platform which radio, and where threads and console lines go
    /// @param changed  called when another device is nearest, or none: see `Nearest::Changed`
    /// @throws std::logic_error where the manager exists already
    /// @throws as `Platform::choose`, `QXNearcastManager::sharedManager` and `NearestSettings::validate`
    explicit Proximity(const PlatformOptions& platform, Nearest::Changed changed = {},
                       const NearestSettings& settings = {});
    /// Stops the scan and ends the callbacks: one that is under way on another thread may still end after this.
    ~Proximity();
    Proximity(const Proximity&) = delete;
    Proximity& operator=(const Proximity&) = delete;

    /// The one manager of the process.
    [[nodiscard]] QXNearcastManager& manager() const noexcept;
    /// The decision.
    [[nodiscard]] Nearest& nearest() const noexcept;

    /// Sets the application's own delegate, which hears all that the manager tells; or none. Not by
    /// `QXNearcastManager::setDelegate`, which would cut `Nearest` off.
    void setDelegate(std::shared_ptr<QXNearcastManagerDelegate> delegate) const;

    /// Whether a scan has been started, and why not.
    struct Started {
        bool running = false;  ///< whether it was started
        std::string why;       ///< for people; empty where it runs
        /// As `running`.
        explicit operator bool() const noexcept { return running; }
    };
    /// Starts listening: `QXNearcastManager::startScan`.
    [[nodiscard]] Started start() const;
    /// Stops listening: `QXNearcastManager::stopScan`.
    void stop() const;

    /// Registers a device: see `nearcast::addDevice`.
    /// @throws PortException when the port name or the address is in use
    void addDevice(const Device& device) const;
    /// Changes a device: see `nearcast::changeDevice`. The decision goes by the changed record at once.
    /// @return false when no device has this port name
    bool changeDevice(std::string_view portName,
                      const std::function<SettingRecordPointer(const SettingRecord& record)>& change) const;
    /// Replaces all devices, as by those of a file.
    void setDevices(Settings devices) const;

    /// The device that the user stands next to, and why.
    [[nodiscard]] NearestChoice choice() const;

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace nearcast

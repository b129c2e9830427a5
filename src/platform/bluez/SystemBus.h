// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Dongle.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nearcast::bluez {

/// Why something on the bus failed: the D-Bus error's name and its message.
struct Failure {
    std::string name;
    std::string message;
};

/// Names of errors that are told apart (D-Bus Specification, "Standard error names"; BlueZ, doc/adapter-api.txt).
namespace error {
inline constexpr std::string_view accessDenied = "org.freedesktop.DBus.Error.AccessDenied";
inline constexpr std::string_view noReply = "org.freedesktop.DBus.Error.NoReply";
inline constexpr std::string_view timeout = "org.freedesktop.DBus.Error.Timeout";
inline constexpr std::string_view alreadyExists = "org.bluez.Error.AlreadyExists";
inline constexpr std::string_view inProgress = "org.bluez.Error.InProgress";
inline constexpr std::string_view notAuthorized = "org.bluez.Error.NotAuthorized";
inline constexpr std::string_view notPermitted = "org.bluez.Error.NotPermitted";
inline constexpr std::string_view notReady = "org.bluez.Error.NotReady";
inline constexpr std::string_view failed = "org.bluez.Error.Failed";
}  // namespace error

/// `PowerState` of an adapter, which BlueZ has since 5.66 as an experimental property and always since 5.68.
enum class PowerState { off, on, turningOff, turningOn, blocked, unknown };

/// What a message says of `org.bluez.Adapter1`; what it does not mention is absent. Texts are valid during the call
/// that brings them.
struct AdapterNews {
    std::optional<bool> powered;
    std::optional<bool> discovering;
    std::optional<PowerState> powerState;
    std::optional<bool> central = std::nullopt;              ///< its `Roles` have "central": it can scan
    std::optional<std::string_view> address = std::nullopt;  ///< "XX:XX:XX:XX:XX:XX"
};

/// What a message says of `org.bluez.Device1`; what it does not mention is absent. Texts and octets are valid during
/// the call that brings them.
struct DeviceNews {
    struct Manufacturer {
        std::uint16_t company = 0;
        std::span<const std::uint8_t> octets;  ///< what follows the company identifier
    };

    std::optional<std::int16_t> RSSI;  ///< dBm; there when a report has been heard
    bool noMoreRSSI = false;           ///< the reading has become invalid: discovery ended
    std::optional<Manufacturer> manufacturer;
    std::optional<std::string_view> name;
    std::optional<std::string_view> address;  ///< "XX:XX:XX:XX:XX:XX"
    std::optional<bool> randomAddress;
    bool hasServices = false;
    std::vector<std::string_view> services;  ///< UUIDs as texts, where `hasServices`

    /// Takes one of several manufacturer data, in their order.
    void offer(const Manufacturer& one) {
        if (!manufacturer || dongle::countsInstead(one.company, manufacturer->company)) manufacturer = one;
    }
    /// As new, but the memory of the services is kept.
    void clear() {
        std::vector<std::string_view> room = std::move(services);
        room.clear();
        *this = DeviceNews();
        services = std::move(room);
    }
};

/// Who is told of the objects that BlueZ shows. Paths are valid during the call.
class ObjectListener {
public:
    virtual ~ObjectListener() = default;
    /// An adapter that is listed, or has come.
    virtual void adapterAdded(std::string_view path, const AdapterNews& news) = 0;
    /// The adapter takes advertisement monitors.
    virtual void monitorsOffered(std::string_view adapter) = 0;
    /// A device that is listed: BlueZ knows it, from now or from long ago.
    virtual void deviceListed(std::string_view path, const DeviceNews& news) = 0;
    virtual void deviceAdded(std::string_view path, const DeviceNews& news) = 0;
};

/// Who is told what happens on the bus. Called on the thread that drives the bus, while it takes messages, and never
/// from inside an operation of `SystemBus`.
class SystemBusListener : public ObjectListener {
public:
    /// The connection broke, or was not made; `connect` makes another one.
    virtual void busLost(const Failure& failure) = 0;
    /// Whether bluetoothd runs: told after connecting, and whenever it changes. One that was replaced by another is
    /// told as gone and come.
    virtual void daemonChanged(bool there) = 0;
    virtual void adapterChanged(std::string_view path, const AdapterNews& news) = 0;
    virtual void adapterRemoved(std::string_view path) = 0;
    virtual void deviceChanged(std::string_view path, const DeviceNews& news) = 0;
    virtual void deviceRemoved(std::string_view path) = 0;
    /// bluetoothd has released our advertisement monitor.
    virtual void monitorReleased() = 0;
    /// Somebody else has said something in bluetoothd's name; it was passed over.
    virtual void forged() = 0;
};

/// How a call ended: no failure where it succeeded. Called once, when the listener may be; after `disconnect` not at
/// all.
using Done = std::function<void(const std::optional<Failure>& failure)>;

/// The system bus as this radio needs it: BlueZ's objects in, a handful of asynchronous calls out. One thread at a
/// time.
class SystemBus {
public:
    virtual ~SystemBus() = default;

    /// Starts to connect; whether bluetoothd runs is told afterwards.
    /// @param listener lives until `disconnect`
    /// @return why not even the start succeeded
    virtual std::optional<Failure> connect(SystemBusListener& listener) = 0;
    /// Closes the connection; pending calls never call their `done`.
    virtual void disconnect() = 0;

    /// Tells the listener of all objects of BlueZ (`adapterAdded`, `monitorsOffered`, `deviceListed`), then calls
    /// `done`.
    virtual void listObjects(Done done) = 0;
    /// Tells the listener of one device (`deviceListed`), then calls `done`.
    virtual void listDevice(std::string_view path, Done done) = 0;
    /// Sets the filter that brings every report: low energy only, duplicates, any signal.
    virtual void setDiscoveryFilter(const std::string& adapter, Done done) = 0;
    virtual void startDiscovery(const std::string& adapter, Done done) = 0;
    virtual void stopDiscovery(const std::string& adapter, Done done) = 0;
    /// Registers a monitor for what dongles advertise: while one is registered, the kernel makes the controller pass on
    /// every report.
    virtual void registerMonitor(const std::string& adapter, Done done) = 0;
    virtual void unregisterMonitor(const std::string& adapter, Done done) = 0;
};

}  // namespace nearcast::bluez

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
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

/// What a message says of `org.bluez.Adapter1`; what it does not mention is absent.
struct AdapterNews {
    std::optional<bool> powered;
    std::optional<bool> discovering;
    std::optional<PowerState> powerState;
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

    /// As new, its memory kept.
    void clear();
};

/// Whom a bus tells what happens. Called from `SystemBus::process` alone; paths are valid during the call.
class SystemBusListener {
public:
    virtual ~SystemBusListener() = default;
    /// The connection broke, or did not come about; `connect` makes another one.
    virtual void busLost(const Failure& failure) = 0;
    /// Whether bluetoothd is there: told after the connecting, and whenever it changes. One that was replaced by
    /// another is told as gone and come.
    virtual void daemonChanged(bool there) = 0;
    /// An adapter that is listed, or has come.
    virtual void adapterAdded(std::string_view path, const AdapterNews& news) = 0;
    virtual void adapterChanged(std::string_view path, const AdapterNews& news) = 0;
    virtual void adapterRemoved(std::string_view path) = 0;
    /// The adapter takes advertisement monitors.
    virtual void monitorsOffered(std::string_view adapter) = 0;
    /// A device that is listed: BlueZ knows it, from now or from long ago.
    virtual void deviceListed(std::string_view path, const DeviceNews& news) = 0;
    virtual void deviceAdded(std::string_view path, const DeviceNews& news) = 0;
    virtual void deviceChanged(std::string_view path, const DeviceNews& news) = 0;
    virtual void deviceRemoved(std::string_view path) = 0;
    /// bluetoothd has let go of our advertisement monitor.
    virtual void monitorReleased() = 0;
};

/// How a call ended: nothing where it went well. Called from `SystemBus::process`, once; after `disconnect` not at all.
using Done = std::function<void(const std::optional<Failure>& failure)>;

/// The system bus as this radio needs it: BlueZ's objects in, a handful of calls out, all of them asynchronous. One
/// thread at a time.
class SystemBus {
public:
    virtual ~SystemBus() = default;

    /// Begins to connect; whether bluetoothd is there is told afterwards.
    /// @param listener lives until `disconnect`
    /// @return why it cannot even begin
    virtual std::optional<Failure> connect(SystemBusListener& listener) = 0;
    /// Lets go of the connection; calls that are under way end untold.
    virtual void disconnect() = 0;

    /// Has all objects of BlueZ told (`adapterAdded`, `monitorsOffered`, `deviceListed`) before `done`.
    virtual void listObjects(Done done) = 0;
    /// Has one device told (`deviceListed`) before `done`.
    virtual void listDevice(std::string_view path, Done done) = 0;
    /// Sets the filter that brings every report: low energy only, duplicates, any signal.
    virtual void setDiscoveryFilter(const std::string& adapter, Done done) = 0;
    virtual void startDiscovery(const std::string& adapter, Done done) = 0;
    virtual void stopDiscovery(const std::string& adapter, Done done) = 0;
    /// Registers a monitor for what dongles advertise: while one is, the kernel has the controller pass on every
    /// report.
    virtual void registerMonitor(const std::string& adapter, Done done) = 0;
    virtual void unregisterMonitor(const std::string& adapter, Done done) = 0;
};

}  // namespace nearcast::bluez

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Message.h"
#include "Shop.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace nearcast::bluezd {

struct DaemonOptions {
    std::size_t devices = 6;
    double rate = 60;       ///< reports a second, all devices together
    bool flood = false;     ///< as fast as the bus takes them instead
    bool adapter = true;    ///< whether an adapter is there from the start
    bool powered = true;    ///< and whether it is on
    bool nameless = false;  ///< signals as bluetoothd does, but without its name, and from the start
    bool monitors = false;  ///< offers AdvertisementMonitorManager1, as `bluetoothd -E` does
};

/// Stands in for bluetoothd on a private bus: one adapter, and devices that advertise while a client discovers, with
/// the objects, signals and error names that BlueZ has (doc/adapter-api.txt, doc/device-api.txt,
/// doc/advertisement-monitor-api.txt of BlueZ 5.66). A report is one PropertiesChanged with RSSI and
/// ManufacturerData; the first one of a device is its InterfacesAdded.
///
/// One thread. It lives as long as its bus connection.
class Daemon {
public:
    /// Connects to the system bus (DBUS_SYSTEM_BUS_ADDRESS) and takes the name org.bluez.
    /// @throws std::system_error
    explicit Daemon(const DaemonOptions& options);
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    /// Serves the bus, the devices and the commands on standard input until it ends or `quit` comes.
    void run();

private:
    struct BusDeleter {
        void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
    };

    static int handle(sd_bus_message* call, void* self, sd_bus_error* error);
    static int clientGone(sd_bus_message* signal, void* self, sd_bus_error* error);
    int answer(sd_bus_message* call);
    int managedObjects(sd_bus_message* call);
    int adapterCall(sd_bus_message* call, const std::string& member);
    int startDiscovery(sd_bus_message* call);
    int stopDiscovery(sd_bus_message* call);
    int setProperty(sd_bus_message* call);
    int monitorCall(sd_bus_message* call, const std::string& member);
    /// Asks the client for its monitors and prints a line for each type and pattern.
    void readMonitors(const char* client, const char* application);

    /// Releases a client's monitor and prints how it answers.
    void releaseMonitor(const std::string& client, const std::string& monitor);

    void command(const std::string& line);
    void power(bool on);
    void plug(bool in);
    void setDiscovering(bool on);
    void removeDevices();
    void sayOddThings();
    /// Says something in bluetoothd's name to every other connection, and to each of them alone. @return whether it can
    bool forge(const std::string& what);
    void report(Device& device);
    void advertise();
    void flood();
    [[nodiscard]] bool blocked() const;
    void wait();
    bool readCommands();

    void signalInterfacesAdded(const char* path, const Device* device);
    void signalInterfacesRemoved(const char* path, const char* interface);
    void signalAdapter(const char* property, bool value);
    void send(sd_bus_message* message);

    const DaemonOptions options_;
    Shop shop_;
    AdapterState adapter_;
    std::unique_ptr<sd_bus, BusDeleter> bus_;
    std::map<std::string, int> discoverers_;  ///< bus name of a client to the number of its sessions
    std::string failing_;                     ///< the method whose next call fails
    std::string failure_;                     ///< the error's name
    std::string input_;
    std::uint64_t sent_ = 0;
    bool mute_ = false;  ///< discovery seems to run, but nothing is heard
    bool quit_ = false;
};

}  // namespace nearcast::bluezd

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSLog.h"
#include "platform/bluez/Moment.h"
#include "platform/bluez/SdBusPointers.h"
#include "platform/bluez/SdMonitor.h"
#include "platform/bluez/SystemBus.h"

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::bluez {

/// The system bus by sd-bus; DBUS_SYSTEM_BUS_ADDRESS says where it is, as everywhere. It never blocks: whoever drives
/// it waits for `descriptor` and calls `process`. One thread at a time.
class SdBus : public SystemBus {
public:
    /// @param console where exceptions of the listener's go; lives longer
    explicit SdBus(Console& console) : console_(console) {}
    ~SdBus() override { disconnect(); }
    SdBus(const SdBus&) = delete;
    SdBus& operator=(const SdBus&) = delete;

    std::optional<Failure> connect(SystemBusListener& listener) override;
    void disconnect() override;
    void listObjects(Done done) override;
    void listDevice(std::string_view path, Done done) override;
    void setDiscoveryFilter(const std::string& adapter, Done done) override;
    void startDiscovery(const std::string& adapter, Done done) override;
    void stopDiscovery(const std::string& adapter, Done done) override;
    void registerMonitor(const std::string& adapter, Done done) override;
    void unregisterMonitor(const std::string& adapter, Done done) override;

    struct Taken {
        int messages = 0;
        bool more = false;  ///< there may be more that waiting does not show
    };

    /// Takes what has come and tells the listener.
    /// @param all a bounded number of messages, and not one alone. To find that there is no other costs a system call
    ///            more, which is only well spent where there often is
    Taken process(bool all);
    /// What to wait for (`poll`); -1 without a connection.
    [[nodiscard]] int descriptor() const;
    /// Which events to wait for.
    [[nodiscard]] short events() const;
    /// In what time `process` is needed without an event; nothing: not at all.
    [[nodiscard]] std::optional<Time> left() const;

private:
    using Read = int (SdBus::*)(sd_bus_message* reply, const std::string& path);
    struct Call {
        SdBus* bus = nullptr;
        Done done;
        Read read = nullptr;  ///< takes the answer's content; null: there is none
        std::string path;
        SlotPointer slot;
    };

    int open();
    int watch(const char* rule, sd_bus_message_handler_t handler);
    int askForDaemon();
    void setDaemon(std::string_view name);
    void call(const char* path, const char* interface, const char* member, Done done, Read read = nullptr,
              const std::function<int(sd_bus_message*)>& fill = nullptr);
    int send(sd_bus_message* message, Call& call);
    void finish(Call& call, const std::optional<Failure>& failure);
    int takeObjects(sd_bus_message* reply, const std::string& path);
    int takeDevice(sd_bus_message* reply, const std::string& path);
    void propertiesChanged(sd_bus_message* signal);
    void objectsChanged(sd_bus_message* signal);
    void interfacesRemoved(sd_bus_message* signal);
    void tellFailed();

    /// Runs what a callback of sd-bus does; nothing that it throws gets into sd-bus.
    template <class Work>
    static int inside(void* self, Work&& work) noexcept;
    static int onWatched(sd_bus_message* reply, void* self, sd_bus_error* error) noexcept;
    static int onOwner(sd_bus_message* reply, void* self, sd_bus_error* error) noexcept;
    static int onOwnerChanged(sd_bus_message* signal, void* self, sd_bus_error* error) noexcept;
    static int onProperties(sd_bus_message* signal, void* self, sd_bus_error* error) noexcept;
    static int onObjects(sd_bus_message* signal, void* self, sd_bus_error* error) noexcept;
    static int onAnswer(sd_bus_message* reply, void* call, sd_bus_error* error) noexcept;

    Console& console_;
    SystemBusListener* listener_ = nullptr;
    BusPointer bus_;
    std::vector<SlotPointer> slots_;
    std::list<Call> calls_;
    std::vector<std::pair<Done, Failure>> failed_;  ///< calls that could not be sent, not told yet
    std::optional<Failure> lost_;                   ///< why the connection is of no use
    std::string daemon_;                            ///< bluetoothd's own name; empty: it is not there
    bool daemonKnown_ = false;
    SdMonitor monitor_{daemon_, [this] { listener_->monitorReleased(); }};
    DeviceNews news_;  ///< used again and again
};

}  // namespace nearcast::bluez

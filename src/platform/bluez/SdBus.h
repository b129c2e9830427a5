// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSLog.h"
#include "platform/bluez/SdMessage.h"
#include "platform/bluez/SdMonitor.h"
#include "platform/bluez/SystemBus.h"
#include "platform/radio/BackOff.h"

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::bluez {

/// The system bus through sd-bus, at DBUS_SYSTEM_BUS_ADDRESS or its usual place. It never blocks: who drives it waits
/// for `descriptor` and calls `process`, which is where the listener and each `Done` are called. One thread at a time.
///
/// What is said in bluetoothd's name is taken from the owner of its name alone: any local user can send signals and
/// calls to this connection. Others' are passed over and told to the listener, the first one of a connection also on
/// the console.
class SdBus : public SystemBus {
public:
    /// @param console for exceptions of the listener; lives longer
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
        bool more = false;  ///< there may be more, already read, which `poll` does not show
    };

    /// Takes what has come and tells the listener.
    /// @param all a bounded number of messages instead of one. Finding that there is no other costs one more system
    ///            call, which pays only where there often is
    Taken process(bool all);
    /// What to wait for (`poll`); -1 without a connection.
    [[nodiscard]] int descriptor() const;
    /// Which events to wait for.
    [[nodiscard]] short events() const;
    /// After what time `process` is needed without an event; nothing: not at all.
    [[nodiscard]] std::optional<Time> left() const;

private:
    using Read = int (SdBus::*)(sd_bus_message* reply, const std::string& path);
    struct Call {
        SdBus* bus = nullptr;
        Done done;
        Read read = nullptr;  ///< reads what the answer holds; null: it holds nothing
        std::string path;
        SlotPointer slot;
        std::list<Call>::iterator place;  ///< its own, wherever its list is
    };

    int open();
    int watch(sd_bus* bus, const char* rule, sd_bus_message_handler_t handler);
    void setDaemon(std::string_view name);
    bool isDaemons(sd_bus_message* message);
    bool isFrom(std::string_view name, sd_bus_message* message);
    void refuse(const char* sender);
    void call(const char* path, const char* interface, const char* member, Done done, Read read = nullptr,
              const std::function<int(sd_bus_message*)>& fill = nullptr);
    int send(sd_bus_message* message, Call& call);
    void finish(Call& call, const std::optional<Failure>& failure);
    int takeObjects(sd_bus_message* reply, const std::string& path);
    int takeDevice(sd_bus_message* reply, const std::string& path);
    void tellFailed();

    /// Runs what a callback of sd-bus does, and catches what it throws.
    template <class Work>
    static int inside(void* self, Work&& work) noexcept;
    bool mayCall(sd_bus_message* call) noexcept;
    void release() noexcept;
    static int onWatched(sd_bus_message* reply, void* self, sd_bus_error* error) noexcept;
    static int onOwner(sd_bus_message* reply, void* self, sd_bus_error* error) noexcept;
    static int onOwnerChanged(sd_bus_message* signal, void* self, sd_bus_error* error) noexcept;
    static int onProperties(sd_bus_message* signal, void* self, sd_bus_error* error) noexcept;
    static int onObjects(sd_bus_message* signal, void* self, sd_bus_error* error) noexcept;
    static int onAnswer(sd_bus_message* reply, void* call, sd_bus_error* error) noexcept;

    Console& console_;
    SystemBusListener* listener_ = nullptr;
    BusPointer bus_;
    std::list<Call> calls_;
    std::vector<std::pair<Done, Failure>> failed_;  ///< calls that could not be sent; `process` tells
    std::optional<Failure> lost_;                   ///< why the connection is to be closed
    std::string daemon_;                            ///< bluetoothd's unique name; empty: it does not run
    bool daemonKnown_ = false;
    bool forgeryTold_ = false;  ///< of this connection
    SdMonitor monitor_{[this](sd_bus_message* call) { return mayCall(call); }, [this] { release(); }};
    DeviceNews news_;  ///< memory that is used again
};

}  // namespace nearcast::bluez

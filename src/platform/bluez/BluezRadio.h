// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/BluezSession.h"
#include "platform/bluez/Crowding.h"
#include "platform/bluez/KernelMgmtPort.h"
#include "platform/bluez/SdBus.h"
#include "platform/radio/Radio.h"
#include "platform/system/WakeUp.h"

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <thread>

namespace nearcast::bluez {

/// The radio of a BlueZ session: passes the scan that is wanted from the application's threads to the one that runs the
/// session, and what the session tells to the manager. It has no thread of its own; who drives it calls `pass` and the
/// bus's own operations on one thread.
///
/// `stopScan` does not wait for that thread. Reports that come afterwards are dropped, but one that is already being
/// delivered goes on.
class BluezRadio : public Radio {
public:
    /// @param delegate, console, monitor, bus, rfkill, mgmt live longer
    /// @param adapter "hci1" or an address; empty: the best one
    /// @param wake    makes `pass` be called soon; from any thread
    BluezRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, SystemBus& bus,
               const Rfkill& rfkill, MgmtPort& mgmt, std::string adapter, std::function<void()> wake);

    /// @name For the one thread that runs it
    /// @{
    /// Sets the time of what happens next, and does what is due; the time never goes back.
    /// @param due whether anything is, or another scan may be wanted; else the time is all that passes
    void pass(Time now, bool due = true);
    /// When `pass` is needed, unless `wake` is called sooner.
    [[nodiscard]] std::optional<Time> due() const { return session_.due(); }
    /// @}

private:
    void scanChanged(const std::optional<Scan>& /*scan*/) override { wake_(); }

    const std::function<void()> wake_;
    BluezSession session_;
};

/// What the radio uses; constructed before it and destroyed after it.
struct RadioParts {
    explicit RadioParts(Console& console) : bus(console) {}

    SdBus bus;
    Rfkill rfkill;
    KernelMgmtPort mgmt;
    WakeUp wakeUp;
};

/// The radio behind `bluez`: a session with the machine's bluetoothd, on a thread of its own, which also calls the
/// manager. Starting and stopping a scan never block.
class ThreadedBluezRadio final : private RadioParts, public BluezRadio {
public:
    /// Returns at once; the state is unknown until bluetoothd has answered.
    /// @param delegate, console, monitor live longer
    /// @param adapter "hci1" or an address; empty: the best one
    /// @throws std::system_error when the system gives no descriptors or no thread
    ThreadedBluezRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                       std::string adapter);
    /// Waits for a callback that is running; so not from inside one.
    ~ThreadedBluezRadio() override;
    ThreadedBluezRadio(const ThreadedBluezRadio&) = delete;
    ThreadedBluezRadio& operator=(const ThreadedBluezRadio&) = delete;

private:
    void run() noexcept;
    bool turn(bool needed);
    WakeUp::Found wait() noexcept;
    bool take(const WakeUp::Found& found) noexcept;

    std::atomic<bool> ending_{false};
    // The thread's own.
    std::optional<Time> alarm_;
    Crowding crowding_;
    std::thread thread_;
};

}  // namespace nearcast::bluez

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/BluezRadio.h"
#include "platform/bluez/SdBus.h"
#include "platform/system/WakeUp.h"

#include <atomic>
#include <optional>
#include <string>
#include <thread>

namespace nearcast::bluez {

/// What the radio stands on; made before it and destroyed after it.
struct RadioParts {
    explicit RadioParts(Console& console) : bus(console) {}

    SdBus bus;
    Rfkill rfkill;
    WakeUp wakeUp;
};

/// The radio behind `bluez`: a session with the machine's bluetoothd, on a thread of its own, which is also the one
/// that the manager is called on.
class ThreadedBluezRadio final : private RadioParts, public BluezRadio {
public:
    /// @param delegate, console, monitor live longer
    /// @param adapter "hci1", or empty for the first that is powered
    /// @throws std::system_error when the system gives no descriptors or no thread
    ThreadedBluezRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                       std::string adapter);
    /// Not from inside a callback.
    ~ThreadedBluezRadio() override;

private:
    void run() noexcept;
    bool turn(bool needed);
    bool wait() noexcept;

    std::atomic<bool> ending_{false};
    std::optional<Time> alarm_;  ///< the thread's, as the next one
    Time lastTurn_{0};
    bool crowded_ = false;  ///< messages come so closely that they are taken together
    Time floodedUntil_{0};  ///< they come very fast
    std::thread thread_;
};

}  // namespace nearcast::bluez

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciReceiver.h"
#include "platform/system/WakeUp.h"

#include <atomic>
#include <memory>
#include <thread>

namespace nearcast {

/// The radio on a controller of this machine, with a thread of its own that reads it and calls the delegate.
///
/// Starting and stopping never block. It is not destroyed from inside a callback.
class HciRadio final : public HciReceiver {
public:
    /// Returns at once; the state is unknown until the controller has been tried.
    /// @param delegate, console, monitor live longer than the radio
    /// @throws std::system_error when the system gives no descriptors or no thread
    HciRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, std::unique_ptr<HciPort> port,
             const HciTarget& target);
    /// Gives the controller back, and waits for a callback that is under way.
    ~HciRadio() override;
    HciRadio(const HciRadio&) = delete;
    HciRadio& operator=(const HciRadio&) = delete;

private:
    void scanChanged(const std::optional<Scan>& scan) override;
    void loop();

    WakeUp wakeUp_;
    std::atomic<bool> ending_{false};
    std::thread thread_;
};

}  // namespace nearcast

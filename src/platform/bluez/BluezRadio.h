// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/BluezSession.h"
#include "platform/radio/Radio.h"

#include <functional>
#include <optional>
#include <string>

namespace nearcast::bluez {

/// The radio of a BlueZ session: hands the wish to scan over from the application's threads to the one that drives the
/// session, and what the session tells to the manager. It has no thread; who drives it calls `pass` and the bus's own
/// operations on one thread.
///
/// `stopScan` does not wait for that thread. What it hears afterwards is dropped, and a report whose handing over has
/// begun may still be on its way.
class BluezRadio : public Radio, private SessionListener {
public:
    /// @param bus, rfkill live longer
    /// @param adapter "hci1", or empty for the first that is powered
    /// @param wake    has `pass` called soon; from any thread
    BluezRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, SystemBus& bus,
               const Rfkill& rfkill, std::string adapter, std::function<void()> wake);

    /// What happens next happens at this time; never an earlier one. What is due, and other wishes, wait for `pass`.
    void setTime(Time now) noexcept { session_.setTime(now); }
    /// The time moves on; never back.
    void pass(Time now);
    /// When `pass` is needed, at the latest.
    [[nodiscard]] std::optional<Time> due() const { return session_.due(); }

private:
    void scanChanged(const std::optional<Scan>& /*scan*/) override { wake_(); }
    void reportHeard(const AdvertisingReport& report) override { deliver(report); }
    void stateChanged(CBManagerState state, const std::string& why) override;
    void scanRestarted() override { noteRestart(); }

    const std::function<void()> wake_;
    BluezSession session_;
};

}  // namespace nearcast::bluez

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciSession.h"
#include "platform/radio/Radio.h"

#include <atomic>
#include <memory>

namespace nearcast {

/// A radio on a controller, run from outside: by a thread, or by a test's clock. Scans may be started and stopped from
/// any thread, also from inside a callback; reports and changes of state come on the thread that runs it.
class HciReceiver : public Radio, private HciSessionListener {
public:
    using Time = HciSession::Time;

    /// @param delegate, console, monitor live longer than the receiver
    HciReceiver(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                std::unique_ptr<HciPort> port, const HciTarget& target);

    /// @name For the one thread that runs it
    /// @{
    /// Does all that is to be done now.
    void run(Time now);
    /// When it is needed next, unless its descriptor is readable or a scan is asked for sooner.
    [[nodiscard]] Time due() const { return session_.due(); }
    /// @copydoc HciSession::descriptor
    [[nodiscard]] int descriptor() const { return session_.descriptor(); }
    /// @}

private:
    void conditionChanged(const HciCondition& condition) override;
    void scanRestarted() override { noteRestart(); }
    void heard(const AdvertisingReport& report) override { deliver(report); }

    const std::unique_ptr<HciPort> port_;
    HciSession session_;
};

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/Radio.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace nearcast {

/// Hears what is asked of a virtual radio, before it happens. What it throws passes to whoever asked.
class VirtualRadioObserver {
public:
    virtual ~VirtualRadioObserver() = default;
    virtual void scanAsked(const std::optional<std::vector<CBUUID>>& services, ScanOptions options) = 0;
    virtual void stopAsked() = 0;
};

/// A radio under the caller's hand: it hears what it is told to, and its state is what it is told to be. It delivers on
/// the calling thread, whatever its state, while a scan runs.
class VirtualRadio : public Radio {
public:
    /// @param observer or null; lives longer than the radio
    VirtualRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                 VirtualRadioObserver* observer);

    void scanForPeripheralsWithServices(const std::optional<std::vector<CBUUID>>& services,
                                        ScanOptions options) override;
    void stopScan() override;

    void advertise(const AdvertisingReport& report) { deliver(report); }
    /// Any integer: radios of the future may have states that we do not know.
    void setState(std::int64_t state) { changeState(static_cast<CBManagerState>(state)); }
    using Radio::scanning;

private:
    VirtualRadioObserver* observer_;
};

}  // namespace nearcast

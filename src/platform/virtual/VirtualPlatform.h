// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/Radio.h"
#include "platform/timeline/TimelinePlatform.h"

#include <cstdint>
#include <memory>
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
    void stopScan(StopOptions options = {}) override;

    void advertise(const AdvertisingReport& report) { deliver(report); }
    /// Any integer: radios of the future may have states that we do not know.
    void setState(std::int64_t state) { changeState(static_cast<CBManagerState>(state)); }
    using Radio::scanning;

private:
    VirtualRadioObserver* observer_;
};

/// A platform in which nothing happens by itself: time stands still until it is moved, the radio hears what it is told
/// to, and all of it runs on the caller's thread. Behind `nearcast run` and the tests.
class VirtualPlatform : public TimelinePlatform {
public:
    /// @param console, JSON live longer than the platform
    /// @param observer      of the radio, or null; lives longer than the platform
    VirtualPlatform(Console& console, const NSJSONSerialization& JSON, VirtualRadioObserver* observer = nullptr);

    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override;

    /// The radio made last; null while there is none. It belongs to whom it was made for.
    [[nodiscard]] VirtualRadio* radio() const noexcept { return radio_; }

private:
    VirtualRadioObserver* observer_;
    VirtualRadio* radio_ = nullptr;
};

}  // namespace nearcast

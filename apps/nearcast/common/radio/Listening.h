// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>

#include "platform/factory/PlatformFactory.h"
#include "support/Mutex.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace nearcast::cli {

/// Listens with a radio without a manager: to all advertisements, whatever their service, and to the radio's health.
///
/// The clock of `at` and `seconds` is the radio's own, and starts with `begin`.
class Listening : private CBCentralManagerDelegate {
public:
    using Time = std::chrono::microseconds;
    /// Called on the radio's thread, one call at a time; what they throw is reported on the console.
    struct Ears {
        std::function<void(const AdvertisingReport& report, Time at)> heard;
        std::function<void(const RadioHealth& health, Time at)> changed;  ///< as `PlatformOptions::radioHealthChanged`
    };

    Listening() = default;
    ~Listening() override;
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;

    /// Opens the radio, and waits some seconds at most until its state is known. Where it is missing nothing is said on
    /// the console: that is the caller's to say.
    /// @return how the radio is then
    /// @throws what `openPlatform` and the radio throw
    RadioHealth open(const std::string& radio, std::function<void(std::string_view line)> console);
    /// Begins to scan for everything. Only after `open`.
    void begin(Ears ears);
    /// Ends the scan and closes the radio. Afterwards the ears are not called any more.
    void end();
    /// Lets time pass, until `interrupt` at most.
    /// @return false when nothing more will come: the recording has ended, or `interrupt` was called
    bool runFor(double seconds);
    /// From any thread, at any time.
    void interrupt();

    [[nodiscard]] bool interrupted() const { return interrupted_.load(); }
    [[nodiscard]] Time now() const;
    [[nodiscard]] double seconds() const { return std::chrono::duration<double>(now()).count(); }
    [[nodiscard]] RadioHealth health() const { return opened_.monitor->health(); }
    /// `now` on the clock of `RadioHealth::since`.
    [[nodiscard]] double date() const;
    /// Why what the radio plays ended before its end; empty when it did not.
    [[nodiscard]] std::string failure() const { return opened_.drive->failure(); }

private:
    // State and reports come from the radio's monitor instead.
    void centralManagerDidUpdateState(CBCentralManager& /*central*/) override {}
    void centralManagerDidDiscoverPeripheral(CBCentralManager& /*central*/, const CBPeripheral& /*peripheral*/,
                                             const AdvertisementData& /*data*/, std::int32_t /*RSSI*/) override {}
    [[nodiscard]] Time since(NSDate date) const;

    std::atomic<bool> interrupted_{false};
    OpenedPlatform opened_;
    Mutex driveMutex_;
    Drive* drive_ NEARCAST_GUARDED_BY(driveMutex_) = nullptr;  ///< for `interrupt`; null before `open`
    std::unique_ptr<CBCentralManager> radio_;
    NSDate begin_;
};

}  // namespace nearcast::cli

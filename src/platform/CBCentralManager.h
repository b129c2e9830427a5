// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>

#include "platform/CBUUID.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace nearcast {

/// The sender of an advertisement. Valid during the callback only.
struct CBPeripheral {
    std::optional<std::string_view> name;  ///< the advertised local name; any bytes
};

/// What an advertisement carries. Valid during the callback only.
struct AdvertisementData {
    /// `CBAdvertisementDataManufacturerDataKey`: company identifier (2 octets, as on the air) and what follows it.
    std::optional<std::span<const std::uint8_t>> manufacturerData;
};

class CBCentralManager;

/// Whom a radio calls. Calls come from a thread of the radio's, never from inside `scanForPeripheralsWithServices` or
/// `stopScan`; the radio catches what they throw and puts it on the console.
class CBCentralManagerDelegate {
public:
    virtual ~CBCentralManagerDelegate() = default;
    virtual void centralManagerDidUpdateState(CBCentralManager& central) = 0;
    virtual void centralManagerDidDiscoverPeripheral(CBCentralManager& central, const CBPeripheral& peripheral,
                                                     const AdvertisementData& advertisementData, std::int32_t RSSI) = 0;
};

class NSTimer;

/// How to scan.
struct ScanOptions {
    bool allowDuplicates = false;  ///< `CBCentralManagerScanOptionAllowDuplicatesKey`
    /// The timer that asks, or null: once it has been cancelled, its request is dropped. Valid during the call.
    const NSTimer* asker = nullptr;
};

/// How to stop a scan. Valid during the call.
struct StopOptions {
    /// The timer that asks, or null: once it has been cancelled, its request is dropped.
    const NSTimer* asker = nullptr;
    /// A timer to cancel together with the scan, or null. That is one step: of what this timer asks for on other
    /// threads, all comes before the stop or nothing.
    NSTimer* cancelled = nullptr;
};

/// A radio in the central role: what the manager asks of one.
///
/// Every operation may be called from any thread, also from inside a callback. After `stopScan` has returned no
/// report begins to be delivered.
class CBCentralManager {
public:
    virtual ~CBCentralManager() = default;

    /// The latest known state; never blocks.
    [[nodiscard]] virtual CBManagerState state() const = 0;
    /// Begins a scan, or gives the running one another filter.
    /// @param services a report is delivered when it carries one of these; nothing: every report is
    virtual void scanForPeripheralsWithServices(const std::optional<std::vector<CBUUID>>& services,
                                                ScanOptions options) = 0;
    virtual void stopScan(StopOptions options = {}) = 0;
};

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/CBCentralManager.h"
#include "platform/NSLog.h"
#include "platform/virtual/VirtualPlatform.h"
#include "lab/Playback.h"

#include <nearcast/QXNearcastManager.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace nearcast::lab {

/// Writes a playback: what the manager is given and what it shows. Between `begin` and `take` alone; outside of them
/// everything passes by unseen. One thread.
class PlaybackRecorder : public VirtualRadioObserver {
public:
    /// Seconds on the recording's clock.
    using Clock = std::function<double()>;

    void begin(Clock clock);
    /// What was written since `begin`.
    Playback take();

    /// Every record of the registry is known from now on.
    void noteRegistry(const Settings& registry);

    /// A delegate that implements these operations.
    std::shared_ptr<QXNearcastManagerDelegate> delegate(bool discovers, bool updates);

    void heard(const CBPeripheral& peripheral, const AdvertisementData& data, std::int32_t RSSI);
    void radioChanged(CBManagerState state);
    void scanAsked(const std::optional<std::vector<CBUUID>>& services, ScanOptions options) override;
    void stopAsked() override;

private:
    using Kind = PlaybackEvent::Kind;

    void add(Kind kind, std::uint32_t dongle, std::int32_t RSSI);
    std::uint32_t indexOf(std::string_view MACAddr);

    Clock clock_;
    Playback playback_;
    Settings registry_;
    std::map<std::string, std::uint32_t, std::less<>> indices_;
    bool scanning_ = false;
};

/// A virtual platform that lets a recorder see what its radio hands to the manager.
class PlaybackPlatform : public VirtualPlatform {
public:
    /// All three live longer.
    PlaybackPlatform(Console& console, const NSJSONSerialization& JSON, PlaybackRecorder& recorder)
        : VirtualPlatform(console, JSON, &recorder), recorder_(recorder) {}

    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override;

private:
    class Witness;

    PlaybackRecorder& recorder_;
    std::shared_ptr<Witness> witness_;
};

}  // namespace nearcast::lab

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Playback.h"
#include "platform/CBCentralManager.h"
#include "platform/NSLog.h"
#include "platform/virtual/VirtualPlatform.h"

#include <nearcast/QXNearcastManager.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace nearcast::lab {

/// Records a playback: what the manager receives and what it reports between `begin` and `take`. One thread.
class PlaybackRecorder : public VirtualRadioObserver {
public:
    /// Seconds on the recording's clock.
    using Clock = std::function<double()>;

    void begin(Clock clock);
    /// What was recorded since `begin`.
    Playback take();

    /// Remembers every record of the registry.
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

/// A virtual platform that lets a recorder see what its radio delivers to the manager. Its time leaps: the recorder
/// misses nothing but restarts of a scan that hears nothing.
class PlaybackPlatform : public VirtualPlatform {
public:
    /// All three live longer.
    PlaybackPlatform(Console& console, const NSJSONSerialization& JSON, PlaybackRecorder& recorder)
        : VirtualPlatform(console, JSON, &recorder), recorder_(recorder) {
        timeline().allowLeaps();
    }

    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override;

private:
    class Witness;

    PlaybackRecorder& recorder_;
    std::shared_ptr<Witness> witness_;
};

}  // namespace nearcast::lab

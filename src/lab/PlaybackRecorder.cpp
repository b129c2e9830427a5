// SPDX-License-Identifier: Apache-2.0
#include "lab/PlaybackRecorder.h"

#include "support/Dongle.h"

#include <algorithm>
#include <utility>

namespace nearcast::lab {

namespace {

constexpr std::int32_t noReading = 127;

/// Null where the record has no such text.
const std::string* textIn(const SettingRecord& record, std::string_view key) {
    const auto found = record.find(key);
    return found == record.end() ? nullptr : found->second.as<std::string>();
}

PlaybackDongle dongleOf(const std::string& portName, const SettingRecord& record) {
    PlaybackDongle dongle;
    dongle.portName = portName;
    if (const auto* address = textIn(record, kQXDongleMACAddr)) dongle.MACAddr = *address;
    if (const auto* nickName = textIn(record, kQXNickName)) dongle.nickName = *nickName;
    if (dongle.nickName == "(null)") dongle.nickName.clear();
    if (const auto threshold = record.find(kQXThreshouldRSSI); threshold != record.end()) {
        dongle.threshold = threshold->second.intValue();
    }
    return dongle;
}

}  // namespace

void PlaybackRecorder::begin(Clock clock) {
    clock_ = std::move(clock);
    playback_ = {};
    registry_.clear();
    indices_.clear();
    scanning_ = false;
}

/// Reorders the dongles: the registered ones come first.
Playback PlaybackRecorder::take() {
    clock_ = nullptr;
    std::vector<PlaybackDongle> dongles;
    std::vector<std::uint32_t> places(playback_.dongles.size(), PlaybackEvent::noDongle);
    for (const auto& [portName, record] : registry_) {
        // A record without an address is nobody's, not that of a sender whose address is an empty text.
        const std::string* const address = textIn(*record, kQXDongleMACAddr);
        const auto known = address == nullptr ? indices_.end() : indices_.find(*address);
        // Of several records with one address the manager finds the first.
        if (known != indices_.end() && places[known->second] != PlaybackEvent::noDongle) continue;
        if (known != indices_.end()) places[known->second] = static_cast<std::uint32_t>(dongles.size());
        dongles.push_back(dongleOf(portName, *record));
    }
    for (std::size_t index = 0; index < places.size(); ++index) {
        if (places[index] != PlaybackEvent::noDongle) continue;
        places[index] = static_cast<std::uint32_t>(dongles.size());
        dongles.push_back(std::move(playback_.dongles[index]));
    }
    for (PlaybackEvent& event : playback_.events) {
        if (event.dongle != PlaybackEvent::noDongle) event.dongle = places[event.dongle];
    }
    playback_.dongles = std::move(dongles);
    playback_.registry = std::make_shared<const Settings>(std::move(registry_));
    return std::exchange(playback_, {});
}

void PlaybackRecorder::noteRegistry(const Settings& registry) {
    for (const auto& [portName, record] : registry) registry_.insert_or_assign(portName, record);
}

std::uint32_t PlaybackRecorder::indexOf(std::string_view MACAddr) {
    const auto known = indices_.find(MACAddr);
    if (known != indices_.end()) return known->second;
    const auto index = static_cast<std::uint32_t>(playback_.dongles.size());
    playback_.dongles.push_back({std::string(MACAddr), {}, {}});
    indices_.emplace(MACAddr, index);
    return index;
}

void PlaybackRecorder::add(Kind kind, std::uint32_t dongle, std::int32_t RSSI) {
    playback_.events.push_back({clock_(), kind, dongle, RSSI});
}

std::shared_ptr<QXNearcastManagerDelegate> PlaybackRecorder::delegate(bool discovers, bool updates) {
    auto delegate = std::make_shared<QXNearcastManagerDelegate>();
    if (discovers) {
        delegate->didDiscoverPort = [this](std::string_view, QXDeviceType, std::string_view MACAddr,
                                           std::int32_t RSSI) {
            if (clock_) add(Kind::reported, indexOf(MACAddr), RSSI);
        };
    }
    if (updates) {
        delegate->didUpdateState = [this](std::string_view, std::string_view MACAddr) {
            if (clock_) add(Kind::silent, indexOf(MACAddr), 0);
        };
    }
    return delegate;
}

void PlaybackRecorder::heard(const CBPeripheral& peripheral, const AdvertisementData& data, std::int32_t RSSI) {
    if (!clock_ || RSSI == noReading) return;
    DongleAddress address;
    if (!address.read(data.manufacturerData, peripheral.name)) return;
    add(Kind::heard, indexOf(address.text()), RSSI);
}

void PlaybackRecorder::radioChanged(CBManagerState state) {
    // A recording may hold any number here.
    const std::int64_t known = std::clamp<std::int64_t>(state, INT32_MIN, INT32_MAX);
    if (clock_) add(Kind::radio, PlaybackEvent::noDongle, static_cast<std::int32_t>(known));
}

/// The manager stops the scan before each start; that is a restart only if a scan was running.
void PlaybackRecorder::scanAsked(const std::optional<std::vector<CBUUID>>& /*services*/, ScanOptions /*options*/) {
    if (!clock_) return;
    const bool restarts = !playback_.events.empty() && playback_.events.back().kind == Kind::scanStopped &&
                          playback_.events.back().at == clock_();
    if (restarts) {
        playback_.events.back().kind = Kind::scanRestarted;
    } else if (!scanning_) {
        add(Kind::scanStarted, PlaybackEvent::noDongle, 0);
    }
    scanning_ = true;
}

void PlaybackRecorder::stopAsked() {
    if (clock_ && std::exchange(scanning_, false)) add(Kind::scanStopped, PlaybackEvent::noDongle, 0);
}

/// Stands between the radio and the manager.
class PlaybackPlatform::Witness : public CBCentralManagerDelegate {
public:
    Witness(PlaybackRecorder& recorder, CBCentralManagerDelegate& manager) : recorder_(recorder), manager_(manager) {}

    void centralManagerDidUpdateState(CBCentralManager& central) override {
        recorder_.radioChanged(central.state());
        manager_.centralManagerDidUpdateState(central);
    }
    void centralManagerDidDiscoverPeripheral(CBCentralManager& central, const CBPeripheral& peripheral,
                                             const AdvertisementData& advertisementData, std::int32_t RSSI) override {
        recorder_.heard(peripheral, advertisementData, RSSI);
        manager_.centralManagerDidDiscoverPeripheral(central, peripheral, advertisementData, RSSI);
    }

private:
    PlaybackRecorder& recorder_;
    CBCentralManagerDelegate& manager_;
};

std::unique_ptr<CBCentralManager> PlaybackPlatform::centralManager(CBCentralManagerDelegate& delegate) {
    witness_ = std::make_shared<Witness>(recorder_, delegate);
    return VirtualPlatform::centralManager(*witness_);
}

}  // namespace nearcast::lab

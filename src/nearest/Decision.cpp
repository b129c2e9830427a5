// SPDX-License-Identifier: Apache-2.0
#include "nearest/Decision.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace nearcast::nearest {

namespace {

/// Whether a controller may report it (Core Specification, Volume 4, Part E, 7.7.65.2). Some report +40 dBm at times.
bool isReading(std::int32_t RSSI) {
    constexpr std::int32_t weakest = -127;
    constexpr std::int32_t strongest = 20;
    return RSSI >= weakest && RSSI <= strongest;
}

/// The address of a device's dongle; null where its record names none. An empty text is an address, as any other text.
const std::string* addressIn(const SettingRecord& record) {
    const auto value = record.find(kQXDongleMACAddr);
    return value == record.end() ? nullptr : value->second.as<std::string>();
}

/// Takes over what was learned by hearing the device.
void adopt(Device& device, const Device& known) {
    Device merged = known;
    merged.threshold = device.threshold;
    device = std::move(merged);
}

}  // namespace

Decision::Decision(const NearestSettings& settings) : settings_(settings), surroundings_(settings) {
    settings_.validate();
}

Device* Decision::find(std::string_view MACAddr) {
    const auto known = byAddress_.find(MACAddr);
    return known == byAddress_.end() ? nullptr : &devices_[known->second];
}

Device Decision::fromRecord(const std::string& portName, const SettingRecord& record) const {
    Device device;
    device.portName = portName;
    const std::string* const address = addressIn(record);
    device.hasDongle = address != nullptr;
    if (device.hasDongle) device.MACAddr = *address;
    const auto threshold = record.find(kQXThreshouldRSSI);
    device.threshold = threshold == record.end() ? settings_.defaultThreshold : threshold->second.intValue();
    return device;
}

/// A registry's devices, made apart: where there is not memory enough for them, the decision goes on with those it has.
struct Decision::Roll {
    std::vector<Device> devices;
    ByAddress byAddress;
    std::vector<Index> audible;
};

void Decision::setRegistry(double at, const Settings& registry) {
    const double now = advance(at);
    const std::optional<Device> last = present_ == none ? std::nullopt : std::optional(devices_[present_]);
    const std::optional<Device> missed = missed_ ? std::optional(devices_[missed_->device]) : std::nullopt;
    Roll roll = rollOf(now, registry);
    devices_.swap(roll.devices);
    byAddress_.swap(roll.byAddress);
    audible_.swap(roll.audible);
    restoreMissed(missed);
    restoreChoice(now, last);
}

Decision::Roll Decision::rollOf(double now, const Settings& registry) const {
    Roll roll;
    roll.devices.reserve(registry.size());
    roll.audible.reserve(registry.size());  // enough for whatever is heard
    for (const auto& [portName, record] : registry) {
        if (record == nullptr) continue;
        Device device = fromRecord(portName, *record);
        if (device.hasDongle && roll.byAddress.try_emplace(device.MACAddr, roll.devices.size()).second) {
            const auto same = byAddress_.find(device.MACAddr);
            if (same != byAddress_.end() && devices_[same->second].portName == portName) {
                adopt(device, devices_[same->second]);
                device.settle(now, settings_);
            }
        }
        if (device.level) roll.audible.push_back(roll.devices.size());
        roll.devices.push_back(std::move(device));
    }
    return roll;
}

void Decision::restoreMissed(const std::optional<Device>& missed) {
    if (!missed) return;
    const Device* device = find(missed->MACAddr);
    if (device != nullptr && device->portName == missed->portName) {
        missed_->device = static_cast<Index>(device - devices_.data());
    } else {
        missed_.reset();
    }
}

void Decision::restoreChoice(double at, const std::optional<Device>& last) {
    if (!last) return;
    present_ = none;
    const Device* device = find(last->MACAddr);
    if (device != nullptr && device->portName == last->portName) {
        present_ = static_cast<Index>(device - devices_.data());
    } else {
        choose(strongestInside(none, at), at, NearestRule::removed);
    }
}

void Decision::heard(double at, std::string_view MACAddr, std::int32_t RSSI) {
    const double now = advance(at);
    Device* device = find(MACAddr);
    if (device == nullptr) return;
    if (!isReading(RSSI)) return keepAlive(*device, now);
    arrive(*device, now);
    device->hear(now, RSSI, settings_);
    noteStaleness();
}

void Decision::reported(double at, std::string_view MACAddr, std::int32_t RSSI) {
    const double now = advance(at);
    Device* device = find(MACAddr);
    if (device == nullptr) return;
    if (!isReading(RSSI)) return keepAlive(*device, now);
    arrive(*device, now);
    device->report(now, RSSI, settings_);
    noteStaleness();
}

bool Decision::reported(double at, std::string_view portName, std::string_view MACAddr, std::int32_t RSSI) {
    const Device* device = find(MACAddr);
    if (device == nullptr ? !portName.empty() : device->portName != portName) return false;
    reported(at, MACAddr, RSSI);
    return true;
}

void Decision::setRadio(double at, bool hears, double since) {
    // Set before the devices are compared: a device that the radio could not hear is not silent.
    now_ = std::max(at, now_);
    if (hears == hears_ && since == radioSince_) return;
    hears_ = hears;
    radioSince_ = since;
    endStale(now_);
    noteStaleness();
}

void Decision::pass(double at) {
    const double now = std::max(at, now_);
    now_ = now;
    compare(now, now - compared_);
}

bool Decision::wouldFallSilent(double at) const {
    return present_ != none && hears_ && isSilent(devices_[present_], std::max(at, now_));
}

bool Decision::stale() const { return stale_; }

/// Lets time pass up to an event, with the levels from before it.
double Decision::advance(double at) {
    now_ = std::max(at, now_);
    if (const double elapsed = now_ - compared_; elapsed >= step) compare(now_, elapsed);
    return now_;
}

/// A device is heard. One that was silent starts again.
void Decision::arrive(Device& device, double at) {
    if (device.level && !isSilent(device, at)) return;
    const auto index = static_cast<Index>(&device - devices_.data());
    const bool listed = device.level.has_value();
    device.forget();
    if (missed_ && missed_->device == index) device.evidence = settings_.patience;
    if (!listed) audible_.push_back(index);
}

/// A device is heard, but how strongly is not known.
void Decision::keepAlive(Device& device, double at) {
    if (device.level && !isSilent(device, at)) device.heardAt = at;
    noteStaleness();
}

bool Decision::isSilent(const Device& device, double at) const {
    return at - std::max(device.heardAt, radioSince_) >= settings_.silence;
}

void Decision::compare(double at, double elapsed) {
    compared_ = at;
    if (!hears_) return endStale(at);
    dropSilent(at);
    forgetMissed(at);
    const double counted = std::min(elapsed, settings_.silence);
    learnPlace(counted);
    addUpLeads(at, counted);
    leave(at);
    if (present_ == none) {
        enter(at, NearestRule::entered);
    } else {
        follow(at);
    }
    noteStaleness();
}

void Decision::dropSilent(double at) {
    const bool presentSilent = present_ != none && isSilent(devices_[present_], at);
    if (presentSilent) {
        const Device& device = devices_[present_];
        missed_ = Missed{present_, *device.level, std::max(device.heardAt, radioSince_) + settings_.silence};
    }
    const auto drop = [&](Index index) {
        if (!isSilent(devices_[index], at)) return false;
        devices_[index].forget();
        return true;
    };
    audible_.erase(std::remove_if(audible_.begin(), audible_.end(), drop), audible_.end());
    if (presentSilent) enter(at, NearestRule::silent);
}

/// Lost packets look like silence. So a device that fell silent while it was chosen can return without its lead adding
/// up again, as long as an old choice counts.
void Decision::forgetMissed(double at) {
    if (missed_ && at - missed_->at >= settings_.staleFor) missed_.reset();
}

/// Seconds that a device still has to wait before it replaces one that fell silent: none if it is about as strong.
double Decision::waitsForMissed(const Device& device, double at) const {
    if (!missed_ || devices_[missed_->device].level) return 0;
    if (*device.level >= missed_->level - settings_.hysteresis) return 0;
    return std::max(0.0, missed_->at + settings_.silence - at);
}

/// Which signal is a close one differs from place to place and from dongle to dongle.
void Decision::learnPlace(double elapsed) {
    const Index best = strongest(none);
    if (best == none) return;
    NextLevels next;
    for (const Index index : audible_) {
        if (index != best) next.add(*devices_[index].level);
    }
    surroundings_.learn(elapsed, *devices_[best].level, next.mean(), settings_);
}

void Decision::addUpLeads(double at, double elapsed) {
    if (present_ == none) return;
    constexpr double most = 12;  // dB: one reading that is far too strong is not enough to switch
    const double present = devices_[present_].expected(settings_);
    const double clarity = surroundings_.clarity(settings_);
    for (const Index index : audible_) {
        Device& device = devices_[index];
        if (index == present_) continue;
        if (!device.isInside(at, settings_)) continue;
        const double expected = device.expected(settings_);
        double lead = std::min(expected - present - settings_.margin, most);
        if (lead > 0) lead *= surroundings_.weight(expected, settings_);
        device.evidence = std::max(0.0, device.evidence + lead * clarity * elapsed);
    }
}

void Decision::leave(double at) {
    if (present_ == none || at - since_ < settings_.dwell) return;
    if (devices_[present_].isOutside(at, settings_)) enter(at, NearestRule::left);
}

/// Chooses the strongest device inside its area, or none.
void Decision::enter(double at, NearestRule rule) {
    Index best = strongestInside(present_, at);
    if (best != none && waitsForMissed(devices_[best], at) > 0) best = none;
    if (best != none || present_ != none) choose(best, at, rule);
}

/// The strongest of those inside, if it has been inside for long enough; a weaker one would soon be left again for it.
Decision::Index Decision::strongestInside(Index but, double at) const {
    Index best = none;
    for (const Index index : audible_) {
        const Device& device = devices_[index];
        if (index == but || !device.insideSince || device.heardAt < radioSince_) continue;
        if (best == none || *device.level > *devices_[best].level) best = index;
    }
    return best != none && devices_[best].isInside(at, settings_) ? best : none;
}

/// Switches to the strongest of the others once its lead has added up.
void Decision::follow(double at) {
    if (at - since_ < settings_.dwell) return;
    const Index best = strongest(present_);
    if (best == none) return;
    const Device& device = devices_[best];
    if (!device.isInside(at, settings_) || device.evidence < settings_.patience) return;
    if (device.expected(settings_) - devices_[present_].expected(settings_) > settings_.margin)
        choose(best, at, NearestRule::led);
}

/// While the radio cannot hear, the choice ends after a time.
void Decision::endStale(double at) {
    if (hears_ || present_ == none || at - radioSince_ < settings_.staleFor) return;
    choose(none, at, NearestRule::blind);
}

void Decision::choose(Index device, double at, NearestRule rule) {
    present_ = device;
    rule_ = rule;
    since_ = at;
    stale_ = false;
    ++changes_;
    if (rule != NearestRule::silent) missed_.reset();
    for (const Index index : audible_) devices_[index].evidence = 0;
    noteStaleness();
}

void Decision::noteStaleness() {
    if (present_ == none) return;
    const Device& device = devices_[present_];
    const bool stale = !hears_ || device.heardAt < radioSince_;
    if (stale != stale_) ++changes_;
    stale_ = stale;
}

Decision::Index Decision::strongest(Index but) const {
    Index best = none;
    for (const Index index : audible_) {
        if (index == but || devices_[index].heardAt < radioSince_) continue;
        if (best == none || devices_[index].expected(settings_) > devices_[best].expected(settings_)) best = index;
    }
    return best;
}

}  // namespace nearcast::nearest

// SPDX-License-Identifier: Apache-2.0
// What is in the air, and what bluetoothd makes of it.
#include "doubles/FakeBluez.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

constexpr auto sweepInterval = 1s;
constexpr int leastChange = 8;  // dB, where the filter does not ask for duplicates
constexpr int noReading = 127;

/// What a device says as the kernel hands it over; of more than an event of the controller holds, the last piece.
std::vector<std::uint8_t> octetsOf(const FakeDongle& dongle) {
    constexpr std::size_t mostInAnEvent = 229;
    std::vector<std::uint8_t> octets = *dongle.data;
    while (octets.size() > mostInAnEvent) octets.erase(octets.begin(), octets.begin() + mostInAnEvent);
    if (dongle.response) octets.insert(octets.end(), dongle.response->begin(), dongle.response->end());
    return octets;
}

}  // namespace

std::string FakeBluez::pathOf(const FakeDongle& dongle) {
    std::string address = dongle.address;
    std::replace(address.begin(), address.end(), ':', '_');
    return pathOf(dongle.adapter) + "/dev_" + address;
}

void FakeBluez::advertise(std::size_t index) {
    Sender& sender = dongles_[index];
    if (!sender.dongle.silent) {
        if (waiting_ && *waiting_ != index) hear(dongles_[*std::exchange(waiting_, std::nullopt)]);
        if (sender.dongle.asked && !sender.dongle.response) {
            waiting_ = index;
        } else {
            hear(sender);
        }
    }
    at(now_ + sender.dongle.interval, [this, index] { advertise(index); });
}

void FakeBluez::describe(Sender& sender, bool reading) {
    const FakeDongle& dongle = sender.dongle;
    if (dongle.data) {
        sender.read = BluezReading::of(octetsOf(dongle));
    } else {
        sender.read = {dongle.name, dongle.services, {{dongle.company, dongle.octets}}};
    }
    news_.clear();
    news_.address = dongle.address;
    news_.randomAddress = dongle.randomAddress;
    news_.hasServices = true;
    for (const std::string& service : sender.read.services) news_.services.emplace_back(service);
    if (sender.read.name) news_.name = *sender.read.name;
    for (const auto& [company, octets] : sender.read.manufacturers) news_.offer({company, octets});
    if (reading) news_.RSSI = dongle.RSSI;
}

/// Whether the kernel and bluetoothd let an advertisement become a report.
bool FakeBluez::reaches(const Sender& sender, const Adapter& adapter) const {
    // The kernel drops what has no reading where the filter has one.
    if (adapter.ours && adapter.filtered && !adapter.others && sender.dongle.RSSI == noReading) return false;
    return std::none_of(dongles_.begin(), dongles_.end(), [&](const Sender& other) {
        return &other != &sender && other.shown && pathOf(other.dongle) == pathOf(sender.dongle);
    });
}

void FakeBluez::hear(Sender& sender) {
    Adapter* const adapter = find(pathOf(sender.dongle.adapter));
    if (!daemon_ || hanging_ || adapter == nullptr || !(adapter->ours || adapter->others)) return;
    // For a monitor the kernel goes on scanning, whatever became of the discovery.
    if ((adapter->dead && monitored_.empty()) || stalled_ || deaf_ || listener_ == nullptr) return;
    ++adapter->events;
    if (!reaches(sender, *adapter)) return;
    const Time round = round_ + (now_ - round_) / strictCycle * strictCycle;
    if (duplicatesDropped_ && sender.shown && sender.lastReport >= round) return;
    sender.lastHeard = sender.lastReport = now_;
    const bool first = !std::exchange(sender.shown, true);
    const std::string path = pathOf(sender.dongle);
    describe(sender, true);
    if (first && !forgetful_) {
        ++reports_;
        sender.lastRSSI = sender.dongle.RSSI;
        return listener_->deviceAdded(path, news_);
    }
    news_.address.reset();
    news_.randomAddress.reset();
    news_.hasServices = false;
    news_.services.clear();
    news_.name.reset();
    if (!adapter->filtered && !adapter->others) {
        if (std::abs(sender.dongle.RSSI - sender.lastRSSI) < leastChange) return;
        news_.manufacturer.reset();
    }
    sender.lastRSSI = sender.dongle.RSSI;
    ++reports_;
    listener_->deviceChanged(path, news_);
}

void FakeBluez::showUnheard(std::size_t index) {
    at(now_, [this, index] {
        Sender& sender = dongles_.at(index);
        sender.shown = true;
        sender.lastHeard = now_;
        describe(sender, false);
        if (listener_ != nullptr) listener_->deviceAdded(pathOf(sender.dongle), news_);
    });
}

void FakeBluez::removeSilent() {
    for (Sender& sender : dongles_) {
        if (!sender.shown || now_ - sender.lastHeard < silenceLimit) continue;
        sender.shown = false;
        tell([path = pathOf(sender.dongle)](auto& listener) { listener.deviceRemoved(path); });
    }
    at(now_ + sweepInterval, [this] { removeSilent(); });
}

void FakeBluez::removeDevices() {
    for (Sender& sender : dongles_) {
        if (!std::exchange(sender.shown, false)) continue;
        tell([path = pathOf(sender.dongle)](auto& listener) { listener.deviceRemoved(path); });
    }
}

}  // namespace nearcast::bluez

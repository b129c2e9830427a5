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

}  // namespace

std::string FakeBluez::pathOf(const FakeDongle& dongle) {
    std::string address = dongle.address;
    std::replace(address.begin(), address.end(), ':', '_');
    return pathOf(dongle.adapter) + "/dev_" + address;
}

void FakeBluez::advertise(std::size_t index) {
    Sender& sender = dongles_[index];
    if (!sender.dongle.silent) hear(sender);
    at(now_ + sender.dongle.interval, [this, index] { advertise(index); });
}

void FakeBluez::describe(const Sender& sender, bool reading) {
    news_.clear();
    news_.address = sender.dongle.address;
    news_.randomAddress = false;
    news_.hasServices = true;
    for (const std::string& service : sender.dongle.services) news_.services.emplace_back(service);
    if (sender.dongle.name) news_.name = *sender.dongle.name;
    news_.manufacturer = {sender.dongle.company, sender.dongle.octets};
    if (reading) news_.RSSI = sender.dongle.RSSI;
}

void FakeBluez::hear(Sender& sender) {
    Adapter* const adapter = find(pathOf(sender.dongle.adapter));
    if (!daemon_ || hanging_ || adapter == nullptr || !(adapter->ours || adapter->others)) return;
    // For a monitor the kernel goes on scanning, whatever became of the discovery.
    if ((adapter->dead && monitored_.empty()) || stalled_ || deaf_) return;
    if (listener_ == nullptr) return;
    ++adapter->events;
    if (listener_ == nullptr) return;
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

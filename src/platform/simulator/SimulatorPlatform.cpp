// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SimulatorPlatform.h"

#include "support/Dongle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>

namespace nearcast::simulator {

namespace {

Timeline::Time microseconds(double seconds) { return Timeline::Time(std::llround(seconds * 1e6)); }

CBManagerState firstState(const Scene& scene) {
    const bool fromTheStart = !scene.radio.empty() && scene.radio.front().at <= 0;
    return fromTheStart ? scene.radio.front().state : CBManagerStatePoweredOn;
}

/// What a dongle sends that has its address in its name: the manager looks at the name only where there is manufacturer
/// data, and that of another manufacturer.
const std::vector<std::uint8_t> otherManufacturer = {0xFE, 0xFF};

std::vector<std::uint8_t> payloadOf(const std::string& address) {
    const PackedAddress packed = packedAddress(address);
    std::array<std::uint8_t, AddressText::octets> octets{};
    for (std::size_t octet = 0; octet < octets.size(); ++octet) {
        octets[octet] = static_cast<std::uint8_t>(packed >> 8 * (octets.size() - 1 - octet));
    }
    return dongle::payloadOf(octets);
}

AdvertisingReport reportOf(const Dongle& sender) {
    AdvertisingReport report;
    report.manufacturerData = sender.payload == Dongle::Payload::name ? otherManufacturer : payloadOf(sender.address);
    if (sender.payload != Dongle::Payload::data) report.name = dongle::nameOf(sender.address);
    report.services = {CBUUID::UUIDWithString(dongle::serviceUUID)};
    return report;
}

}  // namespace

SimulatorRadio::SimulatorRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                               Timeline& timeline, Scene scene)
    : Radio(delegate, console, monitor, firstState(scene)),
      timeline_(timeline.weak_from_this()),
      opened_(timeline.now()),
      shop_(std::move(scene)),
      heardInScan_(shop_.scene().dongles.size(), 0) {
    for (const Dongle& dongle : shop_.scene().dongles) reports_.push_back(reportOf(dongle));
    const auto& changes = shop_.scene().radio;
    if (!changes.empty() && changes.front().at <= 0) changesDone_ = 1;
    timeline.setSource(this);
}

SimulatorRadio::~SimulatorRadio() {
    if (const auto timeline = timeline_.lock()) timeline->setSource(nullptr);
}

void SimulatorRadio::scanChanged(const std::optional<Scan>& scan) {
    if (!scan) return;
    {
        const MutexLock lock(mutex_);
        ++scans_;
        allowDuplicates_ = scan->allowDuplicates;
    }
    const auto timeline = timeline_.lock();
    Time expected = notYet;
    if (timeline && started_.compare_exchange_strong(expected, timeline->now())) timeline->sourceChanged();
}

std::optional<Timeline::Time> SimulatorRadio::changeDue() const {
    const auto& changes = shop_.scene().radio;
    if (changesDone_ == changes.size()) return std::nullopt;
    return opened_ + microseconds(changes[changesDone_].at);
}

std::optional<Timeline::Time> SimulatorRadio::shopDue() const {
    constexpr Time notByItself = Timeline::forever + Time(1);  // more is to come, but no time can be given
    const Time started = started_.load();
    if (started == notYet) return notByItself;
    if (const auto due = shop_.due()) return started + *due;
    const auto& duration = shop_.scene().duration;
    if (!duration) return notByItself;  // a shop without dongles
    if (ended_) return std::nullopt;
    return started + microseconds(*duration);
}

std::optional<std::chrono::microseconds> SimulatorRadio::due() {
    const auto shop = shopDue();
    const auto change = changeDue();
    if (!shop || !change) return shop;  // the scene's end is the end of all
    return std::min(*shop, *change);
}

void SimulatorRadio::happen() {
    const auto shop = shopDue();
    if (!shop) return;
    if (const auto change = changeDue(); change && *change <= *shop) {
        changeState(shop_.scene().radio[changesDone_++].state);
    } else if (shop_.due()) {
        advertise();
    } else {
        ended_ = true;
    }
}

void SimulatorRadio::advertise() {
    const Advertisement sent = shop_.next();
    if (!sent.RSSI || state() != CBManagerStatePoweredOn || !scanning() || !isFresh(sent.dongle)) return;
    AdvertisingReport& report = reports_[sent.dongle];
    report.RSSI = *sent.RSSI;
    deliver(report);
}

bool SimulatorRadio::isFresh(std::size_t dongle) {
    const MutexLock lock(mutex_);
    const bool again = std::exchange(heardInScan_[dongle], scans_) == scans_;
    return allowDuplicates_ || !again;
}

SimulatorPlatform::SimulatorPlatform(Console& console, const NSJSONSerialization& JSON, std::unique_ptr<Pace> pace,
                                     Scene scene)
    : TimelinePlatform(console, JSON, std::move(pace)), scene_(std::move(scene)) {}

std::unique_ptr<CBCentralManager> SimulatorPlatform::centralManager(CBCentralManagerDelegate& delegate) {
    return std::make_unique<SimulatorRadio>(delegate, *this, monitor(), timeline(), scene_);
}

}  // namespace nearcast::simulator

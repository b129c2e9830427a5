// SPDX-License-Identifier: Apache-2.0
#include "nearest/Engine.h"

#include "support/Dongle.h"

#include <stdexcept>
#include <utility>

namespace nearcast {

namespace {

constexpr std::int32_t noReading = 127;
constexpr double refreshEvery = 1;  // seconds between automatic refreshes, at least

const Nearest::Sources& complete(const Nearest::Sources& sources) {
    if (!sources.registry) throw std::invalid_argument("Nearest needs a registry to decide by");
    if (!sources.clock) throw std::invalid_argument("Nearest needs a clock");
    if (!sources.health) throw std::invalid_argument("Nearest has to be able to ask how the radio is");
    return sources;
}

}  // namespace

/// Ends the notification if the callback throws; the remaining changes are notified with the next event.
struct Nearest::Engine::Delivery {
    explicit Delivery(Engine& engine) : engine_(engine) {}
    ~Delivery() {
        if (done) return;
        const MutexLock lock(engine_.mutex_);
        engine_.telling_ = false;
    }
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    bool done = false;

private:
    Engine& engine_;
};

Nearest::Engine::Engine(const Sources& sources, Changed changed, const NearestSettings& settings)
    : sources_(complete(sources)), changed_(std::move(changed)), settings_(settings), decision_(settings) {
    refreshNow(sources_.clock());
}

void Nearest::Engine::heard(const HeardAdvertisement& heard) {
    if (!heard.wanted || heard.RSSI == noReading) return;
    DongleAddress address;
    if (!address.read(heard.manufacturerData, heard.name)) return;
    askBeforeSilence(heard.at);
    {
        const MutexLock lock(mutex_);
        decision_.heard(heard.at, address.text(), heard.RSSI);
        noteChange(heard.at);
    }
    tell();
}

void Nearest::Engine::reported(std::string_view portName, std::string_view MACAddr, std::int32_t RSSI) {
    const double at = sources_.clock();
    askBeforeSilence(at);
    if (!takeReport(at, portName, MACAddr, RSSI)) {
        refreshSometimes(at);
        takeReport(at, portName, MACAddr, RSSI);
    }
    tell();
}

bool Nearest::Engine::takeReport(double at, std::string_view portName, std::string_view MACAddr, std::int32_t RSSI) {
    const MutexLock lock(mutex_);
    const bool fits = decision_.reported(at, portName, MACAddr, RSSI);
    noteChange(at);
    return fits;
}

void Nearest::Engine::update() {
    updateUntold();
    tell();
}

void Nearest::Engine::updateUntold() {
    const double at = sources_.clock();
    askRadio(at);
    const MutexLock lock(mutex_);
    decision_.pass(at);
    noteChange(at);
}

void Nearest::Engine::refresh() {
    refreshNow(sources_.clock());
    tell();
}

void Nearest::Engine::refreshSometimes(double at) {
    {
        const MutexLock lock(mutex_);
        if (refreshed_ && at - *refreshed_ < refreshEvery) return;
    }
    refreshNow(at);
}

void Nearest::Engine::refreshNow(double at) {
    std::uint64_t read = 0;
    {
        const MutexLock lock(mutex_);
        read = ++readsBegun_;
    }
    const auto registry = sources_.registry();
    const Settings none;
    const MutexLock lock(mutex_);
    // Another thread may have begun its read later and finished first: what it read is newer.
    if (read < readApplied_) return;
    decision_.setRegistry(at, registry ? *registry : none);
    readApplied_ = read;
    refreshed_ = at;  // not before: a read that failed is tried again with the next report
    noteChange(at);
}

void Nearest::Engine::askBeforeSilence(double at) {
    {
        const MutexLock lock(mutex_);
        if (!decision_.wouldFallSilent(at)) return;
    }
    askRadio(at);
}

void Nearest::Engine::askRadio(double at) {
    const RadioHealth health = sources_.health();
    const MutexLock lock(mutex_);
    decision_.setRadio(at, health.state == CBManagerStatePoweredOn, health.since);
    noteChange(at);
}

void Nearest::Engine::noteChange(double at) {
    if (decision_.changes() == noted_) return;
    NearestChoice now = decision_.choice();
    if (changed_) {
        untold_.push_back({lastNoted_, now, at});
        toTell_ = true;
    }
    lastNoted_ = std::move(now);
    noted_ = decision_.changes();  // last: a change for which there was no memory is noted with the next event
}

/// One thread notifies at a time, in order, including changes that other threads or the callback itself cause
/// meanwhile.
void Nearest::Engine::tell() {
    if (!toTell_) return;
    {
        const MutexLock lock(mutex_);
        if (telling_) return;
        telling_ = true;
    }
    Delivery delivery(*this);
    while (const auto change = takeUntold()) changed_(*change);
    delivery.done = true;
}

/// The next change to notify; nothing when there are no more, and then the notification has ended.
std::optional<NearestChange> Nearest::Engine::takeUntold() {
    const MutexLock lock(mutex_);
    if (untold_.empty()) {
        toTell_ = false;
        telling_ = false;
        return std::nullopt;
    }
    std::optional<NearestChange> change(std::move(untold_.front()));
    untold_.pop_front();
    return change;
}

NearestChoice Nearest::Engine::choice() {
    updateUntold();
    NearestChoice choice;
    {
        const MutexLock lock(mutex_);
        choice = decision_.choice();
    }
    tell();
    return choice;
}

std::vector<NearestExplanation> Nearest::Engine::explain() {
    updateUntold();
    const double at = sources_.clock();
    std::vector<NearestExplanation> explanations;
    {
        const MutexLock lock(mutex_);
        explanations = decision_.explain(at);
    }
    tell();
    return explanations;
}

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#include "doubles/FakeBluez.h"

#include <algorithm>
#include <utility>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

constexpr auto hangLimit = 10s;
constexpr auto sweepInterval = 1s;

const Failure unknownObject{"org.freedesktop.DBus.Error.UnknownObject", "there is no such object"};
const Failure serviceUnknown{"org.freedesktop.DBus.Error.ServiceUnknown", "the name is not activatable"};
const Failure notReady{std::string(error::notReady), "Resource Not Ready"};
const Failure left{std::string(error::noReply), "Message recipient disconnected from message bus without replying"};
const Failure inProgress{std::string(error::inProgress), "Operation already in progress"};
const Failure nothingStarted{std::string(error::failed), "No discovery started"};

}  // namespace

FakeBluez::FakeBluez() {
    adapters_[pathOf("hci0")];
    at(sweepInterval, [this] { removeSilent(); });
    at(strictCycle, [this] { endRound(); });
}

void FakeBluez::runUntil(Time time) {
    while (!happenings_.empty() && happenings_.begin()->first <= time) {
        auto next = happenings_.extract(happenings_.begin());
        now_ = std::max(now_, next.key());
        next.mapped()();
    }
    now_ = std::max(now_, time);
}

std::optional<Time> FakeBluez::due() const {
    return happenings_.empty() ? std::nullopt : std::optional(happenings_.begin()->first);
}

/// Tells the client, if one is connected, at its next turn.
void FakeBluez::tell(const std::function<void(SystemBusListener&)>& what) {
    at(now_, [this, what, connection = connections_] {
        if (listener_ != nullptr && connection == connections_) what(*listener_);
    });
}

/// What bluetoothd itself says, so nothing where it does not run.
void FakeBluez::signal(const std::function<void(SystemBusListener&)>& what) {
    if (daemon_) tell(what);
}

void FakeBluez::breakBus(const Failure& failure) {
    busFailure_ = failure;
    tell([failure](auto& listener) { listener.busLost(failure); });
}

void FakeBluez::startDaemon() {
    daemon_ = true;
    tell([](auto& listener) { listener.daemonChanged(true); });
}

void FakeBluez::killDaemon() {
    daemon_ = hanging_ = stalled_ = false;
    ++deaths_;
    monitored_.clear();
    for (auto& [path, adapter] : adapters_) {
        if (runsInKernel(adapter)) adapter.orphanUntil = std::max(adapter.orphanUntil, now_ + rest_);
        adapter.ours = adapter.discovering = adapter.filtered = adapter.dead = false;
    }
    at(now_ + rest_, [this] { tellOfKernel(); });
    for (Sender& sender : dongles_) sender.shown = false;
    tell([](auto& listener) { listener.daemonChanged(false); });
}

void FakeBluez::plug(const std::string& name, bool powered, bool monitors) {
    Adapter& adapter = adapters_[pathOf(name)];
    adapter.powered = powered;
    adapter.monitors = monitors;
    signalAdded(pathOf(name), adapter);
}

void FakeBluez::plugKnown(const std::string& name, const std::string& address, bool lowEnergy, bool powered) {
    Adapter& adapter = adapters_[pathOf(name)];
    adapter.powered = powered;
    adapter.address = address;
    adapter.lowEnergy = lowEnergy;
    signalAdded(pathOf(name), adapter);
}

void FakeBluez::signalAdded(const std::string& path, const Adapter& adapter) {
    signal([this, path, adapter](auto& listener) {
        listener.adapterAdded(path, newsOf(adapter));
        if (adapter.monitors) listener.monitorsOffered(path);
    });
}

void FakeBluez::unplug(const std::string& name) {
    removeDevices();
    adapters_.erase(pathOf(name));
    if (monitored_ == pathOf(name)) monitored_.clear();
    signal([path = pathOf(name)](auto& listener) { listener.adapterRemoved(path); });
}

void FakeBluez::power(const std::string& name, bool on, PowerState state) {
    Adapter& adapter = adapters_.at(pathOf(name));
    adapter.powered = on;
    adapter.powerState = state;
    if (!on) {
        removeDevices();
        adapter.ours = adapter.filtered = adapter.probed = stalled_ = false;
        adapter.discovering = adapter.dead;
        adapter.orphanUntil = now_;
    }
    tellOfKernel();
    signal([this, path = pathOf(name), adapter](auto& listener) { listener.adapterChanged(path, newsOf(adapter)); });
}

void FakeBluez::place(FakeDongle dongle) {
    const std::size_t index = dongles_.size();
    const Time first = now_ + dongle.interval;
    dongles_.push_back(Sender{.dongle = std::move(dongle)});
    at(first, [this, index] { advertise(index); });
}

void FakeBluez::failAlways(const std::string& method, std::string_view error) {
    if (error.empty()) {
        alwaysFailing_.erase(method);
    } else {
        alwaysFailing_[method] = {std::string(error), "always"};
    }
}

void FakeBluez::starve(const std::string& name) {
    Adapter& adapter = adapters_.at(pathOf(name));
    if (!daemon_ || !runsInKernel(adapter)) return;  // no round ends that it could miss
    adapter.dead = true;
    tellOfKernel();
}

void FakeBluez::discoverForAnother(const std::string& name) {
    adapters_.at(pathOf(name)).others = true;
    tellOfKernel();
}

void FakeBluez::loseDiscovery(const std::string& name) {
    Adapter& adapter = adapters_.at(pathOf(name));
    adapter.ours = false;
    endDiscovery(pathOf(name), adapter);
}

void FakeBluez::blink(const std::string& name, Time duration) {
    for (const bool on : {false, true}) {
        at(on ? now_ + duration : now_, [this, path = pathOf(name), on] {
            Adapter* const adapter = find(path);
            if (adapter == nullptr) return;  // unplugged meanwhile
            adapter->discovering = on;
            tell([path, on](auto& listener) {
                listener.adapterChanged(path, {.powered = {}, .discovering = on, .powerState = {}});
            });
        });
    }
}

void FakeBluez::releaseMonitor() {
    monitored_.clear();
    tell([](auto& listener) { listener.monitorReleased(); });
}

void FakeBluez::forge() {
    tell([](auto& listener) { listener.forged(); });
}

int FakeBluez::count(const std::string& method) const {
    return static_cast<int>(std::count(calls_.begin(), calls_.end(), method));
}

bool FakeBluez::discovers(const std::string& name) const {
    const auto place = adapters_.find(pathOf(name));
    return place != adapters_.end() && place->second.ours;
}

AdapterNews FakeBluez::newsOf(const Adapter& adapter) const {
    AdapterNews news{.powered = adapter.powered, .discovering = adapter.discovering, .powerState = {}};
    if (adapter.powerState != PowerState::unknown) news.powerState = adapter.powerState;
    if (!adapter.address.empty()) news.address = adapter.address;
    news.central = adapter.lowEnergy;
    return news;
}

FakeBluez::Adapter* FakeBluez::find(const std::string& path) {
    const auto place = adapters_.find(path);
    return place == adapters_.end() ? nullptr : &place->second;
}

void FakeBluez::endDiscovery(const std::string& path, Adapter& adapter) {
    adapter.discovering = false;
    tell([path](auto& listener) {
        listener.adapterChanged(path, {.powered = {}, .discovering = false, .powerState = {}});
    });
}

std::optional<Failure> FakeBluez::connect(SystemBusListener& listener) {
    calls_.emplace_back("connect");
    if (busFailure_) return busFailure_;
    ++connections_;
    listener_ = &listener;
    at(now_ + latency, [this, connection = connections_] {
        if (listener_ != nullptr && connection == connections_) listener_->daemonChanged(daemon_);
    });
    return std::nullopt;
}

void FakeBluez::disconnect() {
    if (listener_ == nullptr) return;
    listener_ = nullptr;
    monitored_.clear();
    for (auto& [path, adapter] : adapters_) {
        adapter.ours = adapter.filtered = false;
        adapter.discovering = adapter.dead;
    }
    tellOfKernel();
}

/// What a call comes to that was made when bluetoothd had died so many times.
std::optional<Failure> FakeBluez::outcome(const std::string& method, const Work& work, int deaths) {
    if (deaths != deaths_) return left;
    if (!daemon_) return serviceUnknown;
    if (const auto always = alwaysFailing_.find(method); always != alwaysFailing_.end()) return always->second;
    if (const auto once = failing_.extract(method)) return once.mapped();
    return work();
}

void FakeBluez::call(const std::string& method, Done done, Work work) {
    calls_.push_back(method);
    const auto answer = [this, connection = connections_, done = std::move(done)](const auto& failure) {
        if (listener_ != nullptr && connection == connections_) done(failure);
    };
    if (hanging_) {
        at(now_ + hangLimit, [answer] { answer(Failure{std::string(error::noReply), "Method call timed out"}); });
        return;
    }
    at(now_ + latency_, [this, answer, method, work = std::move(work), deaths = deaths_, connection = connections_] {
        if (listener_ == nullptr || connection != connections_) return;
        const auto failure = outcome(method, work, deaths);
        tellOfKernel();
        if (!held_.contains(method)) return answer(failure);
        heldAnswers_.push_back(
            [this, answer, failure, deaths] { answer(deaths == deaths_ ? failure : std::optional(left)); });
    });
}

void FakeBluez::releaseOldestAnswer() {
    if (heldAnswers_.empty()) return;
    at(now_, std::move(heldAnswers_.front()));
    heldAnswers_.pop_front();
}

void FakeBluez::releaseAnswers() {
    held_.clear();
    for (auto& answer : std::exchange(heldAnswers_, {})) at(now_, std::move(answer));
}

void FakeBluez::listObjects(Done done) {
    call("GetManagedObjects", std::move(done), [this]() -> std::optional<Failure> {
        for (const auto& [path, adapter] : adapters_) {
            listener_->adapterAdded(path, newsOf(adapter));
            if (adapter.monitors) listener_->monitorsOffered(path);
        }
        for (Sender& sender : dongles_) {
            if (!sender.shown) continue;
            describe(sender, true);
            listener_->deviceListed(pathOf(sender.dongle), news_);
        }
        return std::nullopt;
    });
}

void FakeBluez::listDevice(std::string_view path, Done done) {
    call("GetAll", std::move(done), [this, path = std::string(path)]() -> std::optional<Failure> {
        const auto sender = std::find_if(dongles_.begin(), dongles_.end(),
                                         [&](const Sender& one) { return one.shown && pathOf(one.dongle) == path; });
        if (sender == dongles_.end()) return unknownObject;
        describe(*sender, true);
        listener_->deviceListed(path, news_);
        return std::nullopt;
    });
}

void FakeBluez::setDiscoveryFilter(const std::string& adapter, Done done) {
    call("SetDiscoveryFilter", std::move(done), [this, adapter]() -> std::optional<Failure> {
        Adapter* const found = find(adapter);
        if (found == nullptr) return unknownObject;
        if (!found->powered) return notReady;
        found->filtered = true;
        return std::nullopt;
    });
}

void FakeBluez::startDiscovery(const std::string& adapter, Done done) {
    call("StartDiscovery", std::move(done), [this, adapter]() -> std::optional<Failure> {
        Adapter* const found = find(adapter);
        if (found == nullptr) return unknownObject;
        if (!found->powered) return notReady;
        if (found->ours || now_ < found->orphanUntil) return inProgress;
        found->ours = true;
        if (found->dead) return std::nullopt;
        found->discovering = !denies_;
        stalled_ = false;
        round_ = now_;
        duplicatesDropped_ = strict_ && monitored_.empty();
        tell([adapter, on = found->discovering](auto& listener) {
            listener.adapterChanged(adapter, {.powered = {}, .discovering = on, .powerState = {}});
        });
        return std::nullopt;
    });
}

void FakeBluez::stopDiscovery(const std::string& adapter, Done done) {
    call("StopDiscovery", std::move(done), [this, adapter]() -> std::optional<Failure> {
        Adapter* const found = find(adapter);
        if (found == nullptr) return unknownObject;
        if (!found->powered) return notReady;
        if (!found->ours) return nothingStarted;
        found->ours = found->filtered = false;
        if (found->dead && !found->others) return inProgress;
        if (found->dead) return std::nullopt;
        endDiscovery(adapter, *found);
        return std::nullopt;
    });
}

void FakeBluez::registerMonitor(const std::string& adapter, Done done) {
    call("RegisterMonitor", std::move(done), [this, adapter]() -> std::optional<Failure> {
        if (!monitored_.empty()) return Failure{std::string(error::alreadyExists), "Already Exists"};
        monitored_ = adapter;
        return std::nullopt;
    });
}

void FakeBluez::unregisterMonitor(const std::string& /*adapter*/, Done done) {
    call("UnregisterMonitor", std::move(done), [this]() -> std::optional<Failure> {
        monitored_.clear();
        return std::nullopt;
    });
}

}  // namespace nearcast::bluez

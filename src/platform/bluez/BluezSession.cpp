// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/BluezSession.h"

#include <algorithm>
#include <utility>

namespace nearcast::bluez {

namespace {

/// Between two questions about unknown devices, so that many of them do not cause as many calls.
constexpr Time askInterval = std::chrono::milliseconds(20);

bool isBelow(std::string_view path, std::string_view adapter) {
    return !adapter.empty() && path.size() > adapter.size() && path.starts_with(adapter) && path[adapter.size()] == '/';
}

bool takeDue(std::optional<Time>& moment, Time now) {
    if (!moment || now < *moment) return false;
    moment.reset();
    return true;
}

}  // namespace

BluezSession::BluezSession(SystemBus& bus, const Rfkill& rfkill, MgmtPort& mgmt, SessionListener& listener,
                           std::string adapter)
    : bus_(bus),
      rfkill_(rfkill),
      listener_(listener),
      adapters_(std::move(adapter)),
      kernel_(mgmt),
      discovery_(bus, kernel_, {[this] { tell(); }, [this] { listener_.scanRestarted(); }}) {}

void BluezSession::pass(Time now) {
    now_ = now;
    if (takeDue(connectAt_, now_)) connect();
    if (takeDue(listAt_, now_)) list();
    discovery_.pass(now_);
    if (takeDue(settledAt_, now_)) tell();
    if (takeDue(switchesAt_, now_)) update();
}

std::optional<Time> BluezSession::due() const {
    std::optional<Time> earliest = discovery_.due();
    for (const auto& moment : {connectAt_, listAt_, settledAt_, switchesAt_}) takeEarlier(earliest, moment);
    return earliest;
}

void BluezSession::connect() {
    const auto failure = bus_.connect(*this);
    if (failure) return busLost(*failure);
    connected_ = true;
}

void BluezSession::busLost(const Failure& failure) {
    bus_.disconnect();
    connected_ = false;
    busFailure_ = failure;
    daemon_ = Daemon::unknown;
    connectAt_ = now_ + connectPause_.next();
    forgetDaemon();
    update();
}

void BluezSession::daemonChanged(bool there) {
    connectPause_.reset();
    listPause_.reset();
    busFailure_.reset();
    daemon_ = there ? Daemon::present : Daemon::absent;
    forgetDaemon();
    if (there) {
        list();
    } else {
        wasAbsent_ = true;
    }
    update();
}

/// Forgets everything that this bluetoothd said.
void BluezSession::forgetDaemon() {
    ++epoch_;
    listed_ = asking_ = false;
    listFailure_.reset();
    listAt_.reset();
    settledAt_.reset();
    adapters_.clear();
    devices_.clear();
    discovery_.forgetDaemon();
}

void BluezSession::list() {
    bus_.listObjects([this, epoch = epoch_](const std::optional<Failure>& failure) {
        if (epoch == epoch_) listed(failure);
    });
}

void BluezSession::listed(const std::optional<Failure>& failure) {
    listFailure_ = failure;
    if (failure) {
        listAt_ = now_ + listPause_.next();
    } else {
        listed_ = true;
        adapters_.chooseAnew();
        if (std::exchange(wasAbsent_, false)) settledAt_ = now_ + settling;
    }
    update();
}

void BluezSession::adapterAdded(std::string_view path, const AdapterNews& news) {
    if (listed_) settledAt_ = now_ + settling;
    adapters_.add(path, news);
    update();
}

void BluezSession::adapterChanged(std::string_view path, const AdapterNews& news) {
    adapters_.change(path, news);
    update();
}

void BluezSession::adapterRemoved(std::string_view path) {
    const bool ours = path == adapters_.chosen();
    adapters_.remove(path);
    if (ours) discovery_.forgetDaemon();
    update();
}

void BluezSession::monitorsOffered(std::string_view adapter) {
    adapters_.offerMonitors(adapter);
    update();
}

void BluezSession::monitorReleased() { discovery_.loseMonitor(); }

void BluezSession::deviceListed(std::string_view path, const DeviceNews& news) { devices_.learn(path, news); }

void BluezSession::deviceAdded(std::string_view path, const DeviceNews& news) {
    devices_.learn(path, news);
    if (news.RSSI) deviceChanged(path, news);
}

/// Every report comes this way. It counts on our adapter only, and there also when another client's discovery brought
/// it.
void BluezSession::deviceChanged(std::string_view path, const DeviceNews& news) {
    const auto heard = devices_.changed(path, news);
    if (heard.stranger) askFor(path);
    if (heard.report == nullptr || !isBelow(path, adapters_.chosen())) return;
    discovery_.heard();
    listener_.deliver(*heard.report);
}

void BluezSession::deviceRemoved(std::string_view path) { devices_.remove(path); }

/// Asks for a device that was forgotten, or whose signal came before the list: without its services no filter lets it
/// pass.
void BluezSession::askFor(std::string_view device) {
    if (!listed_ || asking_ || now_ < askAfter_) return;
    asking_ = true;
    askAfter_ = now_ + askInterval;
    bus_.listDevice(device, [this, epoch = epoch_](const std::optional<Failure>& /*failure*/) {
        if (epoch == epoch_) asking_ = false;
    });
}

/// Updates the discovery, the switches and what is told after anything has changed.
void BluezSession::update() {
    const Adapter* const adapter = adapters_.current();
    const bool usable = listed_ && adapter != nullptr && adapter->lowEnergy && adapter->powered &&
                        adapter->powerState != PowerState::turningOff;
    discovery_.setAdapter(usable ? std::optional(adapters_.chosen()) : std::nullopt, usable && adapter->monitors);
    discovery_.setDiscovering(usable && adapter->discovering);
    lookAtSwitches();
    tell();
}

void BluezSession::lookAtSwitches() {
    const Adapter* const adapter = adapters_.current();
    if (!listed_ || adapter == nullptr || adapter->powered) {
        block_ = Block::none;
        switchesAt_.reset();
        return;
    }
    block_ = rfkill_.blockOf(adapterName(adapters_.chosen()));
    switchesAt_ = now_ + switchInterval;
}

void BluezSession::tell() {
    RadioCondition now = condition();
    if (now == told_) return;
    told_ = std::move(now);
    listener_.conditionChanged(told_);
}

RadioCondition BluezSession::condition() const {
    if (!listed_) return conditionWithoutAdapters();
    const Adapter* const adapter = adapters_.current();
    if (adapter == nullptr) return conditionWithoutOurs();
    RadioCondition condition = conditionOf(*adapter);
    const std::string renumbered = condition.why.empty() ? adapters_.renumbered() : "";
    if (!renumbered.empty()) {
        condition.why = adapters_.wanted() + " is another adapter than before, which is " + renumbered;
    }
    return condition;
}

RadioCondition BluezSession::conditionWithoutOurs() const {
    const std::string names = adapters_.names();
    if (adapters_.wanted().empty() || names.empty()) {
        return {CBManagerStateUnsupported, "there is no Bluetooth adapter"};
    }
    const std::string renumbered = adapters_.renumbered();
    return {CBManagerStateUnsupported, "there is no adapter " + adapters_.wanted() + " (there is: " + names + ")" +
                                           (renumbered.empty() ? "" : "; the one that was it is " + renumbered)};
}

RadioCondition BluezSession::conditionWithoutAdapters() const {
    if (const auto& failure = busFailure_) {
        const bool denied = failure->name == error::accessDenied;
        return {denied ? CBManagerStateUnauthorized : CBManagerStateUnknown,
                "there is no connection to the system bus: " + failure->message};
    }
    if (daemon_ == Daemon::absent) {
        return {CBManagerStateUnknown, "bluetoothd does not run (systemctl start bluetooth)"};
    }
    if (!listFailure_) return beginning();
    const std::string why = listFailure_->name + ": " + listFailure_->message;
    if (listFailure_->name == error::accessDenied) {
        return {CBManagerStateUnauthorized, "the bus forbids to talk to bluetoothd: " + why};
    }
    return {CBManagerStateUnknown, "bluetoothd does not answer: " + why};
}

RadioCondition BluezSession::conditionOf(const Adapter& adapter) const {
    const std::string name(adapterName(adapters_.chosen()));
    if (!adapter.lowEnergy) {
        return {CBManagerStateUnsupported,
                name + " has no Bluetooth Low Energy: use an adapter of Bluetooth 4.0 or later"};
    }
    if (adapter.powerState == PowerState::turningOff) return {CBManagerStateResetting, name + " is being switched off"};
    if (adapter.powered) return conditionOfScan();
    if (block_ == Block::hard) return {CBManagerStatePoweredOff, name + " is blocked by a switch of the machine"};
    if (block_ == Block::soft || adapter.powerState == PowerState::blocked) {
        return {CBManagerStatePoweredOff, name + " is blocked (rfkill unblock bluetooth)"};
    }
    if (adapter.powerState == PowerState::turningOn || settledAt_) {
        return {CBManagerStateResetting, name + " is coming up"};
    }
    return {CBManagerStatePoweredOff, name + " is switched off (bluetoothctl power on)"};
}

RadioCondition BluezSession::conditionOfScan() const {
    const Failure& failure = discovery_.failure();
    switch (discovery_.state()) {
        case DiscoveryState::well: break;
        case DiscoveryState::denied:
            return {CBManagerStateUnauthorized, "scanning is not allowed: " + failure.name + ": " + failure.message};
        case DiscoveryState::failing:
            return {CBManagerStatePoweredOn, "the scan cannot be started: " + failure.name + ": " + failure.message};
        case DiscoveryState::quiet:
            return {CBManagerStatePoweredOn, "nothing at all is heard: quiet air or a blind radio"};
        case DiscoveryState::inactive:
            return {CBManagerStatePoweredOn,
                    "nothing at all is heard, and bluetoothd says that it does not scan: the radio is blind"};
        case DiscoveryState::dead:
            return {CBManagerStatePoweredOn,
                    discovery_.cannotMend()
                        ? "the scan is dead: bluetoothd takes it for running, and the kernel has ended it (systemctl "
                          "restart bluetooth; bluetoothd -E prevents it, and with CAP_NET_ADMIN it is mended from here)"
                        : "the scan is dead: bluetoothd takes it for running, and the kernel has ended it; it is being "
                          "mended (if that does not help: systemctl restart bluetooth)"};
        case DiscoveryState::unproven:
            return {CBManagerStatePoweredOn, "the scan was dead and has been begun again; nothing is heard yet"};
    }
    return {CBManagerStatePoweredOn, ""};
}

}  // namespace nearcast::bluez

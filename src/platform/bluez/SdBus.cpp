// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/SdBus.h"

#include "platform/Guarded.h"
#include "platform/bluez/SdMessage.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <string>

namespace nearcast::bluez {

namespace {

constexpr const char* noOwner = "org.freedesktop.DBus.Error.NameHasNoOwner";
constexpr std::uint64_t answerLimit = 10'000'000;  // microseconds
constexpr int mostMessages = 64;                   // at once, so that other work gets its turn

// A rule's sender keeps others' broadcasts away. What somebody sends to this connection alone needs no rule to arrive,
// so who has sent a message is looked at too.
constexpr const char* ownerRule =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',interface='org.freedesktop.DBus',"
    "member='NameOwnerChanged',arg0='org.bluez'";
constexpr const char* propertiesRule =
    "type='signal',sender='org.bluez',path_namespace='/org/bluez',interface='org.freedesktop.DBus.Properties',"
    "member='PropertiesChanged'";
// These come from "/", outside /org/bluez.
constexpr const char* objectsRule =
    "type='signal',sender='org.bluez',path='/',interface='org.freedesktop.DBus.ObjectManager'";

int appendFilter(sd_bus_message* message) {
    return sd_bus_message_append(message, "a{sv}", 3, "Transport", "s", "le", "DuplicateData", "b", int{true}, "RSSI",
                                 "n", -127);
}

int appendMonitors(sd_bus_message* message) { return sd_bus_message_append(message, "o", SdMonitor::root); }

int appendDeviceInterface(sd_bus_message* message) { return sd_bus_message_append(message, "s", interface::device); }

}  // namespace

template <class Work>
int SdBus::inside(void* self, Work&& work) noexcept {
    SdBus& bus = *static_cast<SdBus*>(self);
    guarded(bus.console_, "a message of the system bus", [&] { work(bus); });
    return 0;
}

bool SdBus::mayCall(sd_bus_message* call) noexcept {
    bool may = false;
    inside(this, [&](SdBus& bus) { may = bus.isDaemons(call); });
    return may;
}

void SdBus::release() noexcept {
    inside(this, [](SdBus& bus) { bus.listener_->monitorReleased(); });
}

std::optional<Failure> SdBus::connect(SystemBusListener& listener) {
    disconnect();
    listener_ = &listener;
    const int result = open();
    if (failed(result)) return failureOf(result);
    return std::nullopt;
}

// Without slots of ours all that is registered lives as long as the connection.
int SdBus::open() {
    sd_bus* opened = nullptr;
    int result = sd_bus_open_system(&opened);
    BusPointer bus(opened);
    if (failed(result)) return result;
    if (failed(result = watch(opened, ownerRule, onOwnerChanged))) return result;
    if (failed(result = watch(opened, propertiesRule, onProperties))) return result;
    if (failed(result = watch(opened, objectsRule, onObjects))) return result;
    if (failed(result = monitor_.exportOn(opened))) return result;
    result = sd_bus_call_method_async(opened, nullptr, driver::name, driver::path, driver::name, "GetNameOwner",
                                      onOwner, this, "s", service);
    if (!failed(result)) bus_ = std::move(bus);
    return result;
}

void SdBus::disconnect() {
    calls_.clear();
    failed_.clear();
    bus_.reset();
    lost_.reset();
    daemon_.clear();
    daemonKnown_ = forgeryTold_ = false;
}

int SdBus::watch(sd_bus* bus, const char* rule, sd_bus_message_handler_t handler) {
    return sd_bus_add_match_async(bus, nullptr, rule, handler, onWatched, this);
}

/// @param name bluetoothd's unique name; empty: it does not run
void SdBus::setDaemon(std::string_view name) {
    if (daemonKnown_ && name == daemon_) return;
    const bool replaced = !daemon_.empty() && !name.empty();
    daemonKnown_ = true;
    daemon_ = name;
    if (replaced) listener_->daemonChanged(false);
    listener_->daemonChanged(!daemon_.empty());
}

/// Whether the owner of bluetoothd's name has sent it. The bus keeps the order: of one owner all comes before the
/// change to the next, which is taken when it comes. Before the first owner is known, what comes is passed over and is
/// nobody's forgery: the list of objects, which is asked for afterwards, has it.
bool SdBus::isDaemons(sd_bus_message* message) { return daemonKnown_ && isFrom(daemon_, message); }

bool SdBus::isFrom(std::string_view name, sd_bus_message* message) {
    const char* const sender = sd_bus_message_get_sender(message);
    if (sender != nullptr && name == sender) return true;
    refuse(sender == nullptr ? "?" : sender);
    return false;
}

void SdBus::refuse(const char* sender) {
    if (!std::exchange(forgeryTold_, true)) {
        console_.NSLog(std::string("Another program on the system bus, ") + sender +
                       ", speaks in bluetoothd's name: it is not listened to. 'busctl status " + sender +
                       "' says which program it is.");
    }
    listener_->forged();
}

SdBus::Taken SdBus::process(bool all) {
    tellFailed();
    if (!bus_) return {};
    Taken taken;
    int result = sd_bus_process(bus_.get(), nullptr);
    while (result > 0 && !lost_ && ++taken.messages < mostMessages && all) {
        result = sd_bus_process(bus_.get(), nullptr);
    }
    if (failed(result) && !lost_) lost_ = failureOf(result);
    if (!lost_ && sd_bus_is_open(bus_.get()) <= 0) lost_ = Failure{"System.Error", "the connection was closed"};
    taken.more = !lost_ && all && result > 0;
    if (!lost_) return taken;
    const Failure failure = *lost_;
    disconnect();
    listener_->busLost(failure);
    return taken;
}

int SdBus::descriptor() const { return bus_ ? sd_bus_get_fd(bus_.get()) : -1; }

short SdBus::events() const {
    const int events = bus_ ? sd_bus_get_events(bus_.get()) : 0;
    return static_cast<short>(failed(events) ? POLLIN : events);
}

std::optional<Time> SdBus::left() const {
    if (!failed_.empty()) return Time(0);
    std::uint64_t due = UINT64_MAX;
    if (!bus_ || failed(sd_bus_get_timeout(bus_.get(), &due)) || due == UINT64_MAX) return std::nullopt;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const Time present = std::chrono::seconds(now.tv_sec) + Time(now.tv_nsec);
    return std::max(Time(0), std::chrono::microseconds(due) - present);
}

void SdBus::tellFailed() {
    for (auto& [done, failure] : std::exchange(failed_, {})) done(failure);
}

void SdBus::call(const char* path, const char* interface, const char* member, Done done, Read read,
                 const std::function<int(sd_bus_message*)>& fill) {
    std::list<Call> made;
    Call& call = made.emplace_back(Call{this, std::move(done), read, path, nullptr, {}});
    call.place = made.begin();
    sd_bus_message* raw = nullptr;
    int result = bus_ ? sd_bus_message_new_method_call(bus_.get(), &raw, service, path, interface, member) : -ENOTCONN;
    const MessagePointer message(raw);
    if (!failed(result) && fill) result = fill(raw);
    if (!failed(result)) result = send(raw, call);
    if (failed(result)) {
        failed_.emplace_back(std::move(call.done), failureOf(result));
    } else {
        calls_.splice(calls_.end(), made);
    }
}

int SdBus::send(sd_bus_message* message, Call& call) {
    sd_bus_message_set_auto_start(message, 0);  // starting bluetoothd is the administrator's decision
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_call_async(bus_.get(), &slot, message, onAnswer, &call, answerLimit);
    if (!failed(result)) call.slot.reset(slot);
    return result;
}

void SdBus::finish(Call& call, const std::optional<Failure>& failure) {
    std::list<Call> ended;
    ended.splice(ended.end(), calls_, call.place);
    ended.front().done(failure);
}

void SdBus::listObjects(Done done) {
    call("/", interface::objectManager, "GetManagedObjects", std::move(done), &SdBus::takeObjects);
}

void SdBus::listDevice(std::string_view path, Done done) {
    call(std::string(path).c_str(), interface::properties, "GetAll", std::move(done), &SdBus::takeDevice,
         appendDeviceInterface);
}

void SdBus::setDiscoveryFilter(const std::string& adapter, Done done) {
    call(adapter.c_str(), interface::adapter, "SetDiscoveryFilter", std::move(done), nullptr, appendFilter);
}

void SdBus::startDiscovery(const std::string& adapter, Done done) {
    call(adapter.c_str(), interface::adapter, "StartDiscovery", std::move(done));
}

void SdBus::stopDiscovery(const std::string& adapter, Done done) {
    call(adapter.c_str(), interface::adapter, "StopDiscovery", std::move(done));
}

void SdBus::registerMonitor(const std::string& adapter, Done done) {
    call(adapter.c_str(), interface::monitorManager, "RegisterMonitor", std::move(done), nullptr, appendMonitors);
}

void SdBus::unregisterMonitor(const std::string& adapter, Done done) {
    call(adapter.c_str(), interface::monitorManager, "UnregisterMonitor", std::move(done), nullptr, appendMonitors);
}

int SdBus::takeObjects(sd_bus_message* reply, const std::string& /*path*/) {
    return readObjects(reply, news_, *listener_);
}

int SdBus::takeDevice(sd_bus_message* reply, const std::string& path) {
    const int result = readDevice(reply, news_);
    if (!failed(result)) listener_->deviceListed(path, news_);
    return result;
}

int SdBus::onWatched(sd_bus_message* reply, void* self, sd_bus_error* /*error*/) noexcept {
    return inside(self, [&](SdBus& bus) {
        if (const auto failure = failureIn(sd_bus_message_get_error(reply))) bus.lost_ = failure;
    });
}

int SdBus::onOwner(sd_bus_message* reply, void* self, sd_bus_error* /*error*/) noexcept {
    return inside(self, [&](SdBus& bus) {
        const char* name = "";
        const auto failure = failureIn(sd_bus_message_get_error(reply));
        if (failure && failure->name != noOwner) {
            bus.lost_ = failure;
        } else if (failure || !failed(sd_bus_message_read_basic(reply, 's', &name))) {
            bus.setDaemon(name);
        }
    });
}

int SdBus::onOwnerChanged(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) noexcept {
    return inside(self, [&](SdBus& bus) {
        if (!bus.isFrom(driver::name, signal)) return;
        const char* name = nullptr;
        const char* before = nullptr;
        const char* after = nullptr;
        if (!failed(sd_bus_message_read(signal, "sss", &name, &before, &after))) bus.setDaemon(after);
    });
}

int SdBus::onProperties(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) noexcept {
    return inside(self, [&](SdBus& bus) {
        if (!bus.isDaemons(signal)) return;
        const char* changed = nullptr;
        if (failed(sd_bus_message_read_basic(signal, 's', &changed))) return;
        const std::string_view name(changed);
        const char* const path = sd_bus_message_get_path(signal);
        if (name == interface::device) {
            if (failed(readDevice(signal, bus.news_))) return;
            // A reading that has just come is not invalid, so for a report the second half need not be read.
            if (!bus.news_.RSSI && failed(readInvalidated(signal, bus.news_))) return;
            bus.listener_->deviceChanged(path, bus.news_);
        } else if (name == interface::adapter) {
            AdapterNews news;
            if (!failed(readAdapter(signal, news))) bus.listener_->adapterChanged(path, news);
        }
    });
}

int SdBus::onObjects(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) noexcept {
    return inside(self, [&](SdBus& bus) {
        if (!bus.isDaemons(signal)) return;
        const char* path = nullptr;
        if (sd_bus_message_is_signal(signal, nullptr, "InterfacesRemoved") > 0) {
            readRemoved(signal, *bus.listener_);
        } else if (sd_bus_message_is_signal(signal, nullptr, "InterfacesAdded") > 0 &&
                   !failed(sd_bus_message_read_basic(signal, 'o', &path))) {
            readInterfaces(signal, path, false, bus.news_, *bus.listener_);
        }
    });
}

int SdBus::onAnswer(sd_bus_message* reply, void* call, sd_bus_error* /*error*/) noexcept {
    Call& answered = *static_cast<Call*>(call);
    return inside(answered.bus, [&](SdBus& bus) {
        auto failure = failureIn(sd_bus_message_get_error(reply));
        if (!failure && answered.read != nullptr) {
            const int result = (bus.*answered.read)(reply, answered.path);
            if (failed(result)) failure = failureOf(result);
        }
        bus.finish(answered, failure);
    });
}

}  // namespace nearcast::bluez

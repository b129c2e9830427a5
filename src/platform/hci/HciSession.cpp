// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciSession.h"

#include "platform/hciformat/AdStructures.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace nearcast::hci {

namespace {

constexpr const char* quietAlone =
    "nothing has been heard for a while although the controller answers: the air is quiet, or the aerial is dead";
constexpr const char* quietBeside =
    "nothing has been heard for a while: the air is quiet, or no other program scans; start one, for instance "
    "`bluetoothctl scan le`, or take the controller alone, without ?beside";

}  // namespace

HciSession::HciSession(HciPort& port, HciTarget target, SessionListener& listener, AdapterService* service)
    : port_(port),
      target_(std::move(target)),
      listener_(listener),
      service_(service),
      condition_(beginning(target_)),
      controller_(
          [this](std::span<const std::uint8_t> packet) { return socket_ ? socket_->write(packet) : ENOTCONN; }) {}

RadioCondition HciSession::beginning(const HciTarget& target) {
    return {CBManagerStateUnknown, target.name() + " is being started"};
}

void HciSession::pass(Time now) {
    takeWish(now);
    if (socket_ && now - lastPass_ > longestGap) wakeUp(now);
    lastPass_ = now;
    if (!socket_ && (!openAt_ || now >= *openAt_)) open(now);
    if (socket_ && now >= askAt_) ask(now);
    if (socket_) read(now);
    if (socket_) follow(now);
    if (socket_) watch(now);
    if (socket_) probe(now);
}

void HciSession::takeWish(Time now) {
    if (wanted_) {
        scans_ = true;
        endScan_.reset();
    } else if (scans_ && !endScan_) {
        endScan_ = now + linger;
    } else if (endScan_ && now >= *endScan_) {
        scans_ = false;
        endScan_.reset();
        if (listens()) become({CBManagerStatePoweredOn, ""});  // a silence that was told has ended too
    }
}

std::optional<Time> HciSession::due() const {
    std::optional<Time> earliest = socket_ ? askAt_ : openAt_.value_or(Time::min());
    takeEarlier(earliest, endScan_);
    if (!socket_) return earliest;
    if (alone()) takeEarlier(earliest, controller_.due());
    if (mayBeDead()) takeEarlier(earliest, probeAt_);
    takeEarlier(earliest, quiet_.due());
    return earliest;
}

void HciSession::open(Time now) {
    openAt_ = now + pause_.next();  // before anything can throw
    const HciAdapterList machine = port_.adapters();
    const HciPort::Asked asked = find(target_, machine);
    if (const auto reason = obstacle(target_, asked, machine)) {
        unsuited_ = false;
        return become(*reason);
    }
    if (unsuited_) return;
    const bool leaveOff = turnsOn(*asked.adapter);
    HciPort::Opened opened = port_.open(target_.index, target_.access);
    if (!opened.socket) return become(refused(*asked.adapter, opened.error));
    if (leaveOff) leaveOff_ = true;
    socket_ = std::move(opened.socket);
    askAt_ = now + askInterval;
    events_ = HciEvents();
    proven_ = false;
    if (!alone()) return listening(now);
    // Before the controller was ready for the first time, the state is still unknown.
    if (condition_.state != CBManagerStateUnknown && condition_.state != CBManagerStateResetting) {
        become({CBManagerStateResetting, target_.name() + " is being started"});
    }
    controller_.start(now);
}

/// Asked before it is taken: afterwards the service does not know it. One that is up is not to be had, or (beside
/// others) not to be taken.
bool HciSession::turnsOn(const HciAdapter& adapter) {
    return service_ != nullptr && !leaveOff_ && !adapter.up && service_->turnsOn(target_.device());
}

/// It was off when it was taken. If the service has it now, because it was lost or given up for a moment, and nobody
/// has found a use for it, then only because the service switches on what it gets.
RadioCondition HciSession::refused(const HciAdapter& adapter, int error) {
    const bool lostToService = leaveOff_ && error == EBUSY && adapter.up && !port_.hasLinks(target_.index);
    if (lostToService && service_->turnOff(target_.device())) {
        return {CBManagerStateResetting,
                target_.name() + " was switched on by the Bluetooth service, as it does by itself; it is taken back"};
    }
    return refusal(target_, adapter, port_.capabilities(), error);
}

void HciSession::release() {
    if (!socket_) return;
    socket_.reset();
    if (leaveOff_.exchange(false)) service_->leaveOff(target_.device());
}

void HciSession::wakeUp(Time now) {
    if (!alone()) return;
    controller_.start(now);
    if (scans_) listener_.scanRestarted();
}

/// Asks whether the controller is still there, and for a raw socket whether it is switched on.
void HciSession::ask(Time now) {
    askAt_ = now + askInterval;
    const HciPort::Asked asked = port_.adapter(target_.index);
    if (!asked.adapter && asked.error != ENODEV) return;  // the question itself failed
    if (asked.adapter && alone()) return;                 // nobody else can switch it off while it is ours
    if (const auto reason = obstacle(target_, asked)) lose(now, *reason);
}

void HciSession::read(Time now) {
    for (int i = 0; i < mostPackets && socket_; ++i) {
        const HciSocket::Received received = socket_->read();
        if (received.error != 0) {
            return lose(now, {CBManagerStateResetting,
                              target_.name() + " is lost: " + std::generic_category().message(received.error)});
        }
        if (received.packet.empty()) return;
        take(received.packet, now);
    }
}

void HciSession::take(std::span<const std::uint8_t> packet, Time now) {
    probeAt_ = now + probeAfter;
    if (packet[0] != eventPacket) return;
    const auto event = packet.subspan(1);
    const auto outcome = events_.read(event, [&](const RawReport& raw) { report(raw, now); });
    if (outcome == HciEvents::Outcome::other && alone()) controller_.received(event, now);
}

void HciSession::report(const RawReport& raw, Time now) {
    if (!scans_) return;  // beside others, reports come from their scans
    proven_ = true;
    quiet_.heard(now);
    if (!condition_.why.empty()) become({CBManagerStatePoweredOn, ""});
    AdvertisingReport report;
    readReport(raw, report);  // what precedes a malformed structure is good
    senders_.complete(report);
    listener_.deliver(report);
}

/// Brings the controller into line with what is wanted, and the condition with what the controller is.
void HciSession::follow(Time now) {
    if (!alone()) return;
    controller_.setScan(scans_, now);
    controller_.tick(now);
    switch (controller_.phase()) {
        case HciController::Phase::idle:
        case HciController::Phase::starting: break;
        case HciController::Phase::ready:
            if (!listeningSince_) listening(now);
            break;
        case HciController::Phase::failed:
            lose(now,
                 {CBManagerStateResetting, target_.name() + " " + controller_.failure() + "; it is started again"});
            break;
        case HciController::Phase::unsuited:
            unsuited_ = true;
            lose(now, {CBManagerStateUnsupported, target_.name() + " " + controller_.failure()});
            break;
    }
}

void HciSession::listening(Time now) {
    listeningSince_ = now;
    become({CBManagerStatePoweredOn, ""});
}

/// After the watch: what that begins against silence shows as well whether the controller lives.
void HciSession::probe(Time now) {
    if (!mayBeDead() || now < probeAt_) return;
    probeAt_ = now + probeAfter;
    controller_.probe(now);
}

/// Against silence the scan is started again, and where that did not help, the whole controller. Beside others neither
/// is ours to start.
void HciSession::watch(Time now) {
    if (listens() && now - *listeningSince_ >= provenAfter) proven_ = true;
    quiet_.scan(scans_ && listens(), now);
    const bool again = quiet_.quiet();
    if (!quiet_.rings(now)) return;
    become({CBManagerStatePoweredOn, alone() ? quietAlone : quietBeside});
    if (!alone()) return;
    if (again) {
        controller_.start(now);
    } else {
        controller_.restartScan(now);
    }
    listener_.scanRestarted();
}

void HciSession::lose(Time now, const RadioCondition& condition) {
    socket_.reset();
    listeningSince_.reset();
    quiet_.scan(false, now);
    if (proven_) {
        pause_.reset();
        openAt_.reset();
    } else {
        openAt_ = now + pause_.coming();
    }
    become(condition);
}

void HciSession::become(const RadioCondition& condition) {
    if (condition == condition_) return;
    condition_ = condition;
    listener_.conditionChanged(condition_);
}

}  // namespace nearcast::hci

// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/KernelScan.h"

#include "platform/hciformat/ByteReader.h"

#include <array>
#include <cerrno>
#include <utility>

namespace nearcast::bluez {

namespace {

// BlueZ, doc/mgmt-api.txt.
constexpr std::uint16_t getConnections = 0x0015;
constexpr std::uint16_t startDiscovery = 0x0023;
constexpr std::uint16_t stopDiscovery = 0x0024;
constexpr std::uint16_t commandComplete = 0x0001;
constexpr std::uint16_t commandStatus = 0x0002;
constexpr std::uint16_t discoveringEvent = 0x0013;

constexpr std::uint8_t success = 0x00;
constexpr std::uint8_t busy = 0x0A;
constexpr std::uint8_t rejected = 0x0B;
constexpr std::uint8_t invalidParameters = 0x0D;
constexpr std::uint8_t permissionDenied = 0x14;

// What to discover, by bits: BR/EDR, and low energy with public and with random addresses.
constexpr std::uint8_t lowEnergy = 6;
constexpr std::uint8_t everything = 7;

constexpr std::uint8_t low(std::uint16_t number) { return static_cast<std::uint8_t>(number & 0xFF); }
constexpr std::uint8_t high(std::uint16_t number) { return static_cast<std::uint8_t>(number >> 8); }

/// As in a sandbox, or in a network of a container's own.
bool isForbidden(int error) {
    return error == EPERM || error == EACCES || error == EAFNOSUPPORT || error == EPROTONOSUPPORT;
}

}  // namespace

void KernelScan::watch(std::optional<std::uint16_t> adapter) {
    if (adapter == adapter_) return;
    finish(Outcome::failed);
    shut();
    adapter_ = adapter;
    if (!adapter_ || forbidden_) return;
    const int error = port_.open();
    if (error == 0) return ask();
    forbidden_ = isForbidden(error);
    shut();
}

/// A question that changes nothing, and that only those are answered who may do the rest.
void KernelScan::ask() {
    const std::uint16_t index = adapter_.value_or(0);
    const std::array<std::uint8_t, 6> message = {
        low(getConnections), high(getConnections), low(index), high(index), 0, 0};
    port_.send(message);
}

void KernelScan::shut() {
    port_.close();
    runs_.reset();
    begunAt_.reset();
    own_ = false;
}

void KernelScan::pass(Time now) {
    now_ = now;
    while (usable()) {
        const auto received = port_.receive();
        if (received.error != 0) {
            shut();
            finish(Outcome::failed);
        } else if (received.octets.empty()) {
            break;
        } else {
            take(received.octets);
        }
    }
    if (answerBy_ && now_ >= *answerBy_) finish(Outcome::failed);
}

void KernelScan::revive(Done done) {
    type_ = lowEnergy;
    begin(Stage::starting, startDiscovery, std::move(done));
}

void KernelScan::release(Done done) {
    type_ = lowEnergy;
    own_ = true;
    begin(Stage::releasing, stopDiscovery, std::move(done));
}

void KernelScan::begin(Stage stage, std::uint16_t command, Done done) {
    done_ = std::move(done);
    stage_ = stage;
    send(command);
}

/// What cannot be sent has no answer, which is noticed soon enough.
void KernelScan::send(std::uint16_t command) {
    const std::uint16_t index = adapter_.value_or(0);
    const std::array<std::uint8_t, 7> message = {low(command), high(command), low(index), high(index), 1, 0, type_};
    if (usable()) port_.send(message);
    answerBy_ = now_ + answerLimit;
}

void KernelScan::take(std::span<const std::uint8_t> message) {
    ByteReader reader(message);
    const std::uint16_t code = reader.u16();
    const std::uint16_t index = reader.u16();
    reader.skip(2);  // the length of what follows
    if (index != adapter_) return;
    if (code == commandComplete || code == commandStatus) {
        const std::uint16_t command = reader.u16();
        const std::uint8_t status = reader.u8();
        if (!reader.failed()) answered(command, status);
    } else if (code == discoveringEvent) {
        reader.skip(1);  // what is discovered
        const bool on = reader.u8() != 0;
        if (!reader.failed()) discovering(on);
    }
}

void KernelScan::answered(std::uint16_t command, std::uint8_t status) {
    if (status == permissionDenied) {
        forbidden_ = true;
        shut();
        return finish(Outcome::forbidden);
    }
    const bool expected = command == (stage_ == Stage::starting ? startDiscovery : stopDiscovery);
    if (!answerBy_ || stage_ == Stage::awaitingRound || !expected) return;
    if (stage_ == Stage::starting) {
        if (status == busy) presumedUntil_ = now_ + presumption;
        if (status != success) return finish(status == busy ? Outcome::needless : Outcome::failed);
        stage_ = Stage::awaitingRound;
        if (own_) stop(Stage::stopping);
    } else if (stage_ == Stage::releasing && status == invalidParameters && type_ != everything) {
        type_ = everything;  // one that also looked for classic devices
        stop(Stage::releasing);
    } else if (status == success) {
        finish(Outcome::mended);
    } else {
        const bool nothingRuns = stage_ == Stage::releasing && status == rejected;
        finish(nothingRuns ? Outcome::needless : Outcome::failed);
    }
}

/// A discovery that was only just begun cannot be ended before the kernel says that it runs.
void KernelScan::discovering(bool on) {
    if (on && (stage_ == Stage::starting || stage_ == Stage::awaitingRound)) {
        own_ = true;
        if (stage_ == Stage::awaitingRound) stop(Stage::stopping);
        return;
    }
    runs_ = on;
    presumedUntil_ = Time(0);
    if (on) {
        begunAt_ = now_;
    } else {
        const bool whole = begunAt_ && now_ - *begunAt_ >= shortestRound;
        missedFrom_ = now_ + (own_ || whole ? renewal : connectPause);
    }
    own_ = false;
}

void KernelScan::stop(Stage stage) {
    stage_ = stage;
    send(stopDiscovery);
}

void KernelScan::finish(Outcome outcome) {
    answerBy_.reset();
    stage_ = Stage::idle;
    if (const Done done = std::exchange(done_, nullptr)) done(outcome);
}

}  // namespace nearcast::bluez

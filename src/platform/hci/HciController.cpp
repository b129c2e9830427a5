// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciController.h"

#include <array>
#include <cstdio>
#include <system_error>
#include <utility>

namespace nearcast::hci {

namespace {

// Bits of Read Local Supported Features and of Read Local Supported Commands: Core Specification, Volume 2, Part C,
// 3.3, and Volume 4, Part E, 6.27.
struct Bit {
    std::size_t octet;
    unsigned bit;
    [[nodiscard]] bool in(std::span<const std::uint8_t> mask) const {
        return octet < mask.size() && (mask[octet] >> bit & 1) != 0;
    }
};
constexpr Bit lowEnergy{4, 6};
constexpr Bit writeLEHostSupportCommand{24, 6};
constexpr Bit extendedScanParametersCommand{37, 5};
constexpr Bit extendedScanEnableCommand{37, 6};

// Volume 4, Part E, 7.3.1: what is on after a reset, and LE Meta.
const Command everyEvent{setEventMask, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x1F, 0x00, 0x20}};
// 7.8.1: LE Advertising Report, and LE Extended Advertising Report where the controller knows of it.
const Command reportEvents{leSetEventMask, {0x02, 0, 0, 0, 0, 0, 0, 0}};
const Command extendedReportEvents{leSetEventMask, {0x02, 0x10, 0, 0, 0, 0, 0, 0}};
// 7.3.79: a controller of both kinds takes its host for one without Low Energy until it is told.
const Command supportLE{writeLEHostSupport, {0x01, 0x00}};

// 7.8.10 and 7.8.64: passive; a window as long as the interval, 60 ms, so that it listens all the time; own address
// public (it is never sent); every advertiser; on the 1M PHY, where the dongles are.
const Command parameters{leSetScanParameters, {0x00, 0x60, 0x00, 0x60, 0x00, 0x00, 0x00}};
const Command extendedParameters{leSetExtendedScanParameters, {0x00, 0x00, 0x01, 0x00, 0x60, 0x00, 0x60, 0x00}};
// 7.8.11 and 7.8.65: duplicates are not filtered; without an end.
const Command enable{leSetScanEnable, {0x01, 0x00}};
const Command disable{leSetScanEnable, {0x00, 0x00}};
const Command extendedEnable{leSetExtendedScanEnable, {0x01, 0x00, 0, 0, 0, 0}};
const Command extendedDisable{leSetExtendedScanEnable, {0x00, 0x00, 0, 0, 0, 0}};

std::string inHex(const char* format, unsigned value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

std::string nameOf(std::uint16_t opcode) { return inHex("command 0x%04X", opcode); }

}  // namespace

void HciController::start(Time now) {
    phase_ = Phase::starting;
    failure_.clear();
    steps_.clear();
    underWay_ = false;
    room_ = true;
    due_.reset();
    scans_ = false;
    add({reset, {}});
    add({readLocalSupportedFeatures, {}});
    add({readLocalSupportedCommands, {}}, true);
    advance(now);
}

void HciController::setScan(bool wanted, Time now) {
    if (std::exchange(wanted_, wanted) != wanted) advance(now);
}

void HciController::restartScan(Time now) {
    if (phase_ != Phase::ready || !scans_) return;
    queueDisable();
    queueScan();
    advance(now);
}

void HciController::probe(Time now) {
    // A step that is pending shows as well whether it lives.
    if (!steps_.empty()) return;
    add({readLocalVersion, {}}, true);
    advance(now);
}

void HciController::queueDisable() { add(extended_ ? extendedDisable : disable, true); }

void HciController::queueScan() {
    add(extended_ ? extendedParameters : parameters);
    add(extended_ ? extendedEnable : enable);
}

/// Does the next step, unless one is pending.
void HciController::advance(Time now) {
    if (!lives() || underWay_) return;
    if (steps_.empty()) {
        phase_ = Phase::ready;
        if (std::exchange(scans_, wanted_) == wanted_) return;
        if (wanted_) {
            queueScan();
        } else {
            queueDisable();
        }
    }
    if (room_) send(now);
}

void HciController::send(Time now) {
    const Command& command = steps_.front().command;
    if (const int error = send_(command.packet())) {
        return fail("took no " + nameOf(command.opcode) + ": " + std::generic_category().message(error));
    }
    underWay_ = true;
    due_ = now + answerLimit;
}

void HciController::received(std::span<const std::uint8_t> event, Time now) {
    if (!lives()) return;
    if (event.size() >= 3 && event[0] == hardwareErrorEvent) {
        return fail("reported " + inHex("hardware error 0x%02X", event[2]));
    }
    Answer answer;
    if (!readAnswer(event, answer)) return;
    room_ = answer.room > 0;
    if (room_ && !underWay_) due_.reset();
    if (underWay_ && answer.complete && answer.opcode == steps_.front().command.opcode) {
        answered(answer, now);
    } else {
        advance(now);
    }
}

void HciController::answered(const Answer& answer, Time now) {
    const Step step = std::move(steps_.front());
    steps_.pop_front();
    underWay_ = false;
    due_.reset();
    if (!room_) due_ = now + answerLimit;
    if (answer.status == success) {
        learn(answer);
    } else if (step.mayFail) {
        learn({.opcode = answer.opcode, .returned = {}});
    } else {
        return fail("answered " + nameOf(answer.opcode) + inHex(" with error 0x%02X", answer.status));
    }
    advance(now);
}

/// Learns from an answer what the controller has. An answer without content says that it has nothing of it.
void HciController::learn(const Answer& answer) {
    if (answer.opcode == readLocalSupportedCommands) learnCommands(answer.returned);
    if (answer.opcode != readLocalSupportedFeatures || lowEnergy.in(answer.returned)) return;
    phase_ = Phase::unsuited;
    failure_ = "is a controller without Bluetooth Low Energy";
    due_.reset();
}

void HciController::learnCommands(std::span<const std::uint8_t> commands) {
    extended_ = extendedScanParametersCommand.in(commands) && extendedScanEnableCommand.in(commands);
    add(everyEvent);
    if (writeLEHostSupportCommand.in(commands)) add(supportLE, true);
    add(extended_ ? extendedReportEvents : reportEvents);
}

void HciController::tick(Time now) {
    if (!due_ || now < *due_) return;
    if (underWay_) return fail("did not answer " + nameOf(steps_.front().command.opcode));
    // It should have said that it has room again; perhaps that was lost.
    due_.reset();
    room_ = true;
    advance(now);
}

void HciController::fail(std::string why) {
    phase_ = Phase::failed;
    failure_ = std::move(why);
    due_.reset();
}

}  // namespace nearcast::hci

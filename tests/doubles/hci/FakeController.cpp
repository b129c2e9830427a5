// SPDX-License-Identifier: Apache-2.0
#include "doubles/hci/FakeController.h"

#include "platform/hci/HciPacket.h"
#include "platform/hciformat/ByteReader.h"

#include <algorithm>

namespace nearcast::hci {

namespace {

constexpr std::uint8_t unknownCommand = 0x01;
constexpr std::uint64_t leMetaBit = std::uint64_t{1} << 61;
constexpr std::uint64_t reportBit = 1 << 1;
constexpr std::uint64_t extendedReportBit = 1 << 12;

std::uint64_t maskOf(std::span<const std::uint8_t> octets) { return ByteReader(octets).u64(); }

}  // namespace

void FakeController::reset() {
    FakeController fresh;
    eventMask_ = fresh.eventMask_;
    lowEnergyMask_ = fresh.lowEnergyMask_;
    hostHasLowEnergy_ = false;
    family_ = Family::none;
    parametersSet_ = scans_ = filters_ = false;
}

int FakeController::count(std::uint16_t opcode) const {
    return static_cast<int>(std::count(commands_.begin(), commands_.end(), opcode));
}

Octets FakeController::answer(std::uint16_t opcode, std::uint8_t status, const Octets& returned) const {
    const Octets parameters = little(roomless ? 0 : 1, 1) + little(opcode, 2) + little(status, 1) + returned;
    return hex("04 0E") + little(parameters.size(), 1) + parameters;
}

std::vector<Octets> FakeController::take(std::span<const std::uint8_t> packet) {
    ByteReader reader(packet);
    if (reader.u8() != commandPacket) return {};
    const std::uint16_t opcode = reader.u16();
    const auto parameters = reader.take(reader.u8());
    commands_.push_back(opcode);
    if (mute) return {};
    if (const auto failure = failures_.find(opcode); failure != failures_.end()) {
        const std::uint8_t status = failure->second;
        failures_.erase(failure);
        return {answer(opcode, status)};
    }
    if (opcode == readLocalSupportedFeatures) {
        return {answer(opcode, 0, little(0, 4) + little(lowEnergy ? 0x60U : 0x00U, 1) + little(0, 3))};
    }
    if (opcode == readLocalSupportedCommands) return {answer(opcode, 0, supportedCommands())};
    return {answer(opcode, perform(opcode, parameters))};
}

Octets FakeController::supportedCommands() const {
    Octets commands(64, 0);
    if (classic) commands[24] = 0x40;
    if (extended) commands[37] = 0x60;
    return commands;
}

std::uint8_t FakeController::perform(std::uint16_t opcode, std::span<const std::uint8_t> parameters) {
    const auto octet = [&](std::size_t place) -> std::uint8_t {
        return place < parameters.size() ? parameters[place] : 0;
    };
    const auto two = [&](std::size_t place) { return octet(place) | static_cast<unsigned>(octet(place + 1)) << 8; };
    switch (opcode) {
        case hci::reset: reset(); return 0;
        case readLocalVersion: return 0;
        case setEventMask: eventMask_ = maskOf(parameters); return 0;
        case leSetEventMask: lowEnergyMask_ = maskOf(parameters); return 0;
        case writeLEHostSupport: hostHasLowEnergy_ = octet(0) == 1; return classic ? 0 : unknownCommand;
        case leSetScanParameters: return setParameters(Family::legacy, {octet(0), octet(6), two(1), two(3)});
        case leSetExtendedScanParameters: return setParameters(Family::extended, {octet(3), octet(1), two(4), two(6)});
        case leSetScanEnable: return setEnable(Family::legacy, octet(0) == 1, octet(1) != 0);
        case leSetExtendedScanEnable: return setEnable(Family::extended, octet(0) == 1, octet(1) != 0);
        default: return unknownCommand;
    }
}

std::uint8_t FakeController::setParameters(Family family, const Parameters& parameters) {
    if (family == Family::extended && !extended) return unknownCommand;
    if (scans_ || (family_ != Family::none && family_ != family)) return commandDisallowed;
    family_ = family;
    parametersSet_ = true;
    parameters_ = parameters;
    return 0;
}

std::uint8_t FakeController::setEnable(Family family, bool enable, bool filter) {
    if (family == Family::extended && !extended) return unknownCommand;
    if ((family_ != Family::none && family_ != family) || !parametersSet_) return commandDisallowed;
    scans_ = enable;
    filters_ = filter;
    reported_.clear();
    return 0;
}

bool FakeController::reports() const {
    const std::uint64_t bit = family_ == Family::extended ? extendedReportBit : reportBit;
    const bool everybody = parameters_.policy == 0;  // its list of those to be heard is empty
    return !mute && scans_ && everybody && (eventMask_ & leMetaBit) != 0 && (lowEnergyMask_ & bit) != 0 &&
           (!classic || hostHasLowEnergy_);
}

std::optional<Octets> FakeController::hear(const LegacyReport& advertisement) {
    if (!reports() || (advertisement.type == 4 && passive())) return std::nullopt;
    if (filters_ && !reported_.insert(advertisement.address).second) return std::nullopt;
    if (family_ == Family::legacy) return hex("04") + legacyEvent({advertisement});
    const ExtendedReport report{.type = 0x10,
                                .address = advertisement.address,
                                .data = advertisement.data,
                                .RSSI = advertisement.RSSI,
                                .addressType = advertisement.addressType};
    return hex("04") + extendedEvent({report});
}

}  // namespace nearcast::hci

// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/Controller.h"

#include "lab/controller/Classic.h"
#include "lab/controller/Opcodes.h"

#include <array>

namespace nearcast::lab {

namespace {

constexpr std::uint8_t success = 0x00;
constexpr std::uint8_t unknownCommand = 0x01;
constexpr std::uint8_t commandDisallowed = 0x0c;
constexpr std::uint8_t invalidParameters = 0x12;

struct CommandBit {
    unsigned octet;
    unsigned bit;
};
/// Core Specification, Volume 4, Part E, 6.27: the bits of the commands below, and those of extended scanning.
constexpr std::array commandBits{
    CommandBit{5, 6},  CommandBit{5, 7},  CommandBit{14, 3}, CommandBit{14, 4}, CommandBit{14, 5}, CommandBit{15, 1},
    CommandBit{25, 0}, CommandBit{25, 1}, CommandBit{25, 2}, CommandBit{25, 4}, CommandBit{25, 5}, CommandBit{25, 6},
    CommandBit{25, 7}, CommandBit{26, 0}, CommandBit{26, 1}, CommandBit{26, 2}, CommandBit{26, 3}, CommandBit{26, 6},
    CommandBit{26, 7}, CommandBit{27, 0}, CommandBit{27, 1}, CommandBit{28, 3}};
constexpr std::array extendedBits{CommandBit{37, 5}, CommandBit{37, 6}};

Packet supportedCommands(const ControllerKind& kind) {
    std::array<std::uint8_t, 64> commands{};
    const auto set = [&commands](CommandBit place) {
        commands.at(place.octet) = static_cast<std::uint8_t>(commands.at(place.octet) | (1U << place.bit));
    };
    for (const CommandBit place : commandBits) {
        constexpr unsigned firstOfLowEnergy = 25;
        if (!kind.classic || place.octet < firstOfLowEnergy) set(place);
    }
    if (kind.extended) {
        for (const CommandBit place : extendedBits) set(place);
    }
    return Packet{success}.add(commands);
}

Packet features(const ControllerKind& kind) {
    if (kind.classic) return {success, 0x03, 0, 0, 0, 0, 0, 0, 0};  // packets of three and five slots
    return {success, 0, 0, 0, 0, 0x60, 0, 0, 0};                    // no BR/EDR; LE
}

Packet version(bool extended) {
    constexpr unsigned bluetooth40 = 6;
    constexpr unsigned bluetooth50 = 9;
    constexpr unsigned forTests = 0xffff;  // the company identifier without a company
    const unsigned number = extended ? bluetooth50 : bluetooth40;
    return Packet{success}.u8(number).u16(0).u8(number).u16(forTests).u16(0);
}

}  // namespace

Controller::Controller(ControllerKind kind) : kind_(kind) {}

std::optional<Bytes> Controller::answer(std::span<const std::uint8_t> packet) {
    constexpr std::size_t header = 3;
    if (packet.size() < header || packet.size() != header + packet[2]) return std::nullopt;
    const unsigned opcode = packet[0] | static_cast<unsigned>(packet[1]) << 8U;
    std::optional<Packet> result = read(opcode);
    if (!result) result = advertiseExtended(opcode);
    if (!result) result = kind_.classic ? answerClassic(opcode) : change(opcode, packet.subspan(header));
    if (!result) {
        ++unknown_[opcode];
        constexpr unsigned commandStatus = 0x0f;
        return Packet().u8(commandStatus).u8(4).u8(unknownCommand).u8(1).u16(opcode).bytes();
    }
    constexpr unsigned commandComplete = 0x0e;
    constexpr unsigned more = 3;  // room for further commands, and the opcode
    const auto length = static_cast<unsigned>(result->size() + more);
    return Packet().u8(commandComplete).u8(length).u8(1).u16(opcode).add(result->bytes()).bytes();
}

/// Commands that ask.
std::optional<Packet> Controller::read(unsigned opcode) const {
    switch (opcode) {
        case readLocalVersion: return version(kind_.extended);
        case readLocalCommands: return supportedCommands(kind_);
        case readLocalFeatures: return features(kind_);
        case readAddress: return Packet{success}.add(Bytes(kind_.address.rbegin(), kind_.address.rend()));
        case leReadBufferSize: return Packet{success}.u16(251).u8(8);
        case leReadLocalFeatures: {
            constexpr std::uint8_t encryption = 0x01;
            constexpr std::uint8_t extendedAdvertising = 0x10;
            const std::uint8_t second = kind_.extended ? extendedAdvertising : 0;
            return Packet{success, encryption, second, 0, 0, 0, 0, 0, 0};
        }
        case leReadAdvertisingPower: return Packet{success, 0};
        case leReadAcceptListSize: return Packet{success, 8};
        case leReadSupportedStates: return Packet{success, 0xff, 0xff, 0xff, 0xff, 0xff, 0x03, 0, 0};
        default: return std::nullopt;
    }
}

/// Those of extended advertising, which hosts send to whoever has its feature.
std::optional<Packet> Controller::advertiseExtended(unsigned opcode) const {
    if (!kind_.extended) return std::nullopt;
    switch (opcode) {
        case leReadNumberOfAdvertisingSets: return Packet{success, 1};
        case leSetExtendedAdvertisingParameters: return Packet{success, 0};  // and its power
        case leSetAdvertisingSetRandomAddress:
        case leSetExtendedAdvertisingData:
        case leSetExtendedScanResponseData:
        case leSetExtendedAdvertisingEnable:
        case leRemoveAdvertisingSet:
        case leClearAdvertisingSets: return Packet{success};
        default: return std::nullopt;
    }
}

/// Commands that change something, or would if anybody here looked at it.
std::optional<Packet> Controller::change(unsigned opcode, Parameters parameters) {
    if (!kind_.extended && (opcode == leSetExtendedScanParameters || opcode == leSetExtendedScanEnable)) return {};
    switch (opcode) {
        case reset: {
            const std::uint64_t enables = scan_.enables;
            scan_ = Scan();
            scan_.enables = enables;
            return Packet{success};
        }
        case leSetScanParameters: return setScanParameters(parameters, false);
        case leSetExtendedScanParameters: return setScanParameters(parameters, true);
        case leSetScanEnable: return setScanEnable(parameters, false);
        case leSetExtendedScanEnable: return setScanEnable(parameters, true);
        case leSetRandomAddress: return Packet{scan_.enabled ? commandDisallowed : success};
        case setEventMask:
        case leSetEventMask:
        case leSetAdvertisingParameters:
        case leSetAdvertisingData:
        case leSetScanResponseData:
        case leSetAdvertisingEnable:
        case leClearAcceptList:
        case leAddToAcceptList:
        case leRemoveFromAcceptList: return Packet{success};
        default: return std::nullopt;
    }
}

Packet Controller::setScanParameters(Parameters parameters, bool extended) {
    // Own address type, filter policy, PHYs, then the type of the scan; or the type first.
    const std::size_t typeAt = extended ? 3 : 0;
    constexpr std::size_t shortest = 7;
    if (parameters.size() < shortest || parameters[typeAt] > 1) return {invalidParameters};
    if (scan_.enabled) return {commandDisallowed};
    scan_.active = parameters[typeAt] == 1;
    return {success};
}

Packet Controller::setScanEnable(Parameters parameters, bool extended) {
    const std::size_t length = extended ? 6 : 2;  // extended: with duration and period
    if (parameters.size() != length || parameters[0] > 1 || parameters[1] > (extended ? 2 : 1)) {
        return {invalidParameters};
    }
    scan_.enabled = parameters[0] == 1;
    scan_.filterDuplicates = parameters[1] != 0;
    scan_.extended = extended;
    if (scan_.enabled) ++scan_.enables;
    return {success};
}

}  // namespace nearcast::lab

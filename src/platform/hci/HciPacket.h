// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hciformat/ByteReader.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

/// Packets between a host and a controller (Core Specification, Volume 4, Part E, 5.4; the indicators in Volume 4, Part
/// A, 2).
namespace nearcast::hci {

inline constexpr std::uint8_t commandPacket = 0x01;
inline constexpr std::uint8_t eventPacket = 0x04;

// Volume 4, Part E, 7.7.
inline constexpr std::uint8_t commandCompleteEvent = 0x0E;
inline constexpr std::uint8_t commandStatusEvent = 0x0F;
inline constexpr std::uint8_t hardwareErrorEvent = 0x10;
inline constexpr std::uint8_t leMetaEvent = 0x3E;

// Volume 4, Part E, 7.3 (0x0Cxx), 7.4 (0x10xx), 7.8 (0x20xx).
inline constexpr std::uint16_t setEventMask = 0x0C01;
inline constexpr std::uint16_t reset = 0x0C03;
inline constexpr std::uint16_t writeLEHostSupport = 0x0C6D;
inline constexpr std::uint16_t readLocalVersion = 0x1001;
inline constexpr std::uint16_t readLocalSupportedCommands = 0x1002;
inline constexpr std::uint16_t readLocalSupportedFeatures = 0x1003;
inline constexpr std::uint16_t leSetEventMask = 0x2001;
inline constexpr std::uint16_t leSetScanParameters = 0x200B;
inline constexpr std::uint16_t leSetScanEnable = 0x200C;
inline constexpr std::uint16_t leSetExtendedScanParameters = 0x2041;
inline constexpr std::uint16_t leSetExtendedScanEnable = 0x2042;

// Volume 1, Part F, 1.3.
inline constexpr std::uint8_t success = 0x00;
inline constexpr std::uint8_t commandDisallowed = 0x0C;

struct Command {
    std::uint16_t opcode = 0;
    std::vector<std::uint8_t> parameters;

    /// As it goes to the controller, packet indicator first.
    [[nodiscard]] std::vector<std::uint8_t> packet() const {
        std::vector<std::uint8_t> octets = {commandPacket, static_cast<std::uint8_t>(opcode & 0xFF),
                                            static_cast<std::uint8_t>(opcode >> 8),
                                            static_cast<std::uint8_t>(parameters.size())};
        octets.insert(octets.end(), parameters.begin(), parameters.end());
        return octets;
    }
};

/// A controller's answer to a command.
struct Answer {
    std::uint16_t opcode = 0;
    std::uint8_t status = success;
    std::span<const std::uint8_t> returned;  ///< what follows the status; valid as long as the event
    bool complete = true;                    ///< false: the command has only been started
    std::uint8_t room = 0;                   ///< how many commands may be sent now
};

/// Reads Command Complete and Command Status.
/// @param event event code, parameter length, parameters
/// @return whether it is one of them, and whole. A Command Complete without parameters (that of no command, which only
///         tells the room) has the status 0
inline bool readAnswer(std::span<const std::uint8_t> event, Answer& answer) {
    ByteReader header(event);
    const std::uint8_t code = header.u8();
    const std::size_t length = header.u8();
    if (code != commandCompleteEvent && code != commandStatusEvent) return false;
    ByteReader parameters(header.take(std::min(length, header.left())));
    answer = {};
    if (code == commandStatusEvent) {
        answer.status = parameters.u8();
        answer.complete = answer.status != success;
    }
    answer.room = parameters.u8();
    answer.opcode = parameters.u16();
    if (parameters.failed()) return false;
    if (code == commandCompleteEvent && parameters.left() > 0) answer.status = parameters.u8();
    answer.returned = parameters.rest();
    return true;
}

}  // namespace nearcast::hci

// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/Classic.h"

#include "lab/controller/Opcodes.h"

namespace nearcast::lab {

std::optional<Packet> answerClassic(unsigned opcode) {
    constexpr std::uint8_t success = 0x00;
    constexpr unsigned groupMask = 0xfc00;
    constexpr std::size_t nameLength = 248;
    switch (opcode) {
        case readBufferSize: return Packet{success}.u16(1021).u8(64).u16(8).u16(0);
        case readDeviceClass: return Packet{success}.zeros(3);
        case readLocalName: return Packet{success}.zeros(nameLength);
        case readVoiceSetting: return Packet{success}.u16(0x0060);
        case readInquiryCodes: return Packet{success, 1};
        case readCurrentInquiryCodes: return Packet{success, 1, 0x33, 0x8b, 0x9e};  // the general one
        default: break;
    }
    // All that the host sets is taken, and nobody looks at it.
    if ((opcode & groupMask) == hostSettings) return Packet{success};
    return std::nullopt;
}

}  // namespace nearcast::lab

// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciPacket.h"

#include "platform/hciformat/ByteReader.h"

#include <algorithm>

namespace nearcast::hci {

bool readAnswer(std::span<const std::uint8_t> event, Answer& answer) {
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

// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/Dongle.h"

namespace nearcast::lab {

namespace {

/// 4F37D906-3F43-440C-98E0-9E709971CADF as it is on the air.
constexpr std::array<std::uint8_t, 16> dongleService{0xdf, 0xca, 0x71, 0x99, 0x70, 0x9e, 0xe0, 0x98,
                                                     0x0c, 0x44, 0x43, 0x3f, 0x06, 0xd9, 0x37, 0x4f};

void addStructure(Packet& data, std::uint8_t type, std::span<const std::uint8_t> content) {
    data.u8(static_cast<unsigned>(content.size() + 1)).u8(type).add(content);
}

}  // namespace

Bytes advertisingData(const Dongle& dongle) {
    if (dongle.data) return *dongle.data;
    Packet data{0x02, 0x01, 0x06};
    if (dongle.service) addStructure(data, 0x07, dongleService);
    if (dongle.payload) addStructure(data, 0xff, Packet{0xff, 0xff}.add(*dongle.payload).bytes());
    return data.bytes();
}

Bytes scanResponseData(const Dongle& dongle) {
    if (dongle.response) return *dongle.response;
    Packet data;
    if (dongle.localName) {
        const std::string& name = *dongle.localName;
        addStructure(data, 0x09, Bytes(name.begin(), name.end()));
    }
    return data.bytes();
}

bool takesScanRequests(const Dongle& dongle) { return dongle.advertising != Advertising::nonConnectable; }

}  // namespace nearcast::lab

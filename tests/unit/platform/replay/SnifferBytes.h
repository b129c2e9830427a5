// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "unit/platform/hciformat/HciBytes.h"

#include <cstdint>
#include <optional>

// Link-layer packets for tests, made by hand.

namespace nearcast::replay {

enum PDU { ADV_IND = 0, ADV_DIRECT_IND, ADV_NONCONN_IND, SCAN_REQ, SCAN_RSP, CONNECT_IND, ADV_SCAN_IND, ADV_EXT_IND };

inline constexpr std::uint32_t advertisingAddress = 0x8E89BED6;

/// A link-layer packet: access address, header, payload, checksum (of no meaning).
inline Octets linkLayer(int type, const Octets& payload, bool randomAddress = false,
                        std::uint32_t accessAddress = advertisingAddress) {
    const int header = type | (randomAddress ? 0x40 : 0);
    return little(accessAddress, 4) + little(static_cast<std::uint64_t>(header), 1) + little(payload.size(), 1) +
           payload + hex("AABBCC");
}

/// A legacy advertisement or scan response.
inline Octets legacyPDU(int type, const DeviceAddress& address, const Octets& data, bool randomAddress = false) {
    return linkLayer(type, airAddress(address) + data, randomAddress);
}

/// The parts of an extended advertising packet.
struct ExtendedPDU {
    std::optional<DeviceAddress> address{};
    std::optional<DeviceAddress> target{};
    std::optional<std::uint16_t> identifier{};
    std::optional<std::uint16_t> auxiliaryOffset{};
    Octets data{};

    [[nodiscard]] Octets octets() const {
        int flags = 0;
        Octets header;
        if (address) flags |= 1, header = header + airAddress(*address);
        if (target) flags |= 2, header = header + airAddress(*target);
        if (identifier) flags |= 8, header = header + little(*identifier, 2);
        if (auxiliaryOffset) flags |= 16, header = header + hex("05") + little(*auxiliaryOffset, 2);
        if (flags != 0) header = little(static_cast<std::uint64_t>(flags), 1) + header;
        return linkLayer(ADV_EXT_IND, little(header.size(), 1) + header + data);
    }
};

/// The sniffer's description that link type 256 puts in front.
struct Info {
    int channel = 0;  ///< by frequency
    int signal = -60;
    int flags = 0x0C03;  ///< de-whitened, signal valid, checksum checked and right

    [[nodiscard]] Octets before(const Octets& packet) const {
        return little(static_cast<std::uint64_t>(channel), 1) + little(static_cast<std::uint64_t>(signal), 1) +
               hex("80 00 D6BE898E") + little(static_cast<std::uint64_t>(flags), 2) + packet;
    }
};

/// The header that link type 272 puts in front.
struct Nordic {
    int version = 3;
    int identifier = 2;
    int flags = 1;  ///< checksum right
    int channel = 37;
    int attenuation = 60;

    [[nodiscard]] Octets before(const Octets& packet) const {
        const auto octet = [](int value) { return little(static_cast<std::uint64_t>(value), 1); };
        const Octets info = hex("0A") + octet(flags) + octet(channel) + octet(attenuation) + hex("0100 78563412");
        const std::uint64_t length = info.size() + packet.size();
        const Octets lengths = version == 1 ? hex("06") + little(length, 1) : little(length, 2);
        return hex("13") + lengths + octet(version) + hex("0200") + octet(identifier) + info + packet;
    }
};

}  // namespace nearcast::replay

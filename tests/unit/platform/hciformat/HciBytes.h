// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hciformat/RawReport.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// Bytes for tests, made by hand.

namespace nearcast {

using Octets = std::vector<std::uint8_t>;

/// The octets that a hexadecimal text names; anything else in it is for the reader's eye.
inline Octets hex(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    Octets octets;
    bool half = false;
    for (const char letter : text) {
        const auto value = digits.find(letter >= 'A' && letter <= 'F' ? static_cast<char>(letter + 32) : letter);
        if (value == std::string_view::npos) continue;
        if (!half) octets.push_back(0);
        octets.back() = static_cast<std::uint8_t>(octets.back() * 16U + value);
        half = !half;
    }
    return octets;
}

inline Octets operator+(Octets left, const Octets& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline Octets little(std::uint64_t value, int octets) {
    Octets result;
    for (int i = 0; i < octets; ++i) result.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    return result;
}

inline Octets big(std::uint64_t value, int octets) {
    const Octets reversed = little(value, octets);
    return {reversed.rbegin(), reversed.rend()};
}

inline Octets octetsOf(std::string_view text) { return {text.begin(), text.end()}; }

/// An AD structure.
inline Octets structure(std::uint8_t type, const Octets& value) {
    return little(value.size() + 1, 1) + little(type, 1) + value;
}

/// An address as it stands in HCI events and on the air.
inline Octets airAddress(const DeviceAddress& address) { return {address.rbegin(), address.rend()}; }

inline constexpr DeviceAddress alice{0xA1, 0x11, 0x12, 0x13, 0x14, 0x15};
inline constexpr DeviceAddress bob{0xB0, 0x22, 0x22, 0x23, 0x24, 0x25};

/// One report of an LE Advertising Report event.
struct LegacyReport {
    int type = 0;  ///< 4: scan response
    DeviceAddress address = alice;
    Octets data{};
    int RSSI = -50;
    int addressType = 0;

    [[nodiscard]] Octets octets() const {
        return little(static_cast<std::uint64_t>(type), 1) + little(static_cast<std::uint64_t>(addressType), 1) +
               airAddress(address) + little(data.size(), 1) + data + little(static_cast<std::uint64_t>(RSSI), 1);
    }
};

/// One report of an LE Extended Advertising Report event.
struct ExtendedReport {
    int type = 0;  ///< bit 3: scan response, bit 4: legacy PDU, bits 5 and 6: data status
    DeviceAddress address = alice;
    Octets data{};
    int RSSI = -50;
    int addressType = 0;
    int SID = 0xFF;

    [[nodiscard]] Octets octets() const {
        return little(static_cast<std::uint64_t>(type), 2) + little(static_cast<std::uint64_t>(addressType), 1) +
               airAddress(address) + hex("01 00") + little(static_cast<std::uint64_t>(SID), 1) + hex("7F") +
               little(static_cast<std::uint64_t>(RSSI), 1) + hex("0000 00 000000000000") + little(data.size(), 1) +
               data;
    }
};

/// An LE Meta event with a subevent's parameters.
inline Octets leMetaEvent(const Octets& parameters) { return hex("3E") + little(parameters.size(), 1) + parameters; }

template <class Report>
Octets reportEvent(const std::vector<Report>& reports) {
    constexpr bool extended = std::is_same_v<Report, ExtendedReport>;
    Octets parameters = extended ? hex("0D") : hex("02");
    parameters.push_back(static_cast<std::uint8_t>(reports.size()));
    for (const Report& report : reports) parameters = parameters + report.octets();
    return leMetaEvent(parameters);
}

inline Octets legacyEvent(const std::vector<LegacyReport>& reports) { return reportEvent(reports); }
inline Octets extendedEvent(const std::vector<ExtendedReport>& reports) { return reportEvent(reports); }

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/AddressText.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nearcast {

/// How a dongle shows itself on the air. Whatever reads or writes its advertisements takes the format from here.
namespace dongle {

/// The service that dongles advertise; the manager's scan asks for it.
inline constexpr std::string_view serviceUUID = "4F37D906-3F43-440C-98E0-9E709971CADF";

/// Manufacturer data of a dongle: this company identifier as the mark, then the six octets of its address, the first
/// one first. What follows is not read.
inline constexpr std::uint16_t company = 0xFFFF;
inline constexpr std::array<std::uint8_t, 2> payloadMark{company & 0xFF, company >> 8};
inline constexpr std::size_t payloadLength = payloadMark.size() + AddressText::octets;

/// Which of several manufacturer data in one report is the report's: the last of this company, and where there is none,
/// the last of the company that comes first. So a dongle is heard whatever else it says, and whoever hands over a
/// company's last data alone says the same as one who hands over all of them.
/// @param next, kept the companies of what comes next and of what was kept so far
[[nodiscard]] constexpr bool countsInstead(std::uint16_t next, std::uint16_t kept) noexcept {
    return next == company || next == kept;
}

/// A name that says the address: this marker, then six pieces of two digits. What follows is not read.
inline constexpr std::string_view nameMarker = "QX";

/// Whether manufacturer data begin with the mark; the name does not count then.
[[nodiscard]] inline bool isMarked(std::span<const std::uint8_t> payload) noexcept {
    return payload.size() >= payloadMark.size() && payload[0] == payloadMark[0] && payload[1] == payloadMark[1];
}

using AddressOctets = std::span<const std::uint8_t, AddressText::octets>;
/// The address in manufacturer data that are marked; nothing where they end before it does.
[[nodiscard]] inline std::optional<AddressOctets> addressInPayload(std::span<const std::uint8_t> payload) noexcept {
    if (payload.size() < payloadLength) return std::nullopt;
    return payload.subspan<payloadMark.size(), AddressText::octets>();
}

/// The pieces of a name, joined by colons. Neither the marker nor the digits are examined, and letters keep their case;
/// characters count, not octets. Nothing where the name is shorter than 14 characters.
[[nodiscard]] std::optional<std::string> addressInName(std::string_view name);

/// The manufacturer data that say an address.
[[nodiscard]] std::vector<std::uint8_t> payloadOf(AddressOctets address);
/// The name that says an address, given as "00:11:22:AA:BB:CC".
[[nodiscard]] std::string nameOf(std::string_view address);

}  // namespace dongle

/// The address of the dongle that an advertisement came from: six octets, without a heap, or made from a name.
class DongleAddress {
public:
    DongleAddress() = default;
    DongleAddress(const DongleAddress&) = delete;
    DongleAddress& operator=(const DongleAddress&) = delete;

    /// Reads an advertisement as the manager does, but for one without a name and without an address in its payload:
    /// the address that the manager then makes is no dongle's.
    /// @return false where there is no address
    bool read(std::optional<std::span<const std::uint8_t>> manufacturerData, std::optional<std::string_view> name);

    void take(dongle::AddressOctets address) noexcept {
        PackedAddress packed = 0;
        for (const std::uint8_t octet : address) packed = packed << 8 | octet;
        text_.assign(packed);  // in place: a copy right behind the single bytes would wait for them
        key_ = AddressKey(packed, text_.view());
    }
    void take(std::string name) {
        name_ = std::move(name);
        key_ = AddressKey(name_);
    }

    /// Whether the marker stands in it: a name that could not be made into an address. One of octets never has it.
    [[nodiscard]] bool hasMarker() const noexcept {
        return key_.packed() == noAddress && text().find(dongle::nameMarker) != std::string_view::npos;
    }
    [[nodiscard]] std::string_view text() const noexcept { return key_.text(); }
    /// Valid as long as this object stays as it is.
    [[nodiscard]] const AddressKey& key() const noexcept { return key_; }

private:
    AddressText text_;
    std::string name_;
    AddressKey key_{std::string_view()};
};

}  // namespace nearcast

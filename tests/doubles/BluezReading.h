// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::bluez {

/// What bluetoothd makes of the octets of an advertisement. It reads them itself, and what it does with odd ones
/// differs from what this project does: see the functions. Seen with 5.66.
struct BluezReading {
    using Manufacturer = std::pair<std::uint16_t, std::vector<std::uint8_t>>;

    std::optional<std::string> name;
    std::vector<std::string> services;        ///< 128-bit texts in lower case
    std::vector<Manufacturer> manufacturers;  ///< each company once, at its first place and with its last octets

    /// The most octets behind a company identifier that it shows: those of a legacy advertisement.
    static constexpr std::size_t mostOctets = 27;

    /// @param data AD structures; those of a scan response follow those of the advertisement that it belongs to
    static BluezReading of(std::span<const std::uint8_t> data);

private:
    using Octets = std::span<const std::uint8_t>;

    void take(std::uint8_t type, Octets value);
    void takeServices(Octets value, std::size_t octets);
    void takeName(Octets value);
    void takeManufacturer(Octets value);
};

}  // namespace nearcast::bluez

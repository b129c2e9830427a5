// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>

#include "support/Printable.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// Printable, cut or filled with spaces to so many columns of a terminal.
std::string column(std::string_view text, std::size_t width);

/// With one decimal.
std::string decimals(double value);
/// "1 dongle", "2 dongles".
std::string counted(std::uint64_t count, std::string_view what);
/// "02:4E:43:00:00:01".
std::string addressText(std::span<const std::uint8_t> octets);

/// The state and its reason: "powered off (the adapter is blocked by rfkill)".
std::string stateInWords(const RadioHealth& health);
/// How the radio is, on one line: what it hears tells a radio that is blind from dongles that are silent.
/// @param now the moment that `RadioHealth::since` is compared with
std::string healthInWords(const RadioHealth& health, double now);

}  // namespace nearcast::cli

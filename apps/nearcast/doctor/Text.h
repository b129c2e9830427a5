// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace nearcast::cli {

/// "02:4E:43:00:00:01".
std::string addressText(std::span<const std::uint8_t> octets);
/// With one decimal.
std::string decimals(double value);
/// "1 dongle", "2 dongles".
std::string counted(std::uint64_t count, const std::string& what);

}  // namespace nearcast::cli

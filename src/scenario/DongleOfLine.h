// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace nearcast::scenario {

/// The address of the dongle that sent an advertisement, as the manager reads it: from six octets behind FF FF in the
/// manufacturer data, or else from the characters behind a marker of two in the name.
/// @return nothing for what the manager passes over
std::optional<std::string> dongleOf(std::optional<std::string_view> name,
                                    std::optional<std::span<const std::uint8_t>> manufacturerData);

}  // namespace nearcast::scenario

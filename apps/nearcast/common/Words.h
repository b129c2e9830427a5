// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// The text without anything that could steer a terminal: names come from the air and may hold any octets. Control
/// characters and what is not UTF-8 become the replacement character.
std::string printable(std::string_view text);

/// Printable, cut or filled with spaces to `width` characters.
std::string column(std::string_view text, std::size_t width);

}  // namespace nearcast::cli

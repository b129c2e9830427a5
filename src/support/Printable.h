// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace nearcast {

/// Text as it is shown to people. Names come from the air and from files, and may hold any octets: what would steer a
/// terminal and what is not UTF-8 becomes the replacement character, U+FFFD. Every text for people goes through here.
std::string printable(std::string_view text);
/// Whether a text may be shown as it is.
bool isPrintable(std::string_view text) noexcept;

/// JSON as it is written where people may look at it: the same value, with characters that would steer a terminal
/// written as escapes. All JSON that is printed goes through here. Of the controls below U+0020 it changes none: JSON
/// has them as escapes already, or between its tokens.
std::string printableJSON(std::string_view json);

/// How many columns of a terminal a printable text takes.
std::size_t widthOf(std::string_view text) noexcept;

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace nearcast {

/// Octets of the character that `text` begins with. An octet that begins no well-formed UTF-8 sequence is a character
/// by itself. `text` is not empty.
std::size_t characterLength(std::string_view text) noexcept;

/// The part of `text` that holds `count` characters from character `first` on; fewer where it ends earlier.
std::string_view characters(std::string_view text, std::size_t first, std::size_t count) noexcept;

/// Whether `text` has at least `count` characters.
bool hasCharacters(std::string_view text, std::size_t count) noexcept;

/// The text with U+FFFD in place of every octet that is not part of well-formed UTF-8.
std::string wellFormed(std::string_view text);

}  // namespace nearcast

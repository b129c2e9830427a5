// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace nearcast {

/// Whether a character does something to a terminal other than being drawn: a control (C0, DEL, C1), or a format
/// character, among them those that turn the direction of what follows them.
bool steersTerminal(char32_t character) noexcept;

/// How many columns of a terminal a character takes: 0 to 2. Not for characters that steer it.
std::size_t terminalColumns(char32_t character) noexcept;

}  // namespace nearcast

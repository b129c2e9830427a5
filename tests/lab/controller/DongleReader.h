// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/controller/Dongle.h"

#include <string>
#include <string_view>
#include <vector>

namespace nearcast::lab {

/// Words of a line, at its blanks.
std::vector<std::string> words(std::string_view line);

/// "00:AA:01:00:00:01".
/// @throws std::invalid_argument
Address readAddress(const std::string& text);

/// A dongle from words `NAME=VALUE`: address, payload (hexadecimal octets after the company identifier, or `none`),
/// name, rate (a second, above 0), rssi (`-60`, or a row `-60,-61`), type (`connectable`, `scannable`,
/// `nonconnectable`), answers, service, silent, random and extended (`yes`, `no`), data and response (hexadecimal
/// octets).
/// @throws std::invalid_argument with what is wrong
Dongle readDongle(const std::vector<std::string>& settings);

}  // namespace nearcast::lab

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lines/Line.h"

#include <span>
#include <string>
#include <vector>

namespace nearcast::lines {

/// Seconds with as many decimals as are needed, one at least: 5.0, 0.276.
void appendSeconds(std::string& out, Time time);
/// Quoted, upper case.
void appendHexadecimal(std::string& out, std::span<const std::uint8_t> octets);
/// A JSON list of texts.
void appendList(std::string& out, const std::vector<std::string>& texts);

}  // namespace nearcast::lines

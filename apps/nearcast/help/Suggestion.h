// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// How many letters have to be put in, taken away, replaced or swapped with their neighbour to make one word of the
/// other.
std::size_t distanceBetween(std::string_view one, std::string_view other);

/// The word that was probably meant: the one that begins so, or else the one that is only a few letters away; the first
/// of several.
/// @return empty where none is close
std::string closestWord(std::string_view typed, std::span<const std::string> words);

}  // namespace nearcast::cli

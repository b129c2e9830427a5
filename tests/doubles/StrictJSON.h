// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>

namespace nearcast::doubles {

/// The value of a JSON text in UTF-8 after RFC 8259, or nothing where it is none. A byte order mark is passed over, a
/// repeated key keeps its last value, integers of 64 bits stay integers, a number beyond a double, a lone surrogate and
/// nesting deeper than 512 are refused.
///
/// A plain reader by recursive descent that shares no code with the library, to compare the library's with. The JSON
/// library's value type is used as a container only.
std::optional<nlohmann::json> readStrictJSON(std::string_view text);

}  // namespace nearcast::doubles

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace nearcast::cli {

/// JSON on one line, as it is printed: see `printableJSON`. Text that is not UTF-8 has the replacement character.
std::string textOf(const nlohmann::ordered_json& value);

}  // namespace nearcast::cli

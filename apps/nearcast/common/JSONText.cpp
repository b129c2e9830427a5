// SPDX-License-Identifier: Apache-2.0
#include "common/JSONText.h"

#include "support/Printable.h"

#include <nlohmann/json.hpp>

namespace nearcast::cli {

std::string textOf(const nlohmann::ordered_json& value) {
    return printableJSON(value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

}  // namespace nearcast::cli

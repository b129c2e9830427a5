// SPDX-License-Identifier: Apache-2.0
#include "common/Seconds.h"

#include <cstdlib>

namespace nearcast::cli {

std::string isTime(const std::string& text) {
    constexpr double longest = 1e9;  // more than a working life
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    const bool good = end != text.c_str() && *end == '\0' && seconds >= 0 && seconds <= longest;
    return good ? "" : "'" + text + "' is no number of seconds from 0 to 1000000000";
}

}  // namespace nearcast::cli

// SPDX-License-Identifier: Apache-2.0
#include "platform/timeline/Speed.h"

#include <charconv>
#include <cmath>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nearcast {

std::optional<double> parseSpeed(const RadioString& radio) {
    const std::string_view text = radio.option("speed", "1");
    if (text == "max") return std::nullopt;
    double speed = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, speed);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(speed) || speed <= 0) {
        throw std::invalid_argument("radio '" + radio.text + "': speed '" + std::string(text) +
                                    "' is neither 'max' nor a number above 0");
    }
    return speed;
}

}  // namespace nearcast

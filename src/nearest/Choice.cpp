// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Nearest.h>

#include "nearest/Figures.h"

#include <array>

namespace nearcast {

namespace {

constexpr std::array<std::string_view, 7> ruleNames = {"none inside", "entered", "led",    "left",
                                                       "silent",      "blind",   "removed"};

}  // namespace

std::string_view nameOf(NearestRule rule) noexcept {
    const auto index = static_cast<std::size_t>(rule);
    return index < ruleNames.size() ? ruleNames[index] : "unknown";
}

std::string NearestChoice::text() const {
    using nearest::oneDecimal;
    std::string text = "none";
    if (device) {
        text = device->portName + " at " + oneDecimal(device->signal) + " dBm (threshold " +
               oneDecimal(device->threshold) + ")";
    }
    if (distance) {
        text += *distance < 0 ? ", " + oneDecimal(-*distance) + " dB behind "
                              : ", " + oneDecimal(*distance) + " dB before ";
        text += runnerUp->portName;
    }
    text += ": " + std::string(nameOf(rule));
    if (stale) text += ", stale";
    return text;
}

}  // namespace nearcast

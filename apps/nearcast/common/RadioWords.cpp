// SPDX-License-Identifier: Apache-2.0
#include "common/RadioWords.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace nearcast::cli {

namespace {

std::string decimals(double value) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

}  // namespace

std::string stateName(CBManagerState state) {
    switch (state) {
        case CBManagerStateUnknown: return "unknown";
        case CBManagerStateResetting: return "resetting";
        case CBManagerStateUnsupported: return "unsupported";
        case CBManagerStateUnauthorized: return "unauthorized";
        case CBManagerStatePoweredOff: return "powered off";
        case CBManagerStatePoweredOn: return "powered on";
    }
    return std::to_string(static_cast<std::int64_t>(state));
}

std::string stateInWords(const RadioHealth& health) {
    return stateName(health.state) + (health.why.empty() ? "" : " (" + health.why + ")");
}

std::string healthInWords(const RadioHealth& health, double now) {
    std::string text = stateName(health.state) + " for " + decimals(std::max(0.0, now - health.since)) + " s, ";
    text += decimals(health.reportsPerSecond) + " reports/s, ";
    text += health.lastReportAge ? "last " + decimals(*health.lastReportAge) + " s ago" : "nothing heard yet";
    text += ", " + std::to_string(health.restarts) + (health.restarts == 1 ? " restart" : " restarts");
    return text + (health.why.empty() ? "" : ": " + health.why);
}

bool differs(const RadioHealth& left, const RadioHealth& right) {
    return left.state != right.state || left.why != right.why || left.restarts != right.restarts;
}

}  // namespace nearcast::cli

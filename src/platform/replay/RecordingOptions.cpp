// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/RecordingOptions.h"

#include "support/Dongle.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast {

namespace {

/// Whether the option is there, which knows one value only.
bool isGiven(const RadioString& radio, std::string_view name, std::string_view onlyValue) {
    const auto option = radio.options.find(name);
    if (option == radio.options.end()) return false;
    if (option->second == onlyValue) return true;
    throw std::invalid_argument("radio '" + radio.text + "': option '" + std::string(name) + "' can be '" +
                                std::string(onlyValue) + "' only, not '" + option->second + "'");
}

void addDongleService(std::vector<CBUUID>& services) {
    static const CBUUID dongleService = CBUUID::UUIDWithString(dongle::serviceUUID);
    if (std::find(services.begin(), services.end(), dongleService) == services.end()) services.push_back(dongleService);
}

}  // namespace

RecordingOptions RecordingOptions::parse(const RadioString& radio) {
    return {.anyService = isGiven(radio, "services", "any"), .asDongles = isGiven(radio, "as", "dongles")};
}

void RecordingOptions::apply(RecordedReport& report) const {
    if (anyService) addDongleService(report.report.services);
    if (!asDongles || !report.report.address) return;
    addDongleService(report.report.services);
    report.report.manufacturerData = dongle::payloadOf(*report.report.address);
}

}  // namespace nearcast

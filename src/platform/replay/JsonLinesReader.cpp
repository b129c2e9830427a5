// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/JsonLinesReader.h"

#include "lines/Line.h"
#include "support/Dongle.h"

#include <string>
#include <string_view>
#include <utility>

namespace nearcast {

namespace {

using lines::Advertise;

std::vector<CBUUID> servicesOf(const Advertise& line) {
    static const CBUUID dongleService = CBUUID::UUIDWithString(dongle::serviceUUID);
    if (!line.services) return {dongleService};
    std::vector<CBUUID> services;
    services.reserve(line.services->size());
    for (const std::string& text : *line.services) services.push_back(CBUUID::UUIDWithString(text));
    return services;
}

RecordedItem itemOf(lines::Line line) {
    if (const auto* radio = std::get_if<lines::RadioState>(&line.action)) {
        return RecordedState{line.at, radio->state};
    }
    if (std::holds_alternative<lines::End>(line.action)) return RecordedEnd{line.at};
    auto* const advertise = std::get_if<Advertise>(&line.action);
    if (advertise == nullptr) {
        throw lines::LineError("\"" + std::string(lines::nameOf(line.action)) + "\" is no part of a recording");
    }
    RecordedReport item;
    item.at = line.at;
    item.report.services = servicesOf(*advertise);
    item.report.name = std::move(advertise->name);
    item.report.manufacturerData = std::move(advertise->manufacturerData);
    item.report.RSSI = advertise->RSSI;
    return item;
}

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

std::optional<RecordedItem> JsonLinesReader::next() {
    while (!input_.atEnd()) {
        const std::uint64_t start = input_.offset();
        ++line_;
        const std::string_view text = input_.takeLine(longestLine);
        if (isBlank(text)) continue;
        try {
            lines::Line line = lines::parseLine(text, previous_);
            previous_ = line.at;
            return itemOf(std::move(line));
        } catch (const lines::LineError& error) {
            throw RecordingDamage(start, "line " + std::to_string(line_) + ": " + error.what());
        }
    }
    return std::nullopt;
}

}  // namespace nearcast

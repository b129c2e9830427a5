// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/JsonLinesReader.h"

#include "scenario/Line.h"

#include <string>
#include <string_view>
#include <utility>

namespace nearcast::replay {

namespace {

using scenario::Advertise;

std::vector<CBUUID> servicesOf(const Advertise& line) {
    static const CBUUID dongleService = CBUUID::UUIDWithString(scenario::dongleService);
    if (!line.services) return {dongleService};
    std::vector<CBUUID> services;
    services.reserve(line.services->size());
    for (const std::string& text : *line.services) services.push_back(CBUUID::UUIDWithString(text));
    return services;
}

RecordedItem itemOf(scenario::Line line) {
    if (const auto* radio = std::get_if<scenario::RadioState>(&line.action)) {
        return RecordedState{line.at, radio->state};
    }
    if (std::holds_alternative<scenario::End>(line.action)) return RecordedEnd{line.at};
    auto* const advertise = std::get_if<Advertise>(&line.action);
    if (advertise == nullptr) {
        throw scenario::LineError("\"" + std::string(scenario::nameOf(line.action)) + "\" is no part of a recording");
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
            scenario::Line line = scenario::parseLine(text, previous_);
            previous_ = line.at;
            return itemOf(std::move(line));
        } catch (const scenario::LineError& error) {
            throw RecordingDamage(start, "line " + std::to_string(line_) + ": " + error.what());
        }
    }
    return std::nullopt;
}

}  // namespace nearcast::replay

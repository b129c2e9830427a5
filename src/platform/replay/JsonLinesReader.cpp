// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/JsonLinesReader.h"

#include "lines/Line.h"

#include <algorithm>
#include <span>
#include <string>
#include <system_error>
#include <utility>

namespace nearcast {

namespace {

using lines::Advertise;

std::vector<CBUUID> servicesOf(const Advertise& line) {
    static const CBUUID dongleService = CBUUID::UUIDWithString(lines::dongleService);
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

lines::TextReader::Source sourceOf(RecordingInput& input) {
    return [&input](std::span<std::uint8_t> room) {
        const auto bytes = input.takeSome(room.size());
        std::copy(bytes.begin(), bytes.end(), room.begin());
        return bytes.size();
    };
}

}  // namespace

JsonLinesReader::JsonLinesReader(RecordingInput& input)
    : begin_(input.offset()), text_({{"", sourceOf(input)}}, longestLine) {}

std::optional<RecordedItem> JsonLinesReader::next() {
    try {
        const auto text = text_.next();
        if (!text) return std::nullopt;
        lines::Line line = lines::parseLine(*text, previous_);
        previous_ = line.at;
        return itemOf(std::move(line));
    } catch (const lines::LineError& error) {
        throw RecordingDamage(begin_ + text_.offset(), "line " + std::to_string(text_.number()) + ": " + error.what());
    } catch (const lines::LineTooLong&) {
        throw RecordingDamage(begin_ + text_.offset(), "a line of more than " + std::to_string(longestLine) + " bytes");
    } catch (const std::system_error& error) {
        throw RecordingDamage(begin_ + text_.offset(), error.code().message());
    }
}

}  // namespace nearcast

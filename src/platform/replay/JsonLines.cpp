// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/JsonLines.h"

#include "lines/Line.h"
#include "platform/replay/RecordingWriter.h"
#include "support/Dongle.h"

#include <algorithm>
#include <span>
#include <string>
#include <system_error>
#include <utility>

namespace nearcast::replay {

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

lines::TextReader::Source sourceOf(RecordingInput& input) {
    return [&input](std::span<std::uint8_t> room) {
        const auto bytes = input.takeSome(room.size());
        std::copy(bytes.begin(), bytes.end(), room.begin());
        return bytes.size();
    };
}

bool isDongleServiceAlone(const std::vector<CBUUID>& services) {
    static const CBUUID dongleService = CBUUID::UUIDWithString(dongle::serviceUUID);
    return services.size() == 1 && services.front() == dongleService;
}

lines::Action actionOf(RecordedReport report) {
    lines::Advertise action;
    action.name = std::move(report.report.name);
    action.manufacturerData = std::move(report.report.manufacturerData);
    action.RSSI = report.report.RSSI;
    if (isDongleServiceAlone(report.report.services)) return action;  // which is what a line without services says
    action.services.emplace();
    for (const CBUUID& service : report.report.services) action.services->push_back(service.UUIDString());
    return action;
}

lines::Action actionOf(const RecordedState& state) { return lines::RadioState{state.state}; }

lines::Action actionOf(const RecordedEnd& /*end*/) { return lines::End{}; }

class JsonLinesWriter : public RecordingWriter {
public:
    explicit JsonLinesWriter(Out out) : out_(std::move(out)) {}
    void write(const RecordedItem& item) override { out_(recordedLine(item) + "\n"); }

private:
    Out out_;
};

std::optional<RecordedItem> nextOf(RecordingReader& reader, const std::string& name, ImportResult& result) {
    try {
        return reader.next();
    } catch (const RecordingDamage& damage) {
        result.damage = name + ": " + damage.what();
        return std::nullopt;
    }
}

}  // namespace

JsonLinesReader::JsonLinesReader(RecordingInput& input)
    : input_(input), begin_(input.offset()), text_({{"", sourceOf(input)}}, longestLine) {}

void JsonLinesReader::fail(const std::string& what) const { throw RecordingDamage(begin_ + text_.offset(), what); }

std::optional<RecordedItem> JsonLinesReader::next() {
    try {
        const auto text = text_.next();
        if (!text && input_.damage()) fail(*input_.damage());
        if (!text) return std::nullopt;
        lines::Line line = lines::parseLine(*text, previous_);
        previous_ = line.at;
        return itemOf(std::move(line));
    } catch (const lines::LineError& error) {
        if (!text_.ended() && input_.damage()) fail(*input_.damage());
        fail(error.inLine(text_.number()));
    } catch (const lines::LineTooLong&) {
        fail("a line of more than " + std::to_string(longestLine) + " bytes");
    } catch (const std::system_error& error) {
        fail(error.code().message());
    }
}

lines::Line lineOf(RecordedItem item) {
    const auto at = timeOf(item);
    return {at, std::visit([](auto& one) { return actionOf(std::move(one)); }, item)};
}

std::string recordedLine(RecordedItem item) { return lines::writeLine(lineOf(std::move(item))); }

std::unique_ptr<RecordingWriter> makeJsonLinesWriter(RecordingWriter::Out out) {
    return std::make_unique<JsonLinesWriter>(std::move(out));
}

ImportResult copyRecording(RecordingReader& reader, const std::string& name, const RecordingOptions& options,
                           const std::function<void(const RecordedItem& item)>& out) {
    ImportResult result;
    while (auto item = nextOf(reader, name, result)) {
        if (auto* report = std::get_if<RecordedReport>(&*item)) {
            ++result.reports;
            result.malformed += report->malformed ? 1 : 0;
            options.apply(*report);
        }
        result.end = std::max(result.end, timeOf(*item));
        out(*item);
    }
    return result;
}

ImportResult importRecording(const std::string& path, const RecordingOptions& options,
                             const std::function<void(std::string_view line)>& out) {
    return importRecording(*openRecording(path), nameOfInput(path), options, out);
}

ImportResult importRecording(RecordingReader& reader, const std::string& name, const RecordingOptions& options,
                             const std::function<void(std::string_view line)>& out) {
    return copyRecording(reader, name, options, [&out](const RecordedItem& item) { out(recordedLine(item)); });
}

}  // namespace nearcast::replay

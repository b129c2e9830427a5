// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/Import.h"

#include "scenario/Line.h"

#include <utility>

namespace nearcast {

namespace {

bool isDongleServiceAlone(const std::vector<CBUUID>& services) {
    static const CBUUID dongleService = CBUUID::UUIDWithString(scenario::dongleService);
    return services.size() == 1 && services.front() == dongleService;
}

scenario::Action actionOf(RecordedReport report, const RecordingOptions& options) {
    options.apply(report);
    scenario::Advertise action;
    action.name = std::move(report.report.name);
    action.manufacturerData = std::move(report.report.manufacturerData);
    action.RSSI = report.report.RSSI;
    if (isDongleServiceAlone(report.report.services)) return action;  // which is what a line without services says
    action.services.emplace();
    for (const CBUUID& service : report.report.services) action.services->push_back(service.UUIDString());
    return action;
}

scenario::Action actionOf(const RecordedState& state, const RecordingOptions& /*options*/) {
    return scenario::RadioState{state.state};
}

scenario::Action actionOf(const RecordedEnd& /*end*/, const RecordingOptions& /*options*/) { return scenario::End{}; }

scenario::Line lineOf(RecordedItem item, const RecordingOptions& options) {
    const auto at = timeOf(item);
    return {at, std::visit([&](auto& one) { return actionOf(std::move(one), options); }, item)};
}

std::optional<RecordedItem> nextOf(RecordingReader& reader, const std::string& name, ImportResult& result) {
    try {
        return reader.next();
    } catch (const RecordingDamage& damage) {
        result.damage = name + ": " + damage.what();
        return std::nullopt;
    }
}

}  // namespace

ImportResult importRecording(const std::string& path, const RecordingOptions& options,
                             const std::function<void(std::string_view line)>& out) {
    return importRecording(*openRecording(path), path, options, out);
}

ImportResult importRecording(RecordingReader& reader, const std::string& name, const RecordingOptions& options,
                             const std::function<void(std::string_view line)>& out) {
    ImportResult result;
    while (auto item = nextOf(reader, name, result)) {
        if (const auto* report = std::get_if<RecordedReport>(&*item)) {
            ++result.reports;
            result.malformed += report->malformed ? 1 : 0;
        }
        out(scenario::writeLine(lineOf(*std::move(item), options)));
    }
    return result;
}

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/RecordingWriter.h"

#include "support/Dongle.h"

#include <utility>

namespace nearcast {

namespace {

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

}  // namespace

lines::Line lineOf(RecordedItem item) {
    const auto at = timeOf(item);
    return {at, std::visit([](auto& one) { return actionOf(std::move(one)); }, item)};
}

std::string recordedLine(RecordedItem item) { return lines::writeLine(lineOf(std::move(item))); }

std::unique_ptr<RecordingWriter> makeJsonLinesWriter(RecordingWriter::Out out) {
    return std::make_unique<JsonLinesWriter>(std::move(out));
}

}  // namespace nearcast

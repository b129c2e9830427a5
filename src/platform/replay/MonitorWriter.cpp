// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/MonitorWriter.h"

#include "platform/hciformat/ReportEvents.h"
#include "platform/replay/Btsnoop.h"

#include <span>
#include <utility>
#include <variant>

namespace nearcast::replay {

MonitorWriter::MonitorWriter(Out out, std::chrono::microseconds begin) : out_(std::move(out)), begin_(begin) {}

void MonitorWriter::begin(std::string_view header) {
    out_(header);
    note(std::chrono::microseconds(0), beginNote);
}

void MonitorWriter::write(const RecordedItem& item) {
    std::visit([this](const auto& one) { add(one); }, item);
}

void MonitorWriter::add(const RecordedReport& report) {
    std::string packets;  // handed over as one, so that a cut never falls between the pieces of a report
    writeReportEvents(report.report, [&](std::span<const std::uint8_t> event) {
        appendPacket(packets, begin_ + report.at, firstAdapter, monitorEvent, {event.begin(), event.end()});
    });
    out_(packets);
}

void MonitorWriter::add(const RecordedState& state) { note(state.at, noteOf(state)); }

void MonitorWriter::add(const RecordedEnd& end) { note(end.at, noteOf(end)); }

void MonitorWriter::note(std::chrono::microseconds at, const std::string& text) {
    std::string packet;
    appendPacket(packet, begin_ + at, noAdapter, monitorNote, text + '\0');
    out_(packet);
}

}  // namespace nearcast::replay

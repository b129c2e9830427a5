// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/ReportEvents.h"
#include "platform/replay/BtsnoopReader.h"
#include "platform/replay/RecordingNotes.h"
#include "platform/replay/RecordingWriter.h"

#include <cstdint>
#include <span>
#include <utility>

namespace nearcast::replay {

namespace {

constexpr std::uint32_t monitorDatalink = 2001;
constexpr std::uint16_t monitorEvent = 3;
constexpr std::uint16_t firstAdapter = 0;
constexpr std::uint16_t noAdapter = 0xFFFF;

void appendBig(std::string& out, std::uint64_t value, int octets) {
    for (int octet = octets - 1; octet >= 0; --octet) out.push_back(static_cast<char>(value >> 8 * octet & 0xFF));
}

class BtsnoopWriter : public RecordingWriter {
public:
    BtsnoopWriter(Out out, std::chrono::microseconds begin) : out_(std::move(out)), begin_(begin) {
        std::string header(btsnoopMagic.begin(), btsnoopMagic.end());
        appendBig(header, 1, 4);  // version
        appendBig(header, monitorDatalink, 4);
        out_(header);
        note(std::chrono::microseconds(0), beginNote);
    }

    void write(const RecordedItem& item) override {
        std::visit([this](const auto& one) { add(one); }, item);
    }

private:
    void add(const RecordedReport& report) {
        std::string records;  // handed over as one, so that a cut never falls between the pieces of a report
        writeReportEvents(report.report, [&](std::span<const std::uint8_t> event) {
            appendRecord(records, report.at, firstAdapter, monitorEvent, {event.begin(), event.end()});
        });
        out_(records);
    }
    void add(const RecordedState& state) { note(state.at, noteOf(state)); }
    void add(const RecordedEnd& end) { note(end.at, noteOf(end)); }

    void note(std::chrono::microseconds at, const std::string& text) {
        std::string record;
        appendRecord(record, at, noAdapter, monitorNote, text + '\0');
        out_(record);
    }

    void appendRecord(std::string& out, std::chrono::microseconds at, std::uint16_t adapter, std::uint16_t opcode,
                      const std::string& bytes) const {
        appendBig(out, bytes.size(), 4);  // as it was
        appendBig(out, bytes.size(), 4);  // as it is here
        appendBig(out, std::uint32_t{adapter} << 16 | opcode, 4);
        appendBig(out, 0, 4);  // packets lost so far
        appendBig(out, btsnoopEpoch + static_cast<std::uint64_t>((begin_ + at).count()), 8);
        out += bytes;
    }

    Out out_;
    std::chrono::microseconds begin_;
};

}  // namespace

std::unique_ptr<RecordingWriter> makeBtsnoopWriter(RecordingWriter::Out out, std::chrono::microseconds begin) {
    return std::make_unique<BtsnoopWriter>(std::move(out), begin);
}

}  // namespace nearcast::replay

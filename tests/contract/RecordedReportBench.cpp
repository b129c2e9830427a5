// SPDX-License-Identifier: Apache-2.0
// Recordings of the table's advertisements, of every kind, and the radio that plays them.
#include "contract/ReportBench.h"
#include "doubles/KeptLines.h"
#include "doubles/TemporaryFolder.h"
#include "platform/json/JSONSerialization.h"
#include "platform/replay/JsonLines.h"
#include "platform/replay/ReplayPlatform.h"
#include "unit/platform/replay/CaptureBytes.h"
#include "unit/platform/replay/SnifferBytes.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace nearcast::contract {

namespace {

using namespace replay;

constexpr std::uint64_t interval = 1000;  // microseconds between packets

std::string textOf(const Octets& octets) { return {octets.begin(), octets.end()}; }

/// @param record makes one of a packet at so many microseconds
Octets packets(const std::vector<AirRow>& rows,
               const std::function<Octets(std::uint64_t at, const Octets& event)>& record) {
    Octets file;
    std::uint64_t at = 0;
    advertise(rows, true, [&](const Octets& event) { file = file + record(at += interval, event); });
    return file;
}

Octets btsnoop(const std::vector<AirRow>& rows) {
    return btsnoopHeader(1002) +
           packets(rows, [](std::uint64_t at, const Octets& event) { return btsnoopRecord(at, H4(event)); });
}

Reports hearPcap(const std::vector<AirRow>& rows) {
    return hearRecording(textOf(pcapHeader(187) + packets(rows, [](std::uint64_t at, const Octets& event) {
                                    return pcapRecord(0, static_cast<std::uint32_t>(at), H4(event));
                                })));
}

Reports hearPcapng(const std::vector<AirRow>& rows) {
    const Pcapng format;
    const Octets monitorEvent = hex("0000 0003");  // of the first adapter
    return hearRecording(
        textOf(format.section() + format.interface(254) + packets(rows, [&](std::uint64_t at, const Octets& event) {
                   return format.enhanced(at, monitorEvent + event);
               })));
}

Reports hearLines(const std::vector<AirRow>& rows) {
    std::string lines;
    const auto reader = openRecording(sourceOf(btsnoop(rows)), "btsnoop");
    importRecording(*reader, "btsnoop", {}, [&](std::string_view line) { lines.append(line).append("\n"); });
    return hearRecording(lines);
}

int legacyPDUType(AirRow::Type type) {
    switch (type) {
        case AirRow::Type::connectable: return ADV_IND;
        case AirRow::Type::scannable: return ADV_SCAN_IND;
        case AirRow::Type::nonConnectable: break;
    }
    return ADV_NONCONN_IND;
}

/// A capture of a sniffer: what is on the air itself.
class Sniffed {
public:
    explicit Sniffed(const std::vector<AirRow>& rows) {
        for (const bool first : {true, false}) {
            for (const AirRow& row : rows) add(row, first);
        }
    }
    [[nodiscard]] std::string file() const { return textOf(file_); }

private:
    void add(const AirRow& row, bool answers) {
        if (row.extended) return addExtended(row);
        addLegacy(row, legacyPDUType(row.type), row.data);
        if (answers && row.response) addLegacy(row, SCAN_RSP, *row.response);
    }
    void addLegacy(const AirRow& row, int type, const Octets& data) {
        packet(Info{.signal = row.RSSI}.before(legacyPDU(type, row.address, data, row.random)));
    }
    /// An announcement, then the data in a chain.
    void addExtended(const AirRow& row) {
        constexpr std::uint16_t set = 0x1234;
        constexpr std::uint16_t more = 9;
        constexpr std::size_t mostInAPacket = 200;
        packet(Info{.signal = row.RSSI}.before(ExtendedPDU{.identifier = set, .auxiliaryOffset = more}.octets()));
        for (std::size_t at = 0; at < row.data.size() || at == 0; at += mostInAPacket) {
            const std::size_t end = std::min(at + mostInAPacket, row.data.size());
            ExtendedPDU pdu{.identifier = set,
                            .data = {row.data.begin() + static_cast<std::ptrdiff_t>(at),
                                     row.data.begin() + static_cast<std::ptrdiff_t>(end)}};
            if (at == 0) pdu.address = row.address;
            if (end < row.data.size()) pdu.auxiliaryOffset = more;
            packet(secondary(row, at == 0).before(pdu.octets()));
        }
    }
    static Info secondary(const AirRow& row, bool begins) {
        constexpr int auxiliary = 1 << 7;
        constexpr int chain = 1 << 12;
        Info info{.channel = 5, .signal = row.RSSI};
        info.flags |= begins ? auxiliary : auxiliary | chain;
        return info;
    }
    void packet(const Octets& bytes) { file_ = file_ + pcapRecord(0, at_ += interval, bytes); }

    std::uint32_t at_ = 0;
    Octets file_ = pcapHeader(256);
};

Reports hearSniffed(const std::vector<AirRow>& rows) { return hearRecording(Sniffed(rows).file()); }

}  // namespace

Reports hearBtsnoop(const std::vector<AirRow>& rows) { return hearRecording(textOf(btsnoop(rows))); }

Reports hearRecording(const std::string& bytes) {
    const TemporaryFolder folder;
    KeptLines console;
    const JSONSerialization JSON;
    Ears ears;
    ReplayOptions options;
    options.path = folder.write("recording", bytes);
    ReplayPlatform platform(console, JSON, nullptr, options);
    const auto radio = platform.centralManager(ears);
    ears.listen(platform.monitor());
    radio->scanForPeripheralsWithServices(std::nullopt, {.allowDuplicates = true});
    platform.timeline().runToLastHappening();
    EXPECT_EQ(platform.failure(), "");
    ears.stop(platform.monitor());
    return ears.reports;
}

std::vector<ReportBench> reportBenches() {
    return {
        {"Bluez", "bluez", true, hearBluez}, {"Hci", "hci", true, hearHci},  {"HciBeside", "", true, hearBesideOthers},
        {"Btsnoop", "", true, hearBtsnoop},  {"Pcap", "", true, hearPcap},   {"Pcapng", "", true, hearPcapng},
        {"Sniffed", "", true, hearSniffed},  {"Lines", "", false, hearLines}};
}

}  // namespace nearcast::contract

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hciformat/HciEvents.h"
#include "platform/hciformat/RawReport.h"
#include "platform/hciformat/SenderMemory.h"
#include "platform/replay/LinkLayerReports.h"
#include "platform/replay/PacketSource.h"
#include "platform/replay/RecordingReader.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

namespace nearcast::replay {

/// Finds the advertising reports in captured packets of any kind. Packets that hold none, that are cut, or whose
/// checksum a sniffer found wrong, give none. Not for several threads at once.
class LinkDecoder {
public:
    /// @param sink called for each report, in order; what it throws passes through
    void read(const Packet& packet, const RawReportSink& sink);

private:
    HciEvents events_;
    LinkLayerReports linkLayer_;
};

/// Reads a recording out of captured packets.
///
/// An item's time is that since the capture's first packet, in whole microseconds; a packet that is earlier than its
/// predecessor happens with it. Changes of the radio's state and the end come from notes (Btsnoop.h).
class CaptureReader : public RecordingReader {
public:
    explicit CaptureReader(std::unique_ptr<PacketSource> packets) : packets_(std::move(packets)) {}
    std::optional<RecordedItem> next() override;
    /// Nothing where its clock shows a time that no recording was made at.
    [[nodiscard]] std::optional<std::chrono::microseconds> begin() const override;

private:
    void advance(const Packet& packet);
    void add(const RawReport& raw);

    std::unique_ptr<PacketSource> packets_;
    LinkDecoder decoder_;
    SenderMemory senders_;
    std::optional<std::int64_t> first_;  // the first packet's time in nanoseconds
    std::chrono::microseconds now_{0};
    std::deque<RecordedItem> ready_;
};

}  // namespace nearcast::replay

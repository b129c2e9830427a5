// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hciformat/ByteReader.h"
#include "platform/replay/PacketSource.h"
#include "platform/replay/RecordingInput.h"
#include "platform/replay/RecordingReader.h"

#include <optional>
#include <span>
#include <string>

namespace nearcast::replay {

/// What the first four bytes of a pcap file say of the rest.
struct PcapForm {
    ByteReader::Order order = ByteReader::Order::little;
    std::int64_t nanosecondsPerUnit = 1000;  ///< of the fraction in a packet's time
};

/// The form, or nothing when a pcap file does not begin so. Of a file cut within its first four bytes it is a guess.
std::optional<PcapForm> pcapForm(std::span<const std::uint8_t> begin);

/// Reads pcap files, of both byte orders, with times in microseconds or nanoseconds.
class PcapReader : public PacketSource {
public:
    /// Reads the file's header.
    /// @param input at the file's begin; lives longer than the reader
    /// @param name  of the file, for messages
    /// @throws std::invalid_argument for a version or link type that is not known
    PcapReader(RecordingInput& input, PcapForm form, const std::string& name);
    std::optional<Packet> next() override;

private:
    RecordingInput& input_;
    PcapForm form_;
    PacketKind kind_;
};

}  // namespace nearcast::replay

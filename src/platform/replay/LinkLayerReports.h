// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hciformat/RawReport.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace nearcast {
class ByteReader;
}

namespace nearcast::replay {

/// One link-layer packet as a sniffer heard it.
struct LinkLayerPacket {
    /// What the sniffer knows of an auxiliary packet; all of them look alike.
    enum class Auxiliary { unknown, advertisement, chain, periodic, scanResponse };

    std::span<const std::uint8_t> bytes;  ///< from the access address on, without preamble
    bool codedPHY = false;                ///< a coding indicator follows the access address
    bool primaryChannel = true;           ///< one of the three advertising channels of old
    Auxiliary auxiliary = Auxiliary::unknown;
    std::int32_t RSSI = noRSSI;
};

/// Makes out of sniffed packets the reports that a controller would have given (Core Specification, Volume 6, Part B,
/// 2.3): one for each ADV_IND, ADV_NONCONN_IND, ADV_SCAN_IND and SCAN_RSP, and one for each extended advertisement or
/// scan response that was heard whole, at its last packet and with the signal of that one. Directed advertisements are
/// for somebody else, and no report.
///
/// Of extended advertisements it follows one at a time, which is what a sniffer with one receiver hears. Not for
/// several threads at once.
class LinkLayerReports {
public:
    /// @param sink called for the report that the packet completes, if any; what it throws passes through
    void read(const LinkLayerPacket& packet, const RawReportSink& sink);

private:
    /// An extended advertisement of which more is to come.
    struct Train {
        std::uint16_t identifier = 0;  ///< advertising data ID and set ID
        std::optional<DeviceAddress> address;
        std::uint8_t addressType = 0;
        bool scanResponse = false;
        bool begun = false;  ///< its data has begun, on a secondary channel
        std::vector<std::uint8_t> data;
    };
    struct Extended;

    void readExtended(const Extended& pdu, const LinkLayerPacket& packet, const RawReportSink& sink);
    void beginOnPrimary(const Extended& pdu, const LinkLayerPacket& packet, const RawReportSink& sink);
    void beginOnSecondary(const Extended& pdu, bool scanResponse);
    void finishUnlessMoreComes(const Extended& pdu, const LinkLayerPacket& packet, const RawReportSink& sink);
    [[nodiscard]] bool continuesTrain(const Extended& pdu, LinkLayerPacket::Auxiliary auxiliary) const;

    std::optional<Train> train_;
};

}  // namespace nearcast::replay

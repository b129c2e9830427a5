// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hciformat/HciEvents.h"
#include "platform/hciformat/RawReport.h"
#include "platform/replay/LinkLayerReports.h"
#include "platform/replay/PacketSource.h"

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

}  // namespace nearcast::replay

// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/LinkLayerReports.h"

#include "platform/hciformat/ByteReader.h"
#include "platform/hciformat/HciEvents.h"

#include <algorithm>
#include <utility>

namespace nearcast::replay {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint32_t advertisingAccessAddress = 0x8E89BED6;

enum PDUType : std::uint8_t {
    advInd = 0,
    advNonconnInd = 2,
    scanRsp = 4,
    advScanInd = 6,
    advExtInd = 7,
};

/// The 16 bits before every advertising PDU, and what they announce.
struct PDU {
    std::uint8_t type = 0;
    std::uint8_t addressType = 0;
    Bytes payload;
};

std::optional<PDU> readPDU(const LinkLayerPacket& packet) {
    ByteReader reader(packet.bytes);
    if (reader.u32() != advertisingAccessAddress) return std::nullopt;
    if (packet.codedPHY) reader.skip(1);
    PDU pdu;
    const std::uint8_t header = reader.u8();
    pdu.type = header & 0x0F;
    pdu.addressType = header >> 6 & 1;
    const std::size_t length = reader.u8();
    pdu.payload = reader.take(length);
    if (reader.failed()) return std::nullopt;
    return pdu;
}

void reportLegacy(const PDU& pdu, const LinkLayerPacket& packet, const RawReportSink& sink) {
    ByteReader reader(pdu.payload);
    RawReport report;
    report.address = addressFromAir(reader.take(6));
    if (reader.failed()) return;
    report.addressType = pdu.addressType;
    report.scanResponse = pdu.type == scanRsp;
    report.RSSI = packet.RSSI;
    report.data = reader.rest();
    sink(report);
}

}  // namespace

/// The common extended advertising payload: Core Specification, Volume 6, Part B, 2.3.4.
struct LinkLayerReports::Extended {
    std::optional<DeviceAddress> address;
    std::uint8_t addressType = 0;
    std::optional<std::uint16_t> identifier;
    bool moreToCome = false;
    Bytes data;

    static std::optional<Extended> read(const PDU& pdu) {
        ByteReader payload(pdu.payload);
        const std::size_t headerLength = payload.u8() & 0x3F;
        ByteReader header(payload.take(headerLength));
        if (payload.failed()) return std::nullopt;
        Extended result;
        result.addressType = pdu.addressType;
        result.data = payload.rest();
        if (headerLength == 0) return result;
        const bool directed = result.readHeader(header);
        if (header.failed() || directed) return std::nullopt;
        return result;
    }

private:
    /// @return whether the advertisement is directed at somebody
    bool readHeader(ByteReader& header) {
        enum Present { advA = 1, targetA = 2, CTEInfo = 4, ADI = 8, auxPtr = 16 };
        const std::uint8_t flags = header.u8();
        if ((flags & advA) != 0) address = addressFromAir(header.take(6));
        if ((flags & targetA) != 0) return true;
        if ((flags & CTEInfo) != 0) header.skip(1);
        if ((flags & ADI) != 0) identifier = header.u16();
        if ((flags & auxPtr) == 0) return false;
        header.skip(1);                             // channel and clock accuracy
        moreToCome = (header.u16() & 0x1FFF) != 0;  // an offset of 0: nothing is sent there
        return false;
    }
};

void LinkLayerReports::read(const LinkLayerPacket& packet, const RawReportSink& sink) {
    const auto pdu = readPDU(packet);
    if (!pdu) return;
    switch (pdu->type) {
        case advInd:
        case advNonconnInd:
        case advScanInd:
        case scanRsp: return reportLegacy(*pdu, packet, sink);
        case advExtInd: break;
        default: return;
    }
    if (const auto extended = Extended::read(*pdu)) readExtended(*extended, packet, sink);
}

void LinkLayerReports::readExtended(const Extended& pdu, const LinkLayerPacket& packet, const RawReportSink& sink) {
    using Auxiliary = LinkLayerPacket::Auxiliary;
    if (packet.primaryChannel) return beginOnPrimary(pdu, packet, sink);
    if (packet.auxiliary == Auxiliary::periodic) return;
    if (!continuesTrain(pdu, packet.auxiliary)) {
        if (packet.auxiliary == Auxiliary::chain) return;  // of an advertisement whose begin was not heard
        beginOnSecondary(pdu, packet.auxiliary == Auxiliary::scanResponse);
    }
    finishUnlessMoreComes(pdu, packet, sink);
}

bool LinkLayerReports::continuesTrain(const Extended& pdu, LinkLayerPacket::Auxiliary auxiliary) const {
    using Auxiliary = LinkLayerPacket::Auxiliary;
    const bool chain = auxiliary == Auxiliary::chain || (auxiliary == Auxiliary::unknown && !pdu.address);
    return chain && train_ && train_->begun && pdu.identifier == train_->identifier;
}

void LinkLayerReports::beginOnPrimary(const Extended& pdu, const LinkLayerPacket& packet, const RawReportSink& sink) {
    train_.reset();
    if (pdu.moreToCome) {
        Train train;
        train.identifier = pdu.identifier.value_or(0);
        train.address = pdu.address;
        train.addressType = pdu.addressType;
        train_ = std::move(train);
    } else if (pdu.address) {  // an advertisement that says no more than who is there
        sink(RawReport{pdu.address, pdu.addressType, false, packet.RSSI, pdu.data});
    }
}

void LinkLayerReports::beginOnSecondary(const Extended& pdu, bool scanResponse) {
    Train train;
    train.identifier = pdu.identifier.value_or(0);
    train.address = pdu.address;
    train.addressType = pdu.addressType;
    if (!pdu.address && train_ && train_->identifier == train.identifier) {  // the address went ahead
        train.address = train_->address;
        train.addressType = train_->addressType;
    }
    train.scanResponse = scanResponse;
    train.begun = true;
    train_ = std::move(train);
}

void LinkLayerReports::finishUnlessMoreComes(const Extended& pdu, const LinkLayerPacket& packet,
                                             const RawReportSink& sink) {
    auto& data = train_->data;
    const std::size_t room = ReportFragments::longestData - data.size();
    const auto piece = pdu.data.first(std::min(pdu.data.size(), room));
    data.insert(data.end(), piece.begin(), piece.end());
    if (pdu.moreToCome) return;
    const Train whole = std::move(*train_);
    train_.reset();
    sink(RawReport{whole.address, whole.addressType, whole.scanResponse, packet.RSSI, whole.data});
}

}  // namespace nearcast::replay

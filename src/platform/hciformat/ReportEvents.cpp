// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/ReportEvents.h"

#include "platform/hciformat/AdStructures.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace nearcast {

namespace {

using Octets = std::vector<std::uint8_t>;
using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t leMetaEvent = 0x3E;
constexpr std::uint8_t advertisingReport = 0x02;
constexpr std::uint8_t extendedAdvertisingReport = 0x0D;
constexpr std::uint8_t anonymous = 0xFF;

constexpr std::size_t longestLegacyData = 31;
constexpr std::size_t mostParameters = 255;
constexpr std::size_t longestPiece = 229;  // what 255 octets of parameters leave for data

enum LegacyType : std::uint8_t { nonConnectable = 3, scanResponse = 4 };
enum ExtendedType : std::uint8_t { scanResponseBit = 1 << 3, moreToComeBits = 1 << 5 };

void append(Octets& out, Bytes octets) { out.insert(out.end(), octets.begin(), octets.end()); }

void appendAddress(Octets& out, const DeviceAddress& address) {
    out.insert(out.end(), address.rbegin(), address.rend());
}

std::uint8_t signalOctet(std::int32_t RSSI) {
    return static_cast<std::uint8_t>(static_cast<std::int8_t>(std::clamp(RSSI, -128, 127)));
}

void hand(const Octets& parameters, const HciEventSink& sink) {
    Octets event{leMetaEvent, static_cast<std::uint8_t>(parameters.size())};
    append(event, parameters);
    sink(event);
}

void writeLegacy(const AdvertisingReport& report, Bytes data, const HciEventSink& sink) {
    Octets parameters{advertisingReport, 1};
    parameters.push_back(report.scanResponse ? scanResponse : nonConnectable);
    parameters.push_back(report.addressType);
    appendAddress(parameters, *report.address);
    parameters.push_back(static_cast<std::uint8_t>(data.size()));
    append(parameters, data);
    parameters.push_back(signalOctet(report.RSSI));
    hand(parameters, sink);
}

void writePiece(const AdvertisingReport& report, Bytes piece, bool moreToCome, const HciEventSink& sink) {
    Octets parameters{extendedAdvertisingReport, 1};
    parameters.reserve(mostParameters);  // GCC 12 sees a write beyond the end where this grows step by step
    const int type = (report.scanResponse ? scanResponseBit : 0) | (moreToCome ? moreToComeBits : 0);
    parameters.push_back(static_cast<std::uint8_t>(type));
    parameters.push_back(0);
    parameters.push_back(report.address ? report.addressType : anonymous);
    appendAddress(parameters, report.address.value_or(DeviceAddress{}));
    append(parameters, Octets{1, 0, 0xFF, 0x7F});  // 1M PHY alone; no set identifier, no transmit power
    parameters.push_back(signalOctet(report.RSSI));
    append(parameters, Octets(2 + 1 + 6));  // no periodic advertising, directed at nobody
    parameters.push_back(static_cast<std::uint8_t>(piece.size()));
    append(parameters, piece);
    hand(parameters, sink);
}

}  // namespace

void writeReportEvents(const AdvertisingReport& report, const HciEventSink& sink) {
    const Octets data = writeAdStructures(report);
    if (report.address && data.size() <= longestLegacyData) return writeLegacy(report, data, sink);
    Bytes rest(data);
    while (rest.size() > longestPiece) {
        writePiece(report, rest.first(longestPiece), true, sink);
        rest = rest.subspan(longestPiece);
    }
    writePiece(report, rest, false, sink);
}

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/HciEvents.h"

#include "platform/hciformat/ByteReader.h"

#include <algorithm>
#include <utility>

namespace nearcast {

namespace {

void append(std::vector<std::uint8_t>& data, std::span<const std::uint8_t> piece) {
    const std::size_t room = ReportFragments::longestData - data.size();
    const auto fitting = piece.first(std::min(piece.size(), room));
    data.insert(data.end(), fitting.begin(), fitting.end());
}

constexpr std::uint8_t leMetaEvent = 0x3E;
constexpr std::uint8_t advertisingReport = 0x02;
constexpr std::uint8_t extendedAdvertisingReport = 0x0D;

constexpr std::uint8_t scanResponseType = 0x04;
constexpr std::size_t longestLegacyData = 31;

constexpr std::uint16_t scanResponseBit = 0x0008;
constexpr std::uint8_t anonymous = 0xFF;
enum DataStatus { complete = 0, moreToCome = 1 };
constexpr int dataStatus(std::uint16_t eventType) { return eventType >> 5 & 3; }

ReportFragments::Key fragmentKey(const RawReport& report, std::uint8_t advertisingSID) {
    ReportFragments::Key key{};
    if (report.address) std::copy(report.address->begin(), report.address->end(), key.begin());
    key[6] = report.addressType;
    key[7] = advertisingSID;
    key[8] = report.scanResponse ? 1 : 0;
    return key;
}

/// @return whether the report was whole
bool legacyReport(ByteReader& parameters, const RawReportSink& sink) {
    RawReport report;
    report.scanResponse = parameters.u8() == scanResponseType;
    report.addressType = parameters.u8();
    report.address = addressFromAir(parameters.take(6));
    const std::size_t length = parameters.u8();
    if (length > longestLegacyData) return false;
    report.data = parameters.take(length);
    report.RSSI = parameters.i8();
    if (parameters.failed()) return false;
    sink(report);
    return true;
}

}  // namespace

std::deque<ReportFragments::Unfinished>::iterator ReportFragments::find(const Key& key) {
    return std::find_if(unfinished_.begin(), unfinished_.end(), [&](const Unfinished& one) { return one.key == key; });
}

void ReportFragments::add(const Key& key, std::span<const std::uint8_t> piece) {
    auto found = find(key);
    if (found == unfinished_.end()) {
        if (unfinished_.size() == mostUnfinished) unfinished_.pop_front();
        found = unfinished_.insert(unfinished_.end(), Unfinished{key, {}});
    }
    append(found->data, piece);
}

std::optional<std::vector<std::uint8_t>> ReportFragments::finish(const Key& key, std::span<const std::uint8_t> last) {
    const auto found = find(key);
    if (found == unfinished_.end()) return std::nullopt;
    std::vector<std::uint8_t> data = std::move(found->data);
    unfinished_.erase(found);
    append(data, last);
    return data;
}

DeviceAddress addressFromAir(std::span<const std::uint8_t> octets) {
    DeviceAddress address{};
    const std::size_t count = std::min(octets.size(), address.size());
    std::copy_n(octets.begin(), count, address.rbegin());
    return address;
}

HciEvents::Outcome HciEvents::read(std::span<const std::uint8_t> event, const RawReportSink& sink) {
    ByteReader header(event);
    if (header.u8() != leMetaEvent) return Outcome::other;
    const std::size_t length = header.u8();
    ByteReader parameters(header.take(std::min(length, header.left())));
    const std::uint8_t subevent = parameters.u8();
    if (subevent != advertisingReport && subevent != extendedAdvertisingReport) return Outcome::other;
    for (int reports = parameters.u8(); reports > 0; --reports) {
        const bool whole =
            subevent == advertisingReport ? legacyReport(parameters, sink) : extendedReport(parameters, sink);
        if (!whole) return Outcome::damaged;
    }
    return parameters.failed() ? Outcome::damaged : Outcome::whole;
}

bool HciEvents::extendedReport(ByteReader& parameters, const RawReportSink& sink) {
    RawReport report;
    const std::uint16_t eventType = parameters.u16();
    report.scanResponse = (eventType & scanResponseBit) != 0;
    report.addressType = parameters.u8();
    const auto address = parameters.take(6);
    if (report.addressType != anonymous) report.address = addressFromAir(address);
    parameters.skip(2);  // primary and secondary PHY
    const std::uint8_t advertisingSID = parameters.u8();
    parameters.skip(1);  // transmit power
    report.RSSI = parameters.i8();
    parameters.skip(2 + 1 + 6);  // periodic advertising interval, to whom a directed advertisement goes
    const std::size_t length = parameters.u8();
    report.data = parameters.take(length);
    if (parameters.failed()) return false;
    const auto key = fragmentKey(report, advertisingSID);
    if (dataStatus(eventType) == moreToCome) {
        fragments_.add(key, report.data);
        return true;
    }
    const auto joined = fragments_.finish(key, report.data);
    if (joined) report.data = *joined;
    sink(report);
    return true;
}

}  // namespace nearcast

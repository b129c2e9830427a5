// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/Reports.h"

namespace nearcast::lab {

namespace {

unsigned legacyType(Advertising advertising, bool scanResponse) {
    if (scanResponse) return 0x04;
    switch (advertising) {
        case Advertising::connectable: return 0x00;
        case Advertising::scannable: return 0x02;
        case Advertising::nonConnectable: break;
    }
    return 0x03;
}

unsigned extendedType(const Dongle& dongle, bool scanResponse, bool moreToCome) {
    constexpr unsigned connectable = 0x01;
    constexpr unsigned scannable = 0x02;
    constexpr unsigned response = 0x08;
    constexpr unsigned legacy = 0x10;
    constexpr unsigned incomplete = 0x20;
    const Advertising advertising = dongle.advertising;
    unsigned type = dongle.extended ? 0 : legacy;
    if (advertising == Advertising::connectable) type |= dongle.extended ? connectable : connectable | scannable;
    if (advertising == Advertising::scannable) type |= scannable;
    if (moreToCome) type |= incomplete;
    return scanResponse ? type | response : type;
}

void addAddress(Packet& event, const Dongle& dongle) {
    event.u8(dongle.random ? 0x01 : 0x00);
    event.add(Bytes(dongle.address.rbegin(), dongle.address.rend()));
}

Bytes eventOf(const Packet& report) {
    constexpr unsigned leMeta = 0x3e;
    return Packet().u8(leMeta).u8(static_cast<unsigned>(report.size())).add(report.bytes()).bytes();
}

Packet legacyReport(const Dongle& dongle, int rssi, bool scanResponse, const Bytes& data) {
    Packet report{0x02, 0x01};
    report.u8(legacyType(dongle.advertising, scanResponse));
    addAddress(report, dongle);
    report.u8(static_cast<unsigned>(data.size())).add(data).u8(static_cast<unsigned>(rssi));
    return report;
}

Packet extendedReport(const Dongle& dongle, int rssi, bool scanResponse, std::span<const std::uint8_t> data,
                      bool moreToCome) {
    constexpr unsigned lePhy1M = 0x01;
    constexpr unsigned none = 0x00;
    constexpr unsigned noSet = 0xff;
    constexpr unsigned noTxPower = 0x7f;
    constexpr std::size_t directAddressWithType = 7;
    Packet report{0x0d, 0x01};
    report.u16(extendedType(dongle, scanResponse, moreToCome));
    addAddress(report, dongle);
    report.u8(lePhy1M).u8(none).u8(noSet).u8(noTxPower).u8(static_cast<unsigned>(rssi)).u16(0);
    report.zeros(directAddressWithType).u8(static_cast<unsigned>(data.size())).add(data);
    return report;
}

}  // namespace

std::vector<Bytes> reportEvents(const Dongle& dongle, int rssi, bool extended, bool scanResponse) {
    const Bytes data = scanResponse ? scanResponseData(dongle) : advertisingData(dongle);
    if (!extended) return {eventOf(legacyReport(dongle, rssi, scanResponse, data))};
    constexpr std::size_t mostInAnEvent = 229;
    std::vector<Bytes> events;
    std::span<const std::uint8_t> rest(data);
    for (; rest.size() > mostInAnEvent; rest = rest.subspan(mostInAnEvent)) {
        events.push_back(eventOf(extendedReport(dongle, rssi, scanResponse, rest.first(mostInAnEvent), true)));
    }
    events.push_back(eventOf(extendedReport(dongle, rssi, scanResponse, rest, false)));
    return events;
}

}  // namespace nearcast::lab

// SPDX-License-Identifier: Apache-2.0
#include "contract/ReportBench.h"

#include "doubles/BluezBench.h"
#include "doubles/KeptLines.h"
#include "doubles/hci/FakeHci.h"
#include "platform/bluez/BluezRadio.h"
#include "platform/hci/HciRadio.h"

#include <gtest/gtest.h>

#include <chrono>

namespace nearcast::contract {

namespace {

using namespace std::chrono_literals;

constexpr auto step = 10ms;

std::string addressText(const DeviceAddress& address) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t octet : address) {
        if (!text.empty()) text += ':';
        text += digits[octet >> 4U];
        text += digits[octet & 15U];
    }
    return text;
}

int legacyType(AirRow::Type type) {
    switch (type) {
        case AirRow::Type::connectable: return 0;
        case AirRow::Type::scannable: return 2;
        case AirRow::Type::nonConnectable: break;
    }
    return 3;
}

void advertiseLegacy(const AirRow& row, int type, const Octets& data,
                     const std::function<void(const Octets& event)>& sink) {
    sink(legacyEvent(
        {{.type = type, .address = row.address, .data = data, .RSSI = row.RSSI, .addressType = row.random ? 1 : 0}}));
}

/// In as many pieces as events of a controller need.
void advertiseExtended(const AirRow& row, const std::function<void(const Octets& event)>& sink) {
    constexpr std::size_t mostInAnEvent = 229;
    constexpr int moreToCome = 0x20;
    Octets rest = row.data;
    for (bool more = true; more;) {
        more = rest.size() > mostInAnEvent;
        const auto end = rest.begin() + static_cast<std::ptrdiff_t>(std::min(rest.size(), mostInAnEvent));
        sink(extendedEvent({{.type = more ? moreToCome : 0,
                             .address = row.address,
                             .data = {rest.begin(), end},
                             .RSSI = row.RSSI,
                             .addressType = row.random ? 1 : 0}}));
        rest.erase(rest.begin(), end);
    }
}

/// A radio on a machine of the bench's: what comes to its socket, it hears.
Reports hearSocket(const std::vector<AirRow>& rows, hci::HciAccess access) {
    KeptLines console;
    Ears ears;
    RadioMonitor monitor(console, [] { return NSDate(0s); });
    hci::FakeHci machine;
    const bool beside = access == hci::HciAccess::beside;
    machine.use(beside);
    const auto port = machine.port();
    hci::HciRadio radio(ears, console, monitor, *port, nullptr, hci::HciTarget{.access = access}, [] {});
    radio.scanForPeripheralsWithServices(std::nullopt, {.allowDuplicates = true});
    ears.listen(monitor);
    Time now = 0s;
    for (int turn = 0; turn < 10; ++turn) radio.pass(now += step);
    EXPECT_EQ(radio.state(), CBManagerStatePoweredOn);
    advertise(rows, beside, [&](const Octets& event) {
        machine.send(hex("04") + event);
        radio.pass(now += step);
    });
    return ears.reports;
}

}  // namespace

void Ears::listen(RadioMonitor& monitor) {
    monitor.setTap([this](const AdvertisingReport& report, NSDate /*at*/, bool wanted) {
        EXPECT_TRUE(wanted);
        EXPECT_EQ(reports.size(), told_) << "the delegate was not told of the last one";
        reports.push_back(report);
    });
}

void Ears::centralManagerDidDiscoverPeripheral(CBCentralManager& /*central*/, const CBPeripheral& peripheral,
                                               const AdvertisementData& data, std::int32_t RSSI) {
    ASSERT_EQ(reports.size(), ++told_);
    const AdvertisingReport& report = reports.back();
    EXPECT_EQ(peripheral.name, report.name);
    EXPECT_EQ(data.manufacturerData.has_value(), report.manufacturerData.has_value());
    if (data.manufacturerData) {
        EXPECT_EQ(Octets(data.manufacturerData->begin(), data.manufacturerData->end()), report.manufacturerData);
    }
    EXPECT_EQ(RSSI, report.RSSI);
}

void advertise(const std::vector<AirRow>& rows, bool answers, const std::function<void(const Octets& event)>& sink) {
    constexpr int response = 4;
    for (const bool first : {true, false}) {
        for (const AirRow& row : rows) {
            if (row.extended) {
                advertiseExtended(row, sink);
            } else {
                advertiseLegacy(row, legacyType(row.type), row.data, sink);
            }
            if (answers && first && row.response) advertiseLegacy(row, response, *row.response, sink);
        }
    }
}

Reports hearHci(const std::vector<AirRow>& rows) { return hearSocket(rows, hci::HciAccess::alone); }

Reports hearBesideOthers(const std::vector<AirRow>& rows) { return hearSocket(rows, hci::HciAccess::beside); }

Reports hearBluez(const std::vector<AirRow>& rows) {
    KeptLines console;
    Ears ears;
    RadioMonitor monitor(console, [] { return NSDate(0s); });
    bluez::FakeBluez bluez;
    const bluez::FakeRfkill rfkill;
    for (const AirRow& row : rows) {
        bluez.place({.address = addressText(row.address),
                     .RSSI = static_cast<std::int16_t>(row.RSSI),
                     .data = row.data,
                     .randomAddress = row.random,
                     .asked = row.type != AirRow::Type::nonConnectable,
                     .response = row.response});
    }
    bluez::FakeMgmt mgmt(bluez);
    bluez::BluezRadio radio(ears, console, monitor, bluez, rfkill, mgmt, "", [] {});
    radio.scanForPeripheralsWithServices(std::nullopt, {.allowDuplicates = true});
    ears.listen(monitor);
    for (Time now = 0s; now < 1s; now += step) {
        radio.pass(now);
        bluez.runUntil(now);
    }
    return ears.reports;
}

}  // namespace nearcast::contract

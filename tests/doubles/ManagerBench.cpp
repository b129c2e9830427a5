// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include "support/Dongle.h"

#include <charconv>
#include <utility>

namespace nearcast::doubles {

std::shared_ptr<QXNearcastManagerDelegate> ManagerBench::listener() {
    auto delegate = std::make_shared<QXNearcastManagerDelegate>();
    delegate->didDiscoverPort = [this](std::string_view portName, QXDeviceType deviceType, std::string_view MACAddr,
                                       std::int32_t RSSI) {
        journal.add("discover " + std::string(portName) + " " + std::to_string(deviceType) + " " +
                    std::string(MACAddr) + " " + std::to_string(RSSI));
    };
    delegate->didUpdateState = [this](std::string_view portName, std::string_view MACAddr) {
        journal.add("silent " + std::string(portName) + " " + std::string(MACAddr));
    };
    return delegate;
}

void ManagerBench::hear(std::optional<std::vector<std::uint8_t>> payload, std::optional<std::string> name,
                        std::int32_t RSSI) {
    AdvertisingReport report;
    report.manufacturerData = std::move(payload);
    report.name = std::move(name);
    report.RSSI = RSSI;
    report.services.push_back(CBUUID::UUIDWithString(dongle::serviceUUID));
    radio().advertise(report);
}

void ManagerBench::hearTimes(int times, std::string_view address, std::int32_t RSSI) {
    for (; times > 0; --times) hear(address, RSSI);
}

std::vector<std::string> ManagerBench::reports() const {
    std::vector<std::string> result;
    for (const std::string& line : journal.lines()) {
        if (line.starts_with("discover ") || line.starts_with("silent ")) result.push_back(line);
    }
    return result;
}

std::vector<std::uint8_t> ManagerBench::payloadOf(std::string_view address) {
    std::vector<std::uint8_t> payload(dongle::payloadMark.begin(), dongle::payloadMark.end());
    for (std::size_t place = 0; place + 1 < address.size(); place += 3) {
        std::uint8_t octet = 0;
        std::from_chars(address.data() + place, address.data() + place + 2, octet, 16);
        payload.push_back(octet);
    }
    return payload;
}

}  // namespace nearcast::doubles

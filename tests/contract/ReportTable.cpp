// SPDX-License-Identifier: Apache-2.0
#include "contract/ReportTable.h"

#include "unit/platform/hciformat/HciBytes.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <ostream>
#include <stdexcept>

namespace nearcast::contract {

namespace {

using nlohmann::json;

std::optional<Said> readSaid(const json& value) {
    if (value.is_null()) return std::nullopt;
    Said said;
    if (value.contains("name")) said.name = value.at("name").get<std::string>();
    if (value.contains("manufacturerData")) {
        said.manufacturerData = hex(value.at("manufacturerData").get<std::string>());
    }
    said.services = value.value("services", std::vector<std::string>());
    std::sort(said.services.begin(), said.services.end());
    return said;
}

DeviceAddress readAddress(const std::string& text) {
    const Octets octets = hex(text);
    DeviceAddress address{};
    if (octets.size() != address.size()) throw std::runtime_error("no address: " + text);
    std::copy(octets.begin(), octets.end(), address.begin());
    return address;
}

AirRow::Type readType(const std::string& text) {
    if (text == "connectable") return AirRow::Type::connectable;
    if (text == "scannable") return AirRow::Type::scannable;
    if (text == "nonconnectable") return AirRow::Type::nonConnectable;
    throw std::runtime_error("no type: " + text);
}

AirRow readRow(const json& value) {
    AirRow row;
    row.what = value.at("row").get<std::string>();
    row.address = readAddress(value.at("address").get<std::string>());
    row.random = value.value("random", false);
    row.type = readType(value.at("type").get<std::string>());
    row.extended = value.value("extended", false);
    row.RSSI = value.at("RSSI").get<std::int32_t>();
    row.data = hex(value.at("data").get<std::string>());
    if (value.contains("response")) row.response = hex(value.at("response").get<std::string>());
    row.heard = readSaid(value.at("heard")).value();
    if (value.contains("but")) {
        for (const auto& [radio, exception] : value.at("but").items()) {
            row.but[radio] = {exception.at("why").get<std::string>(), readSaid(exception.at("heard")),
                              exception.contains("later")};
        }
    }
    if (value.contains("simulator")) {
        row.simulatorAddress = value.at("simulator").at("address").get<std::string>();
        row.simulatorPayload = value.at("simulator").at("payload").get<std::string>();
    }
    return row;
}

}  // namespace

Said Said::of(const AdvertisingReport& report) {
    Said said{report.name, report.manufacturerData, {}};
    for (const CBUUID& service : report.services) said.services.push_back(service.UUIDString());
    std::sort(said.services.begin(), said.services.end());
    said.services.erase(std::unique(said.services.begin(), said.services.end()), said.services.end());
    return said;
}

std::ostream& operator<<(std::ostream& out, const Said& said) {
    const json value = {{"name", said.name.value_or("(none)")},
                        {"manufacturerData", said.manufacturerData.value_or(std::vector<std::uint8_t>())},
                        {"services", said.services}};
    return out << value.dump(-1, ' ', true, json::error_handler_t::replace);
}

std::optional<Said> AirRow::heardThrough(std::string_view radio) const {
    const auto exception = but.find(radio);
    return exception == but.end() ? heard : exception->second.heard;
}

std::vector<AirRow> readReportTable() {
    std::ifstream file(NEARCAST_TEST_SOURCE_DIR "/contract/reports.json");
    std::vector<AirRow> rows;
    for (const json& value : json::parse(file)) rows.push_back(readRow(value));
    return rows;
}

}  // namespace nearcast::contract

// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/DeviceTable.h"

#include "platform/hciformat/RawReport.h"

#include <algorithm>
#include <optional>

namespace nearcast::bluez {

namespace {

// The most that an advertisement can carry: extended ones have up to 1650 octets, of which an AD structure takes
// 254 (Core Specification, Volume 3, Part C, 11; Volume 4, Part E, 7.8.54); a name has up to 248 (Part C, 12.1).
constexpr std::size_t mostOctets = 254;
constexpr std::size_t mostServices = 128;
constexpr std::size_t longestName = 248;
constexpr std::size_t longestService = 36;
constexpr std::string_view pathMarker = "/dev_";

std::optional<std::uint8_t> digit(char letter) {
    if (letter >= '0' && letter <= '9') return static_cast<std::uint8_t>(letter - '0');
    if (letter >= 'A' && letter <= 'F') return static_cast<std::uint8_t>(letter - 'A' + 10);
    if (letter >= 'a' && letter <= 'f') return static_cast<std::uint8_t>(letter - 'a' + 10);
    return std::nullopt;
}

/// "XX?XX?XX?XX?XX?XX", with any separator.
std::optional<DeviceAddress> addressOf(std::string_view text) {
    DeviceAddress address{};
    if (text.size() != address.size() * 3 - 1) return std::nullopt;
    for (std::size_t octet = 0; octet < address.size(); ++octet) {
        const auto high = digit(text[octet * 3]);
        const auto low = digit(text[octet * 3 + 1]);
        if (!high || !low) return std::nullopt;
        address[octet] = static_cast<std::uint8_t>(*high << 4 | *low);
    }
    return address;
}

std::optional<DeviceAddress> addressInPath(std::string_view path) {
    const auto place = path.rfind(pathMarker);
    return place == std::string_view::npos ? std::nullopt : addressOf(path.substr(place + pathMarker.size()));
}

/// A report of which no more is known than whose it is.
AdvertisingReport unheard(std::string_view path) {
    AdvertisingReport report;
    report.address = addressInPath(path);
    report.RSSI = noRSSI;
    return report;
}

void takeServices(AdvertisingReport& report, const DeviceNews& news) {
    report.services.clear();
    for (const std::string_view text : news.services) {
        if (report.services.size() == mostServices) return;
        if (text.size() <= longestService) report.services.push_back(CBUUID::UUIDWithString(text).shortest());
    }
}

/// Puts the company identifier back before the octets, low octet first as it was on the air.
void takeManufacturer(AdvertisingReport& report, const DeviceNews::Manufacturer& manufacturer) {
    if (manufacturer.octets.size() > mostOctets) return;
    if (!report.manufacturerData) report.manufacturerData.emplace();
    std::vector<std::uint8_t>& data = *report.manufacturerData;
    data.resize(2 + manufacturer.octets.size());
    data[0] = static_cast<std::uint8_t>(manufacturer.company & 0xFF);
    data[1] = static_cast<std::uint8_t>(manufacturer.company >> 8);
    std::copy(manufacturer.octets.begin(), manufacturer.octets.end(), data.begin() + 2);
}

void take(AdvertisingReport& report, const DeviceNews& news) {
    if (news.noMoreRSSI) report.RSSI = noRSSI;
    if (news.RSSI) report.RSSI = *news.RSSI;
    if (news.manufacturer) takeManufacturer(report, *news.manufacturer);
    if (news.name) report.name = news.name->substr(0, longestName);
    if (news.randomAddress) report.addressType = *news.randomAddress ? 1 : 0;
    if (news.hasServices) takeServices(report, news);
    if (!news.address) return;
    if (const auto address = addressOf(*news.address)) report.address = address;
}

}  // namespace

void DeviceTable::learn(std::string_view path, const DeviceNews& news) {
    Device& device = reach(path);
    device.described = true;
    device.report = unheard(path);
    take(device.report, news);
}

DeviceTable::Heard DeviceTable::changed(std::string_view path, const DeviceNews& news) {
    Device& device = reach(path);
    take(device.report, news);
    return {news.RSSI || news.manufacturer ? &device.report : nullptr, !device.described};
}

void DeviceTable::remove(std::string_view path) {
    const auto place = places_.find(path);
    if (place == places_.end()) return;
    const auto device = place->second;
    places_.erase(place);
    devices_.erase(device);
}

void DeviceTable::clear() {
    places_.clear();
    devices_.clear();
}

/// Finds or makes the device, and moves it to the end, as the one heard last.
DeviceTable::Device& DeviceTable::reach(std::string_view path) {
    if (const auto place = places_.find(path); place != places_.end()) {
        devices_.splice(devices_.end(), devices_, place->second);
        return *place->second;
    }
    if (devices_.size() >= most_ && !devices_.empty()) remove(devices_.front().path);
    Devices added;  // until it has its place: what finds no memory leaves nothing behind
    Device& device = added.emplace_back();
    device.path = path;
    device.report = unheard(path);
    places_.emplace(device.path, added.begin());
    devices_.splice(devices_.end(), added);
    return device;
}

}  // namespace nearcast::bluez

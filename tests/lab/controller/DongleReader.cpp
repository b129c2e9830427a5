// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/DongleReader.h"

#include <charconv>
#include <cmath>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>

namespace nearcast::lab {

namespace {

std::uint8_t octet(std::string_view text) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (text.size() != 2 || error != std::errc() || end != text.data() + 2) {
        throw std::invalid_argument("'" + std::string(text) + "' is not an octet");
    }
    return static_cast<std::uint8_t>(value);
}

Bytes readOctets(const std::string& text) {
    Bytes bytes;
    for (std::size_t at = 0; at < text.size(); at += 2) bytes.push_back(octet(std::string_view(text).substr(at, 2)));
    return bytes;
}

bool readYes(const std::string& text) {
    if (text != "yes" && text != "no") throw std::invalid_argument("'" + text + "' is neither yes nor no");
    return text == "yes";
}

double readRate(const std::string& text) {
    const double rate = std::stod(text);
    if (!(rate > 0) || !std::isfinite(rate)) throw std::invalid_argument("a rate has to be above 0");
    return rate;
}

std::vector<int> readRssi(const std::string& text) {
    std::vector<int> row;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ',');) {
        const int value = std::stoi(part);
        if (value < -127 || value > 127) throw std::invalid_argument("an RSSI is from -127 to 127");
        row.push_back(value);
    }
    if (row.empty()) throw std::invalid_argument("no RSSI");
    return row;
}

Advertising readAdvertising(const std::string& text) {
    if (text == "connectable") return Advertising::connectable;
    if (text == "scannable") return Advertising::scannable;
    if (text == "nonconnectable") return Advertising::nonConnectable;
    throw std::invalid_argument("there is no type '" + text + "'");
}

using Setter = std::function<void(Dongle& dongle, const std::string& value)>;
const std::map<std::string, Setter, std::less<>> setters{
    {"address", [](Dongle& dongle, const std::string& value) { dongle.address = readAddress(value); }},
    {"payload",
     [](Dongle& dongle, const std::string& value) {
         dongle.payload.reset();
         if (value != "none") dongle.payload = readOctets(value);
     }},
    {"name", [](Dongle& dongle, const std::string& value) { dongle.localName = value; }},
    {"rate", [](Dongle& dongle, const std::string& value) { dongle.rate = readRate(value); }},
    {"rssi", [](Dongle& dongle, const std::string& value) { dongle.rssi = readRssi(value); }},
    {"type", [](Dongle& dongle, const std::string& value) { dongle.advertising = readAdvertising(value); }},
    {"answers", [](Dongle& dongle, const std::string& value) { dongle.answersScans = readYes(value); }},
    {"service", [](Dongle& dongle, const std::string& value) { dongle.service = readYes(value); }},
    {"silent", [](Dongle& dongle, const std::string& value) { dongle.silent = readYes(value); }},
    {"data", [](Dongle& dongle, const std::string& value) { dongle.data = readOctets(value); }},
    {"response", [](Dongle& dongle, const std::string& value) { dongle.response = readOctets(value); }},
    {"random", [](Dongle& dongle, const std::string& value) { dongle.random = readYes(value); }},
    {"extended", [](Dongle& dongle, const std::string& value) { dongle.extended = readYes(value); }},
};

}  // namespace

std::vector<std::string> words(std::string_view line) {
    std::istringstream parts{std::string(line)};
    std::vector<std::string> result;
    for (std::string word; parts >> word;) result.push_back(word);
    return result;
}

Address readAddress(const std::string& text) {
    Address address{};
    constexpr std::size_t length = 17;
    if (text.size() != length) throw std::invalid_argument("'" + text + "' is not an address");
    for (std::size_t i = 0; i < address.size(); ++i) address.at(i) = octet(std::string_view(text).substr(3 * i, 2));
    return address;
}

Dongle readDongle(const std::vector<std::string>& settings) {
    Dongle dongle;
    for (const std::string& setting : settings) {
        const std::size_t equals = setting.find('=');
        const auto setter = setters.find(std::string_view(setting).substr(0, equals));
        if (equals == std::string::npos || setter == setters.end()) {
            throw std::invalid_argument("a dongle has no '" + setting + "'");
        }
        setter->second(dongle, setting.substr(equals + 1));
    }
    return dongle;
}

}  // namespace nearcast::lab

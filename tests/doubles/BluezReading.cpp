// SPDX-License-Identifier: Apache-2.0
#include "doubles/BluezReading.h"

#include "platform/CBUUID.h"
#include "support/Utf8.h"

#include <algorithm>
#include <cctype>

namespace nearcast::bluez {

namespace {

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return text;
}

/// @param octets least significant first
std::string serviceText(std::span<const std::uint8_t> octets) {
    CBUUID::Bytes bytes = *CBUUID::UUIDWithShort(0).bytes();
    if (octets.size() == bytes.size()) {
        std::copy(octets.rbegin(), octets.rend(), bytes.begin());
    } else {
        std::copy(octets.rbegin(), octets.rend(), bytes.begin() + (4 - static_cast<std::ptrdiff_t>(octets.size())));
    }
    return lowerCase(CBUUID::UUIDWithBytes(bytes).UUIDString());
}

bool isBlank(char letter) { return letter == ' ' || (letter >= '\t' && letter <= '\r'); }

std::string withoutBlanks(const std::string& text) {
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), isBlank).base();
    return {first, last};
}

}  // namespace

/// It stops at a structure of length zero and at one that runs past the end, and at nothing else.
BluezReading BluezReading::of(Octets data) {
    BluezReading result;
    while (data.size() > 1 && data[0] != 0 && data[0] < data.size()) {
        result.take(data[1], data.subspan(2, data[0] - 1U));
        data = data.subspan(data[0] + 1U);
    }
    return result;
}

void BluezReading::take(std::uint8_t type, Octets value) {
    switch (type) {
        case 0x02:
        case 0x03: return takeServices(value, 2);
        case 0x04:
        case 0x05: return takeServices(value, 4);
        case 0x06:
        case 0x07: return takeServices(value, 16);
        case 0x08:
        case 0x09: return takeName(value);
        case 0xFF: return takeManufacturer(value);
        default: return;
    }
}

/// A part of a UUID at the end is passed over.
void BluezReading::takeServices(Octets value, std::size_t octets) {
    for (; value.size() >= octets; value = value.subspan(octets)) {
        std::string text = serviceText(value.first(octets));
        if (std::find(services.begin(), services.end(), text) == services.end()) services.push_back(std::move(text));
    }
}

/// The last name counts, complete or not. One that is not UTF-8, or has a zero in it, ends at the zero, and what is no
/// ASCII becomes blanks.
void BluezReading::takeName(Octets value) {
    while (!value.empty() && value.back() == 0) value = value.first(value.size() - 1);
    std::string text(value.begin(), value.end());
    if (wellFormed(text) != text || text.find('\0') != std::string::npos) {
        text.resize(std::min(text.size(), text.find('\0')));
        std::replace_if(
            text.begin(), text.end(), [](unsigned char letter) { return letter > 0x7F; }, ' ');
        text = withoutBlanks(text);
    }
    name.reset();
    if (!text.empty()) name = std::move(text);
}

void BluezReading::takeManufacturer(Octets value) {
    if (value.size() < 2 || value.size() - 2 > mostOctets) return;
    const auto company = static_cast<std::uint16_t>(value[0] | value[1] << 8);
    std::vector<std::uint8_t> octets(value.begin() + 2, value.end());
    const auto known = std::find_if(manufacturers.begin(), manufacturers.end(),
                                    [&](const Manufacturer& one) { return one.first == company; });
    if (known == manufacturers.end()) {
        manufacturers.emplace_back(company, std::move(octets));
    } else {
        known->second = std::move(octets);
    }
}

}  // namespace nearcast::bluez

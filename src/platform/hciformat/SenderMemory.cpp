// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/SenderMemory.h"

namespace nearcast {

namespace {

constexpr std::size_t octetsPerSender = 256;
constexpr std::size_t octetsPerService = sizeof(CBUUID) + 48;

std::uint64_t keyOf(const DeviceAddress& address, std::uint8_t addressType) {
    std::uint64_t key = addressType;
    for (const std::uint8_t octet : address) key = key << 8 | octet;
    return key;
}

}  // namespace

std::size_t SenderMemory::Sender::octets() const {
    return octetsPerSender + (name ? name->size() : 0) + services.size() * octetsPerService;
}

void SenderMemory::complete(AdvertisingReport& report) {
    if (!report.address) return;
    const std::uint64_t key = keyOf(*report.address, report.addressType);
    if (report.scanResponse) learn(key, report);
    const auto sender = find(key);
    if (sender == senders_.end()) return;
    if (!report.name) report.name = sender->name;
    if (report.services.empty()) report.services = sender->services;
}

SenderMemory::Senders::iterator SenderMemory::find(std::uint64_t key) {
    const auto place = places_.find(key);
    if (place == places_.end()) return senders_.end();
    senders_.splice(senders_.end(), senders_, place->second);
    return place->second;
}

void SenderMemory::learn(std::uint64_t key, const AdvertisingReport& report) {
    if (!report.name && report.services.empty()) return;
    auto sender = find(key);
    if (sender == senders_.end()) {
        Senders added;  // until it has its place: what finds no memory leaves nothing behind
        sender = added.insert(added.end(), Sender{key, {}, {}});
        places_.emplace(key, sender);
        senders_.splice(senders_.end(), added);
    }
    if (report.name) sender->name = report.name;
    if (!report.services.empty()) sender->services = report.services;
    octets_ += sender->octets() - sender->counted;
    sender->counted = sender->octets();
    while (senders_.size() > mostSenders_ || octets_ > mostOctets_) forget();
}

void SenderMemory::forget() {
    octets_ -= senders_.front().counted;
    places_.erase(senders_.front().key);
    senders_.pop_front();
}

}  // namespace nearcast

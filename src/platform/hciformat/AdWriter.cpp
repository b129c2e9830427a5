// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/AdWriter.h"

#include "platform/hciformat/ReportFragments.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>

namespace nearcast {

namespace {

using Octets = std::vector<std::uint8_t>;

// Assigned Numbers, 2.3: common data types.
enum AdType : std::uint8_t {
    completeUUIDs16 = 0x03,
    completeUUIDs32 = 0x05,
    completeUUIDs128 = 0x07,
    completeName = 0x09,
    manufacturerSpecific = 0xFF,
};

constexpr std::size_t longestValue = 254;

/// A service as it stands on the air: the shortest form, least significant octet first.
Octets onAir(const CBUUID::Bytes& bytes) {
    static const CBUUID::Bytes base = *CBUUID::UUIDWithShort(0).bytes();
    std::span<const std::uint8_t> shortest(bytes);
    if (std::equal(bytes.begin() + 4, bytes.end(), base.begin() + 4)) {
        shortest = bytes[0] == 0 && bytes[1] == 0 ? shortest.subspan(2, 2) : shortest.first(4);
    }
    return {shortest.rbegin(), shortest.rend()};
}

AdType listOf(std::size_t octetsEach) {
    if (octetsEach == 2) return completeUUIDs16;
    return octetsEach == 4 ? completeUUIDs32 : completeUUIDs128;
}

class Writer {
public:
    void add(AdType type, std::span<const std::uint8_t> value) {
        value = value.first(std::min(value.size(), longestValue));
        if (data_.size() + 2 + value.size() > ReportFragments::longestData) return;
        data_.push_back(static_cast<std::uint8_t>(value.size() + 1));
        data_.push_back(type);
        data_.insert(data_.end(), value.begin(), value.end());
    }

    /// Neighbours of one size share a structure, so that the order stays.
    void addServices(const std::vector<CBUUID>& services) {
        Octets list;
        std::size_t octetsEach = 0;
        for (const CBUUID& service : services) {
            if (!service.bytes()) continue;
            const Octets one = onAir(*service.bytes());
            if (one.size() != octetsEach || list.size() + one.size() > longestValue) {
                if (!list.empty()) add(listOf(octetsEach), list);
                list.clear();
                octetsEach = one.size();
            }
            list.insert(list.end(), one.begin(), one.end());
        }
        if (!list.empty()) add(listOf(octetsEach), list);
    }

    Octets take() { return std::move(data_); }

private:
    Octets data_;
};

}  // namespace

std::vector<std::uint8_t> writeAdStructures(const AdvertisingReport& report) {
    Writer writer;
    writer.addServices(report.services);
    if (report.manufacturerData && report.manufacturerData->size() >= 2) {
        writer.add(manufacturerSpecific, *report.manufacturerData);
    }
    if (report.name && !report.name->empty()) {
        const Octets name(report.name->begin(), report.name->end());
        writer.add(completeName, name);
    }
    return writer.take();
}

}  // namespace nearcast

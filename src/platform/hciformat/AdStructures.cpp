// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/AdStructures.h"

#include "platform/hciformat/ByteReader.h"
#include "platform/hciformat/HciEvents.h"
#include "support/Dongle.h"
#include "support/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace nearcast {

namespace {

using Bytes = std::span<const std::uint8_t>;
using Octets = std::vector<std::uint8_t>;

// Assigned Numbers, 2.3: common data types.
enum AdType : std::uint8_t {
    incompleteUUIDs16 = 0x02,
    completeUUIDs16 = 0x03,
    incompleteUUIDs32 = 0x04,
    completeUUIDs32 = 0x05,
    incompleteUUIDs128 = 0x06,
    completeUUIDs128 = 0x07,
    shortenedName = 0x08,
    completeName = 0x09,
    manufacturerSpecific = 0xFF,
};

CBUUID oneUUID(ByteReader& list, std::size_t octets) {
    if (octets == 2) return CBUUID::UUIDWithShort(list.u16());
    if (octets == 4) return CBUUID::UUIDWithShort(list.u32());
    const Bytes onAir = list.take(octets);
    CBUUID::Bytes bytes{};
    std::copy(onAir.rbegin(), onAir.rend(), bytes.begin());
    return CBUUID::UUIDWithBytes(bytes).shortest();
}

std::uint16_t companyOf(Bytes manufacturerData) { return ByteReader(manufacturerData).u16(); }

class Structures {
public:
    explicit Structures(AdvertisingReport& report) : report_(report) {}

    /// @return whether the structure is well formed
    bool take(std::uint8_t type, Bytes value) {
        switch (type) {
            case incompleteUUIDs16:
            case completeUUIDs16: return takeUUIDs(value, 2);
            case incompleteUUIDs32:
            case completeUUIDs32: return takeUUIDs(value, 4);
            case incompleteUUIDs128:
            case completeUUIDs128: return takeUUIDs(value, 16);
            case shortenedName: return takeName(value, false);
            case completeName: return takeName(value, true);
            case manufacturerSpecific: return takeManufacturerData(value);
            default: return true;
        }
    }

private:
    bool takeUUIDs(Bytes value, std::size_t octets) {
        if (value.size() % octets != 0) return false;
        ByteReader list(value);
        while (list.left() > 0) report_.services.push_back(oneUUID(list, octets));
        return true;
    }

    bool takeName(Bytes value, bool complete) {
        const bool better = !report_.name || (complete && !nameComplete_);
        while (!value.empty() && value.back() == 0) value = value.first(value.size() - 1);
        if (value.empty() || !better) return true;
        report_.name = wellFormed({reinterpret_cast<const char*>(value.data()), value.size()});
        nameComplete_ = complete;
        return true;
    }

    bool takeManufacturerData(Bytes value) {
        if (value.size() < 2) return false;
        auto& kept = report_.manufacturerData;
        if (!kept || dongle::countsInstead(companyOf(value), companyOf(*kept)))
            kept.emplace(value.begin(), value.end());
        return true;
    }

    AdvertisingReport& report_;
    bool nameComplete_ = false;
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

std::optional<std::size_t> readAdStructures(std::span<const std::uint8_t> data, AdvertisingReport& report) {
    ByteReader reader(data);
    Structures structures(report);
    while (reader.left() > 0) {
        const std::size_t start = reader.position();
        const std::uint8_t length = reader.u8();
        if (length == 0) return std::nullopt;
        const Bytes structure = reader.take(length);
        if (reader.failed() || !structures.take(structure[0], structure.subspan(1))) return start;
    }
    return std::nullopt;
}

std::optional<std::size_t> readReport(const RawReport& raw, AdvertisingReport& report) {
    report.address = raw.address;
    report.addressType = raw.addressType;
    report.scanResponse = raw.scanResponse;
    report.RSSI = raw.RSSI;
    return readAdStructures(raw.data, report);
}

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

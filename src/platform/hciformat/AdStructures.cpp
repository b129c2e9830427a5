// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/AdStructures.h"

#include "platform/hciformat/ByteReader.h"

#include <algorithm>

namespace nearcast {

namespace {

using Bytes = std::span<const std::uint8_t>;

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
    return CBUUID::UUIDWithBytes(bytes);
}

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
        if (value.empty() || !better) return true;
        report_.name.emplace(value.begin(), value.end());
        nameComplete_ = complete;
        return true;
    }

    bool takeManufacturerData(Bytes value) {
        if (value.size() < 2) return false;
        if (!report_.manufacturerData) report_.manufacturerData.emplace(value.begin(), value.end());
        return true;
    }

    AdvertisingReport& report_;
    bool nameComplete_ = false;
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

}  // namespace nearcast

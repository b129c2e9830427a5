// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include "support/NumberedNames.h"
#include "support/PackedAddressMap.h"
#include "support/SharedText.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace nearcast {

/// A registered port as it is found by its dongle's address.
struct RegisteredPort {
    SharedText name;
    std::int32_t deviceType = 0;  ///< a `QXDeviceType`, or another number that a record held
};

/// The registry: records by port name, and an index of them by the address of the dongle. Not for several threads at
/// once.
///
/// Where several records hold one address, the first in the order of port names is found, as by a walk through them.
class Registry {
public:
    Registry() = default;
    /// Records that are null become empty ones.
    explicit Registry(Settings records);

    [[nodiscard]] const Settings& records() const noexcept { return records_; }
    [[nodiscard]] bool contains(std::string_view portName) const { return records_.find(portName) != records_.end(); }
    /// The device type of a port, read as an integer; 0 where it is not known.
    [[nodiscard]] std::int32_t deviceTypeOf(std::string_view portName) const;
    /// Null where no record holds that address. Valid until the registry changes.
    [[nodiscard]] const RegisteredPort* portOf(const AddressKey& address) const {
        return index_.find(names_.find(address));
    }
    /// Prepares `portOf`; see `PackedAddressMap::expect`. From any thread at any time.
    void expect(PackedAddress address) const noexcept { index_.expect(address); }
    /// How often the registry has changed. What was read of it holds as long as this stays the same.
    [[nodiscard]] std::uint64_t changes() const noexcept { return changes_; }

    void insert(std::string_view portName, SettingRecordPointer record);
    /// @return whether there was one
    bool remove(std::string_view portName);
    /// Exchanges what both hold.
    void swap(Registry& other) noexcept;

private:
    void enterIndex(const std::string& portName, const SettingRecord& record);
    void leaveIndex(const std::string& portName, const SettingRecord& record);

    Settings records_;
    NumberedNames names_;  ///< of the addresses
    PackedAddressMap<RegisteredPort> index_;
    std::size_t hidden_ = 0;  ///< records that are not found by their address, for an earlier one holds it too
    std::uint64_t changes_ = 0;
};

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include "support/NumberedNames.h"
#include "support/PackedAddressMap.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast {

/// A text that is copied without a heap: a short one is held in place, a long one is shared by its copies. Immutable.
class SharedText {
public:
    /// The longest text that is held in place, in bytes.
    static constexpr std::size_t nearSize = 31;

    SharedText() = default;
    explicit SharedText(std::string_view text) {
        if (text.size() <= nearSize) {
            text.copy(near_.data(), text.size());
            size_ = static_cast<std::uint8_t>(text.size());
        } else {
            far_ = std::make_shared<const std::string>(text);
        }
    }

    /// Valid as long as this object, or for a long text as one of its copies.
    [[nodiscard]] std::string_view view() const noexcept {
        return far_ != nullptr ? std::string_view(*far_) : std::string_view(near_.data(), size_);
    }

private:
    std::array<char, nearSize> near_{};
    std::uint8_t size_ = 0;
    std::shared_ptr<const std::string> far_;
};

/// A registered port as it is found by its dongle's address.
struct RegisteredPort {
    SharedText name;
    std::int32_t deviceType = 0;  ///< a `QXDeviceType`, or another number that a record held
};

/// What the registry said of an address.
struct FoundPort {
    std::optional<RegisteredPort> port;
    std::uint64_t changes = 0;  ///< of the registry, when it said so

    [[nodiscard]] std::string_view nameOrNone() const noexcept { return port ? port->name.view() : ""; }
};

/// The registry: records by port name, and an index of them by the address of the dongle. Not for several threads at
/// once.
///
/// Where several records hold one address, the first in the order of port names is found, as by a walk through them.
/// What finds no memory throws and leaves the registry as it was.
class Registry {
public:
    Registry() = default;
    /// Records that are null become empty ones.
    explicit Registry(Settings records);

    [[nodiscard]] const Settings& records() const noexcept { return records_; }
    [[nodiscard]] bool contains(std::string_view portName) const { return records_.find(portName) != records_.end(); }
    /// The port whose record holds that address, as it is now: a copy, for the lock is released before it is used.
    [[nodiscard]] FoundPort find(const AddressKey& address) const {
        const RegisteredPort* const port = index_.find(names_.find(address));
        return {port != nullptr ? std::optional(*port) : std::nullopt, changes_};
    }
    /// Prepares `find`; see `PackedAddressMap::prefetch`. From any thread at any time.
    void prefetch(PackedAddress address) const noexcept { index_.prefetch(address); }
    /// The device type that the record of a port has by now, read as an integer; 0 where the record is gone. Most often
    /// nothing has changed since the port was found: then it is what was found with it, without a second look-up.
    [[nodiscard]] std::int32_t deviceTypeNow(const FoundPort& found) const {
        return found.changes == changes_ ? found.port->deviceType : deviceTypeOf(found.port->name.view());
    }
    /// The device type of a port, read as an integer; 0 where it is not known.
    [[nodiscard]] std::int32_t deviceTypeOf(std::string_view portName) const;

    void insert(std::string_view portName, SettingRecordPointer record);
    /// @return whether there was one
    bool remove(std::string_view portName);
    /// Exchanges what both hold.
    void swap(Registry& other) noexcept;

private:
    void replace(std::string_view portName, SettingRecordPointer record);
    void enterIndex(const std::string& portName, const SettingRecord& record);
    void leaveIndex(const std::string& portName, const SettingRecord& record);

    Settings records_;
    NumberedNames names_;  ///< of the addresses
    PackedAddressMap<RegisteredPort> index_;
    std::size_t hidden_ = 0;  ///< records that are not found by their address, for an earlier one holds it too
    std::uint64_t changes_ = 0;
};

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Address.h>
#include <nearcast/Export.h>
#include <nearcast/QXBluetoothManager.h>
#include <nearcast/QXNearcastManager.h>
#include <nearcast/SettingRecord.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast {

/// A device to be registered, its parts by name. Every operation here may be called from any thread.
///
/// @code
/// nearcast::addDevice(manager, {.portName = "BT:Front", .address = nearcast::Address("00:11:22:aa:bb:cc"),
///                               .threshold = -65, .nickName = "Front desk"});
/// @endcode
struct Device {
    /// What it is.
    enum class Kind {
        printer,     ///< `QXDeviceTypeDesktopPrinter`
        cashDrawer,  ///< `QXDeviceTypeTFTillfox`, which always has its drawer
    };

    std::string portName;                          ///< by which the printing layer opens it
    Address address;                               ///< of the dongle beside it
    Kind kind = Kind::printer;                     ///< what it is
    bool useDrawer = false;                        ///< a cash drawer is attached to the printer
    std::optional<std::string> portSettings = {};  ///< what the printing layer passes on opening
    std::optional<double> threshold = {};          ///< signal of the action area in dBm
    std::optional<std::string> nickName = {};      ///< for people
};

/// Registers a device.
/// @throws PortException when the port name or the address is in use; it carries both
NEARCAST_EXPORT void addDevice(QXNearcastManager& manager, const Device& device);

/// @name A record with one thing changed
/// All else, also what Nearcast does not know, stays as it stood. Nothing in place of a value takes the key away; a
/// nick name is then "(null)", as of a device registered without one.
/// @{
NEARCAST_EXPORT SettingRecordPointer withAddress(const SettingRecord& record, const Address& address);
NEARCAST_EXPORT SettingRecordPointer withDrawer(const SettingRecord& record, bool useDrawer);
NEARCAST_EXPORT SettingRecordPointer withPortSettings(const SettingRecord& record,
                                                      const std::optional<std::string>& portSettings);
/// @param threshold in dBm, cut toward zero and clamped to 32 bits
NEARCAST_EXPORT SettingRecordPointer withThreshold(const SettingRecord& record, std::optional<double> threshold);
NEARCAST_EXPORT SettingRecordPointer withNickName(const SettingRecord& record,
                                                  const std::optional<std::string>& nickName);
/// @}

/// @name What a record says
/// Nothing where it does not say it, or by a value of another type.
/// @{
NEARCAST_EXPORT std::optional<Address> addressOf(const SettingRecord& record);
NEARCAST_EXPORT std::optional<double> thresholdOf(const SettingRecord& record);
/// Nothing also for "(null)".
NEARCAST_EXPORT std::optional<std::string> nickNameOf(const SettingRecord& record);
NEARCAST_EXPORT std::optional<std::string> portSettingsOf(const SettingRecord& record);
/// @}

/// Puts a changed record in the place of a device's, in one call: `changeDevice(manager, "BT:Front", [](const auto&
/// record) { return withThreshold(record, -60); })`. A device that another thread registers or removes meanwhile may be
/// lost or come back: let one thread change the registry.
/// @param change called once, with no lock held, on this thread; what it throws passes through and nothing is changed
/// @return false when no device has this port name
NEARCAST_EXPORT bool changeDevice(QXNearcastManager& manager, std::string_view portName,
                                  const std::function<SettingRecordPointer(const SettingRecord& record)>& change);

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include <string>
#include <string_view>
#include <vector>

namespace nearcast::cli {

/// Something in a settings file that is not forbidden, and hardly meant.
struct SettingsFinding {
    std::string device;       ///< its port name
    std::string_view member;  ///< of its record
    std::string text;         ///< what of the member, and what comes of it

    /// "FILE: "BT:Front": MAC Address ..."
    [[nodiscard]] std::string inFile(const std::string& path) const;
};

/// Looks at settings as the file has them, where a device type is a word still. What is no object is passed over: it is
/// refused elsewhere.
/// @return in the order of the devices' names
std::vector<SettingsFinding> checkSettings(const SettingValue& file);

}  // namespace nearcast::cli

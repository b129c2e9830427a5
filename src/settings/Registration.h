// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include "core/Manager.h"

#include <string_view>

namespace nearcast {

/// The texts in which the two kinds of registration differ. The differences are part of the interface.
struct RegistrationWords {
    std::string_view missingConsole;  ///< the port name or the address is absent
    std::string_view missingReason;
    std::string_view addressInUseReason;
};

/// One call of a registration operation.
struct Manager::Registration {
    Text portName;
    Text portSettings;
    bool drawerGiven = false;  ///< the printer's operation, which lists the drawer among its arguments
    bool withDrawer = false;
    Text MACAddr;
    std::optional<double> Threshold;
    Text nickName;
    QXDeviceType deviceType = QXDeviceTypeUnknown;
    const RegistrationWords* words = nullptr;

    /// "Threshold RSSI": cut toward zero and clamped; 0 where it is absent.
    [[nodiscard]] std::int32_t thresholdRSSI() const;
    /// The arguments as trace records list them.
    [[nodiscard]] std::string arguments() const;
    /// The record without port settings and threshold.
    [[nodiscard]] SettingRecord record() const;
};

}  // namespace nearcast

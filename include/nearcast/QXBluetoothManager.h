// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>

#include <cstdint>

namespace nearcast {

/// What kind of device stands beside a dongle.
///
/// Registration writes only `QXDeviceTypeDesktopPrinter` (every printer) and `QXDeviceTypeTFTillfox`
/// (the cash drawer); the other two reach a record only through `QXNearcastManager::setSettings`.
enum QXDeviceType : std::int32_t {
    QXDeviceTypeUnknown = 0,          ///< not registered, or a record that does not say
    QXDeviceTypeDesktopPrinter = 1,   ///< a printer, saved as "Printer"
    QXDeviceTypePortablePrinter = 2,  ///< not written by registration and lost by a save
    QXDeviceTypeTFTillfox = 3,        ///< the Bluetooth cash drawer, saved as "TF-Tillfox"
};

}  // namespace nearcast

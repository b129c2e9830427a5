// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/Radio.h"

namespace nearcast {

/// Stands where there is no radio: it is unsupported and hears nothing.
class NoRadio : public Radio {
public:
    NoRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor)
        : Radio(delegate, console, monitor, CBManagerStateUnsupported, "there is no radio") {}
};

}  // namespace nearcast

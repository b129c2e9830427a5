// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/Radio.h"

#include <string>
#include <utility>

namespace nearcast {

/// Stands where there is no radio: it is unsupported and hears nothing.
class NoRadio : public Radio {
public:
    /// @param why for people
    NoRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, std::string why)
        : Radio(delegate, console, monitor, CBManagerStateUnsupported, std::move(why)) {}
};

}  // namespace nearcast

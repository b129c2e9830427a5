// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSDate.h"
#include "proximity/Smoothing.h"

namespace nearcast {

/// What is known of one dongle that is in range.
struct Signal {
    NSDate lastUpdate;
    Smoothing smoothing;
};

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#include <nearcast/RadioHealth.h>

namespace nearcast {

std::string nameOf(CBManagerState state) {
    switch (state) {
        case CBManagerStateUnknown: return "unknown";
        case CBManagerStateResetting: return "resetting";
        case CBManagerStateUnsupported: return "unsupported";
        case CBManagerStateUnauthorized: return "unauthorized";
        case CBManagerStatePoweredOff: return "powered off";
        case CBManagerStatePoweredOn: return "powered on";
    }
    return std::to_string(static_cast<std::int64_t>(state));
}

}  // namespace nearcast

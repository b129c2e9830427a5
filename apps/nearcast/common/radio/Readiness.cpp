// SPDX-License-Identifier: Apache-2.0
#include "common/radio/Readiness.h"

#include "common/Words.h"

namespace nearcast::cli {

Readiness readinessOf(const RadioHealth& health) {
    switch (health.state) {
        case CBManagerStatePoweredOn: return Readiness::ready;
        case CBManagerStateUnsupported:
        case CBManagerStateUnauthorized: return Readiness::missing;
        case CBManagerStateUnknown:
        case CBManagerStateResetting:
        case CBManagerStatePoweredOff: break;
    }
    return Readiness::awaited;
}

bool isSettled(const RadioHealth& health, bool hasTold) {
    if (health.state == CBManagerStateUnknown) return hasTold;
    return health.state != CBManagerStateResetting;
}

std::string reasonOf(const RadioHealth& health) {
    return health.why.empty() ? "the radio is " + nameOf(health.state) : health.why;
}

RadioMissing::RadioMissing(const RadioHealth& health)
    : std::runtime_error(reasonOf(health) +
                         "; 'nearcast doctor' says what to do about it, and '--radio simulator' needs no radio") {}

std::string nothingHeardInWords(const RadioHealth& health, bool waited) {
    return "nothing was heard: the radio " + (waited ? "did not come" : "is " + stateInWords(health));
}

std::string awaitedInWords(const RadioHealth& health) {
    return "waiting for the radio: " + reasonOf(health) + "; 'nearcast doctor' tells more";
}

}  // namespace nearcast::cli

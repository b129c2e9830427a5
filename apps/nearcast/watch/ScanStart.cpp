// SPDX-License-Identifier: Apache-2.0
#include "watch/ScanStart.h"

#include "common/radio/Readiness.h"

#include <nearcast/Platform.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace nearcast::cli {

ScanStart::ScanStart(WatchSession& session, QXNearcastManager& manager) : session_(session), manager_(manager) {
    session_.awaitRadio(true);
}

void ScanStart::look() {
    if (scans_) return;
    const bool told = session_.radioHasTold();  // asked first, so that what was told is in the health
    const RadioHealth health = Platform::radioHealth();
    if (!isSettled(health, told) && session_.seconds() < radioSettling) return;
    switch (readinessOf(health)) {
        case Readiness::ready:
            session_.release();
            scans_ = manager_.startScan();  // not where it is gone again meanwhile
            session_.awaitRadio(!scans_);
            return;
        case Readiness::missing:
            // One that was waited for and has come without an adapter, or for others alone, may change once more.
            if (!waits_) throw RadioMissing(health);
            return;
        case Readiness::awaited: return tellOfWait(health);
    }
}

void ScanStart::tellOfWait(const RadioHealth& health) {
    if (waits_) return;
    waits_ = true;
    session_.release();
    session_.console(awaitedInWords(health));
}

double ScanStart::patience() const {
    if (scans_ || waits_) return std::numeric_limits<double>::infinity();
    return std::max(0.0, radioSettling - session_.seconds());
}

void ScanStart::requireScan() const {
    const RadioHealth health = Platform::radioHealth();
    // One that is ready was not waited for: the watch was ended before its scan began.
    if (scans_ || readinessOf(health) == Readiness::ready) return;
    throw std::runtime_error(nothingHeardInWords(health, waits_));
}

}  // namespace nearcast::cli

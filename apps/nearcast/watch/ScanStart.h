// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "watch/WatchSession.h"

#include <nearcast/QXNearcastManager.h>

namespace nearcast::cli {

/// Begins a watch's scan: at once, or when the radio has come that is waited for. One thread.
class ScanStart {
public:
    /// @param session, manager live longer; the session is held, and released here
    ScanStart(WatchSession& session, QXNearcastManager& manager);

    /// Begins the scan where that is possible now. To be called again after each wait.
    /// @throws RadioMissing where the radio that was opened is missing
    void look();
    /// Seconds after which `look` has something to decide, whatever happens.
    [[nodiscard]] double patience() const;
    /// @throws std::runtime_error when the scan has never begun, for want of a radio
    void requireScan() const;

private:
    void tellOfWait(const RadioHealth& health);

    WatchSession& session_;
    QXNearcastManager& manager_;
    bool scans_ = false;
    bool waits_ = false;  ///< which was said
};

}  // namespace nearcast::cli

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Drive.h"
#include "platform/system/SystemPlatform.h"
#include "platform/system/WakeUp.h"

namespace nearcast {

/// Drives the machine's platform on the application's own loop. Where its timers have a thread of their own there is
/// nothing to drive: a run then only lets its time pass.
class SystemDrive : public Drive {
public:
    /// @param platform lives longer
    explicit SystemDrive(SystemPlatform& platform) : platform_(platform) {}

    int descriptor() override { return platform_.timers().descriptor(); }
    void dispatch() override { platform_.timers().dispatch(); }
    bool runFor(std::chrono::microseconds duration) override;
    void interrupt() override { interruption_.wake(); }
    [[nodiscard]] std::string failure() const override { return {}; }

private:
    SystemPlatform& platform_;
    WakeUp interruption_;  ///< also rings at the end of a run
};

}  // namespace nearcast

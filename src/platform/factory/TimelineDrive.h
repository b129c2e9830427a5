// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Drive.h"
#include "platform/timeline/TimelinePlatform.h"

#include <atomic>

namespace nearcast {

/// Drives a platform that has a time of its own.
class TimelineDrive : public Drive {
public:
    /// @param platform lives longer
    explicit TimelineDrive(TimelinePlatform& platform) : platform_(platform) {}

    int descriptor() override { return -1; }
    void dispatch() override {}
    bool runFor(std::chrono::microseconds duration) override;
    void interrupt() override { platform_.timeline().interrupt(); }
    [[nodiscard]] std::string failure() const override { return platform_.failure(); }

private:
    TimelinePlatform& platform_;
    std::atomic<bool> exhausted_{false};
};

}  // namespace nearcast

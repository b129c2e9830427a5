// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Mutex.h"

#include <string>
#include <utility>

namespace nearcast::replay {

/// Why a recording ended before its end. From any thread.
class ReplayFailure {
public:
    void set(std::string text) {
        const MutexLock lock(mutex_);
        text_ = std::move(text);
    }
    /// Empty while nothing is wrong.
    [[nodiscard]] std::string text() const {
        const MutexLock lock(mutex_);
        return text_;
    }

private:
    mutable Mutex mutex_;
    std::string text_ NEARCAST_GUARDED_BY(mutex_);
};

}  // namespace nearcast::replay

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSLog.h"
#include "support/Mutex.h"

#include <condition_variable>
#include <string>
#include <vector>

namespace nearcast {

/// A console that keeps its lines.
class KeptLines : public Console {
public:
    void NSLog(std::string_view line) noexcept override {
        const MutexLock lock(mutex_);
        lines_.emplace_back(line);
        changed_.notify_all();
    }

    [[nodiscard]] std::vector<std::string> lines() const {
        const MutexLock lock(mutex_);
        return lines_;
    }

    /// Returns when there are `count` lines.
    void await(std::size_t count) const {
        MutexLock lock(mutex_);
        while (lines_.size() < count) changed_.wait(lock.native());
    }

private:
    mutable Mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::string> lines_ NEARCAST_GUARDED_BY(mutex_);
};

}  // namespace nearcast

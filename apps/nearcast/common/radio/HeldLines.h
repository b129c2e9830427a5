// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Mutex.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nearcast::cli {

/// Console lines that are kept until it is known whether they matter. From any thread.
class HeldLines {
public:
    using Out = std::function<void(std::string_view line)>;

    explicit HeldLines(Out out) : out_(std::move(out)) {}

    /// Keeps the line, or after `release` hands it on.
    void say(std::string_view line) {
        const MutexLock lock(mutex_);
        if (holding_) {
            lines_.emplace_back(line);
        } else {
            out_(line);
        }
    }
    void release() {
        const MutexLock lock(mutex_);
        holding_ = false;
        for (const std::string& line : std::exchange(lines_, {})) out_(line);
    }

private:
    const Out out_;
    Mutex mutex_;
    bool holding_ NEARCAST_GUARDED_BY(mutex_) = true;
    std::vector<std::string> lines_ NEARCAST_GUARDED_BY(mutex_);
};

}  // namespace nearcast::cli

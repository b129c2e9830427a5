// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSLock.h"
#include "platform/NSLog.h"
#include "platform/virtual/VirtualPlatform.h"
#include "support/Mutex.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::doubles {

/// Everything that a manager shows outside its answers, as lines of text in order:
///
///     console LINE
///     central stop | central scan SERVICE... | central scan all
///     take _lockRssiDataFlag | release _lockRssiDataFlag
///     trace TYPE METHOD: TEXT       METHOD without the class; pointers as <ptr>
///
/// Locks and traces only after `watchLocks` and `watchTraces`, one journal at a time. From any thread.
class Journal : public Console, public LockObserver, public VirtualRadioObserver {
public:
    Journal() = default;
    ~Journal() override;
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    void watchLocks();
    void watchTraces();

    void add(std::string line);
    [[nodiscard]] std::vector<std::string> lines() const;
    /// The lines that begin with `start`.
    [[nodiscard]] std::vector<std::string> lines(std::string_view start) const;
    [[nodiscard]] std::size_t count(std::string_view line) const;
    void clear();

    void NSLog(std::string_view line) noexcept override;
    void lockChanged(std::string_view name, bool held) noexcept override;
    void scanAsked(const std::optional<std::vector<CBUUID>>& services, ScanOptions options) override;
    void stopAsked() override;

private:
    mutable Mutex mutex_;
    std::vector<std::string> lines_ NEARCAST_GUARDED_BY(mutex_);
    bool watchesLocks_ = false;
    bool watchesTraces_ = false;
};

}  // namespace nearcast::doubles

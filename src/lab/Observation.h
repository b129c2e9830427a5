// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/EventWriter.h"
#include "platform/NSLock.h"
#include "platform/NSLog.h"
#include "platform/timeline/Timeline.h"
#include "platform/virtual/VirtualPlatform.h"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace nearcast::lab {

/// Writes down what a manager does to the console, its radio, its locks and its trace.
class Observation : public Console, public LockObserver, public VirtualRadioObserver {
public:
    /// Takes the trace and the locks of the process for itself, until it is gone.
    class Watch {
    public:
        Watch(Observation& observation, bool trace, bool locks);
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;
    };

    explicit Observation(EventWriter::Out out) : writer_(std::move(out)) {}

    /// Takes the time of events from a timeline, which lives longer; before, it is 0.
    void follow(const Timeline& timeline) noexcept { timeline_ = &timeline; }

    void NSLog(std::string_view line) noexcept override;
    void lockChanged(std::string_view name, bool held) noexcept override;
    void stopAsked() override;
    void scanAsked(const std::optional<std::vector<CBUUID>>& services, ScanOptions options) override;

    [[nodiscard]] EventWriter& writer() noexcept { return writer_; }

private:
    [[nodiscard]] lines::Time now() const { return timeline_ == nullptr ? lines::Time{0} : timeline_->now(); }

    EventWriter writer_;
    const Timeline* timeline_ = nullptr;
};

}  // namespace nearcast::lab

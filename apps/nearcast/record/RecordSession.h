// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>

#include "platform/radio/AdvertisingReport.h"
#include "platform/replay/RecordingWriter.h"
#include "support/Mutex.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace nearcast::cli {

/// Writes what a radio does into a recording. From any thread.
class RecordSession {
public:
    using Time = std::chrono::microseconds;

    /// @param broke called once, when the recording can no longer be written; from any thread, with a lock of the
    ///              session held
    RecordSession(std::unique_ptr<replay::RecordingWriter> writer, std::function<void()> broke)
        : broke_(std::move(broke)), writer_(std::move(writer)) {}

    /// The state of the radio when the recording begins: a recording without one begins powered on.
    void begin(CBManagerState state);
    void heard(const AdvertisingReport& report, Time at);
    /// Only a change of the state is recorded: reasons and restarts concern this machine alone.
    void changed(const RadioHealth& health, Time at);
    /// Ends the recording at this time, however long ago the last report was.
    /// @throws std::runtime_error when the recording could not be written
    void end(Time at);

    [[nodiscard]] std::uint64_t reports();

private:
    template <class Item>
    void write(Item item) NEARCAST_REQUIRES(mutex_);

    const std::function<void()> broke_;
    Mutex mutex_;
    std::unique_ptr<replay::RecordingWriter> writer_ NEARCAST_GUARDED_BY(mutex_);
    Time last_ NEARCAST_GUARDED_BY(mutex_){0};
    CBManagerState state_ NEARCAST_GUARDED_BY(mutex_) = CBManagerStatePoweredOn;
    std::uint64_t reports_ NEARCAST_GUARDED_BY(mutex_) = 0;
    std::string broken_ NEARCAST_GUARDED_BY(mutex_);
};

}  // namespace nearcast::cli

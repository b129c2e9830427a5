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

/// What happens between a radio and the recording of it. From any thread.
class RecordSession {
public:
    using Time = std::chrono::microseconds;

    /// @param broke called once, when the recording can no longer be written; from any thread, with a lock of the
    ///              session's held
    RecordSession(std::unique_ptr<replay::RecordingWriter> writer, std::function<void()> broke)
        : broke_(std::move(broke)), writer_(std::move(writer)) {}

    /// How the radio is when the recording begins. A recording's radio is powered on unless it says otherwise.
    void begin(CBManagerState state);
    void heard(const AdvertisingReport& report, Time at);
    /// Only another state becomes part of the recording: reasons and restarts are this machine's.
    void changed(const RadioHealth& health, Time at);
    /// The recording lasts until now, however long ago the last report was.
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

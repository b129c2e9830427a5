// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/RadioString.h"
#include "platform/replay/RecordingOptions.h"
#include "platform/replay/RecordingReader.h"
#include "platform/replay/ReplayFailure.h"
#include "platform/timeline/TimelinePlatform.h"

#include <memory>
#include <optional>
#include <string>

namespace nearcast::replay {

/// What a radio string `replay:FILE?speed=...&as=...&services=...` asks for.
struct ReplayOptions {
    std::string path;
    std::optional<double> speed;  ///< times real time; nothing: as fast as it goes
    RecordingOptions recording;

    /// @throws std::invalid_argument for an option's value that is not understood
    static ReplayOptions parse(const RadioString& radio);
};

/// The platform of the radio `replay`.
class ReplayPlatform : public TimelinePlatform {
public:
    /// Opens the recording.
    /// @param console lives longer than the platform
    /// @param JSON    lives longer than the platform
    /// @param pace    as `options.speed` says; none: time passes as fast as it goes
    /// @throws what `openRecording` throws
    ReplayPlatform(Console& console, const NSJSONSerialization& JSON, std::unique_ptr<Pace> pace,
                   ReplayOptions options);

    /// Opens the radio; not while the timeline is driven. It is destroyed before the platform.
    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override;
    [[nodiscard]] std::string failure() const override { return failure_->text(); }

private:
    ReplayOptions options_;
    std::unique_ptr<RecordingReader> reader_;  // until the radio is opened
    std::shared_ptr<ReplayFailure> failure_ = std::make_shared<ReplayFailure>();
};

}  // namespace nearcast::replay

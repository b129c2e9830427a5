// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/RadioString.h"
#include "platform/replay/RecordingReader.h"

namespace nearcast::replay {

/// What is done to each report of a recording that was made without our dongles, so that it can be played to the
/// manager all the same.
struct RecordingOptions {
    bool anyService = false;  ///< `services=any`: every report carries the dongle service
    bool asDongles = false;   ///< `as=dongles`: every sender plays a dongle with its own address

    /// The options `services` and `as` of a radio string.
    /// @throws std::invalid_argument for any other value
    static RecordingOptions parse(const RadioString& radio);

    /// Changes the report as the options say. A report whose sender is not known plays no dongle.
    void apply(RecordedReport& report) const;
};

}  // namespace nearcast::replay

// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/ReplayPlatform.h"

#include "platform/replay/ReplayRadio.h"
#include "platform/timeline/Speed.h"

#include <utility>

namespace nearcast::replay {

ReplayOptions ReplayOptions::parse(const RadioString& radio) {
    return {.path = radio.argument, .speed = parseSpeed(radio), .recording = RecordingOptions::parse(radio)};
}

ReplayPlatform::ReplayPlatform(Console& console, const NSJSONSerialization& JSON, std::unique_ptr<Pace> pace,
                               ReplayOptions options)
    : TimelinePlatform(console, JSON, std::move(pace)),
      options_(std::move(options)),
      reader_(openRecording(options_.path)) {}

std::unique_ptr<CBCentralManager> ReplayPlatform::centralManager(CBCentralManagerDelegate& delegate) {
    auto reader = reader_ ? std::move(reader_) : openRecording(options_.path);
    return std::make_unique<ReplayRadio>(delegate, *this, monitor(), timeline(),
                                         Recording{options_.path, std::move(reader), options_.recording}, failure_);
}

}  // namespace nearcast::replay

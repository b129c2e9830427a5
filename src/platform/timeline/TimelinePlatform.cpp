// SPDX-License-Identifier: Apache-2.0
#include "platform/timeline/TimelinePlatform.h"

#include <utility>

namespace nearcast {

TimelinePlatform::TimelinePlatform(Console& console, const NSJSONSerialization& JSON, std::unique_ptr<Pace> pace)
    : console_(console),
      JSON_(JSON),
      monitor_(console, [this] { return date(); }),
      timeline_(std::make_shared<Timeline>(console, std::move(pace))) {}

std::shared_ptr<NSTimer> TimelinePlatform::scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) {
    return timeline_->scheduledTimer(interval, std::move(handler));
}

void TimelinePlatform::NSLog(std::string_view line) noexcept { console_.NSLog(line); }

NSDate TimelinePlatform::date() const { return NSDate(timeline_->now()); }

void TimelinePlatform::usleep(std::chrono::microseconds duration) { timeline_->sleep(duration); }

const NSJSONSerialization& TimelinePlatform::JSON() const { return JSON_; }

}  // namespace nearcast

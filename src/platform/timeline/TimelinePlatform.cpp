// SPDX-License-Identifier: Apache-2.0
#include "platform/timeline/TimelinePlatform.h"

#include <charconv>
#include <cmath>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace nearcast {

std::optional<double> parseSpeed(const RadioString& radio) {
    const std::string_view text = radio.option("speed", "1");
    if (text == "max") return std::nullopt;
    double speed = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, speed);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(speed) || speed <= 0) {
        throw std::invalid_argument("radio '" + radio.text + "': speed '" + std::string(text) +
                                    "' is neither 'max' nor a number above 0");
    }
    return speed;
}

TimelinePlatform::TimelinePlatform(Console& console, const NSJSONSerialization& JSON, std::unique_ptr<Pace> pace)
    : console_(console),
      JSON_(JSON),
      monitor_(console, [this] { return date(); }),
      timeline_(std::make_shared<Timeline>(console, std::move(pace))) {}

std::shared_ptr<NSTimer> TimelinePlatform::scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) {
    return timeline_->scheduledTimer(interval, std::move(handler));
}

std::shared_ptr<NSTimer> TimelinePlatform::scheduledIdlingTimer(std::chrono::nanoseconds interval,
                                                                NSTimer::Handler handler, const Idle& idle) {
    return timeline_->scheduledIdlingTimer(interval, std::move(handler), idle);
}

void TimelinePlatform::NSLog(std::string_view line) noexcept { console_.NSLog(line); }

NSDate TimelinePlatform::date() const { return NSDate(timeline_->now()); }

void TimelinePlatform::usleep(std::chrono::microseconds duration) { timeline_->sleep(duration); }

bool TimelinePlatform::canSleep() const { return timeline_->canSleep(); }

const NSJSONSerialization& TimelinePlatform::JSON() const { return JSON_; }

bool TimelineDrive::runFor(std::chrono::microseconds duration) {
    Timeline& timeline = platform_.timeline();
    if (timeline.runUntil(timeline.now() + duration) == Timeline::End::exhausted) exhausted_ = true;
    return !exhausted_ && timeline.now() < Timeline::forever;
}

}  // namespace nearcast

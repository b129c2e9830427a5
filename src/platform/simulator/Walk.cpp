// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/Walk.h"

#include "platform/simulator/Geometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace nearcast::simulator {

namespace {

double facingAt(const Waypoint& waypoint, double otherwise) {
    return waypoint.facing ? *waypoint.facing * std::numbers::pi / 180 : otherwise;
}

}  // namespace

Walk::Walk(const User& user) : loop_(user.loop) {
    double arrived = arrivalAtFirst(user);
    const std::size_t count = user.path.size();
    const std::size_t legs = user.loop ? count : count - 1;
    for (std::size_t index = 0; index < count; ++index) {
        const Waypoint& here = user.path[index];
        const double facing = facingAt(here, arrived);
        add(here.at, here.at, here.pause, facing);
        end_ = {here.at, facing};
        if (index == legs) break;
        const Place& next = user.path[(index + 1) % count].at;
        const double length = distance(here.at, next);
        arrived = length > 0 ? direction(here.at, next) : facing;
        add(here.at, next, length / user.speed, arrived);
    }
}

double Walk::arrivalAtFirst(const User& user) {
    const Place& first = user.path.front().at;
    const auto elsewhere = [&](const Waypoint& waypoint) { return waypoint.at != first; };
    if (user.loop) {
        const auto last = std::find_if(user.path.rbegin(), user.path.rend(), elsewhere);
        return last == user.path.rend() ? 0 : direction(last->at, first);
    }
    const auto next = std::find_if(user.path.begin(), user.path.end(), elsewhere);
    return next == user.path.end() ? 0 : direction(first, next->at);
}

void Walk::add(const Place& from, const Place& to, double duration, double facing) {
    if (duration <= 0) return;
    stages_.push_back({period_, duration, from, to, facing});
    period_ += duration;
}

Stance Walk::at(double seconds) const {
    if (stages_.empty() || (!loop_ && seconds >= period_)) return end_;
    const double within = loop_ ? std::fmod(seconds, period_) : seconds;
    const auto later = std::upper_bound(stages_.begin(), stages_.end(), within,
                                        [](double time, const Stage& stage) { return time < stage.begin; });
    const Stage& stage = later == stages_.begin() ? stages_.front() : *std::prev(later);
    const double part = std::clamp((within - stage.begin) / stage.duration, 0.0, 1.0);
    return {between(stage.from, stage.to, part), stage.facing};
}

std::optional<Nearest> nearestDongle(const Scene& scene, const Walk& walk, double seconds) {
    const Place user = walk.at(seconds).at;
    std::optional<Nearest> result;
    for (std::size_t index = 0; index < scene.dongles.size(); ++index) {
        const double metres = distance(user, scene.dongles[index].at);
        if (!result) {
            result = Nearest{index, metres, std::nullopt, 0};
        } else if (metres < result->distance) {
            result = Nearest{index, metres, result->dongle, result->distance};
        } else if (!result->second || metres < result->secondDistance) {
            result->second = index;
            result->secondDistance = metres;
        }
    }
    return result;
}

}  // namespace nearcast::simulator

// SPDX-License-Identifier: Apache-2.0
#include "doubles/ModelWorld.h"

#include "doubles/StrictJSON.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <utility>

namespace nearcast::doubles {

ModelWorld::ModelWorld(const std::vector<std::string>& lines, std::function<void(const Json& line)> perform)
    : perform_(std::move(perform)) {
    std::int64_t at = 0;
    for (const std::string& text : lines) {
        Json fields = readStrictJSON(text).value();
        if (fields.contains("at") && !fields["at"].is_null()) at = std::llround(fields["at"].get<double>() * 1e6);
        lines_.push_back({at, std::move(fields)});
    }
}

std::vector<ModelWorld::Timer>::iterator ModelWorld::nextTimer() {
    return std::min_element(timers_.begin(), timers_.end(), [](const Timer& left, const Timer& right) {
        return std::tie(left.due, left.number) < std::tie(right.due, right.number);
    });
}

bool ModelWorld::nextThing(std::int64_t limit) {
    const bool more = nextLine_ < lines_.size();
    const std::int64_t lineTime = more ? std::max(lines_[nextLine_].at, now_) : limit;
    if (const auto timer = nextTimer(); timer != timers_.end() && timer->due <= std::min(lineTime, limit)) {
        now_ = std::max(now_, timer->due);
        timer->due += timer->period;
        const auto handler = timer->handler;
        handler();
        return true;
    }
    if (!more || lineTime > limit) return false;
    now_ = lineTime;
    const Json fields = lines_[nextLine_++].fields;
    perform_(fields);
    return true;
}

void ModelWorld::runAllLines() {
    while (nextLine_ < lines_.size()) nextThing(std::numeric_limits<std::int64_t>::max());
}

void ModelWorld::sleep(std::int64_t microseconds) {
    const std::int64_t end = now_ + microseconds;
    while (nextThing(end)) {
    }
    now_ = std::max(now_, end);
}

int ModelWorld::startTimer(std::int64_t period, std::function<void()> handler) {
    timers_.push_back({timersMade_, now_ + period, period, std::move(handler)});
    return timersMade_++;
}

void ModelWorld::cancel(int timer) {
    std::erase_if(timers_, [&](const Timer& each) { return each.number == timer; });
}

void ModelWorld::show(std::string_view event, Json members) {
    members["at"] = static_cast<double>(now_) / 1e6;
    members["event"] = event;
    events_.push_back(std::move(members));
}

}  // namespace nearcast::doubles

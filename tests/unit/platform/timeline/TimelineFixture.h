// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/KeptLines.h"
#include "platform/timeline/Timeline.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nearcast {

using namespace std::chrono_literals;

/// Things to happen, in order.
class Happenings : public TimelineSource {
public:
    using Time = std::chrono::microseconds;

    void add(Time at, std::function<void()> what) { waiting_.emplace_back(at, std::move(what)); }

    std::optional<Time> due() override {
        if (waiting_.empty()) return std::nullopt;
        return waiting_.front().first;
    }
    void happen() override {
        const auto what = std::move(waiting_.front().second);
        waiting_.pop_front();
        what();
    }

private:
    std::deque<std::pair<Time, std::function<void()>>> waiting_;
};

/// A timeline that the test drives, and what happened on it in words: "5 name" at 5 microseconds.
class TimelineTest : public testing::Test {
protected:
    using Words = std::vector<std::string>;

    void note(const std::string& name) { words.push_back(std::to_string(timeline->now().count()) + " " + name); }
    std::shared_ptr<NSTimer> timer(const std::string& name, std::chrono::nanoseconds interval) {
        return timeline->scheduledTimer(interval, [this, name](NSTimer&) { note(name); });
    }
    void happening(const std::string& name, Timeline::Time at) {
        happenings.add(at, [this, name] { note(name); });
    }

    KeptLines console;
    Happenings happenings;
    std::shared_ptr<Timeline> timeline = std::make_shared<Timeline>(console);
    Words words;
};

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/FakeBluez.h"
#include "doubles/FakeMgmt.h"
#include "platform/bluez/BluezSession.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::bluez {

/// Switches that say what they are told to.
class FakeRfkill : public Rfkill {
public:
    [[nodiscard]] Block blockOf(std::string_view /*adapter*/) const override { return block; }
    Block block = Block::none;
};

/// A session with a `FakeBluez`, both in one time that moves when told to, and what the session tells.
class BluezBench : public SessionListener {
public:
    /// @param adapter as the session takes it
    explicit BluezBench(std::string adapter = {}) : session(bluez, rfkill, mgmt, *this, std::move(adapter)) {}

    void pass(Time duration) {
        const Time target = now_ + duration;
        for (int turns = 0; next() <= target; ++turns) {
            if (turns > 1'000'000) throw std::runtime_error("the session asks for more and more turns");
            turn(std::max(now_, next()));
        }
        turn(target);
    }
    void settle() { pass(std::chrono::seconds(1)); }
    /// Reports while so much time passes.
    int reportsIn(Time duration) {
        const int before = reports;
        pass(duration);
        return reports - before;
    }
    [[nodiscard]] Time now() const noexcept { return now_; }

    void deliver(const AdvertisingReport& report) override {
        ++reports;
        last = report;
    }
    void conditionChanged(const RadioCondition& condition) override { conditions.push_back(condition); }
    void scanRestarted() override { ++restarts; }
    void forged() override { ++forgeries; }

    FakeBluez bluez;
    FakeRfkill rfkill;
    FakeMgmt mgmt{bluez};
    int reports = 0;
    int restarts = 0;
    int forgeries = 0;
    AdvertisingReport last;
    std::vector<RadioCondition> conditions;
    BluezSession session;

private:
    [[nodiscard]] Time next() const {
        return std::min(bluez.due().value_or(Time::max()), session.due().value_or(Time::max()));
    }
    void turn(Time time) {
        now_ = time;
        session.pass(time);
        bluez.runUntil(time);
        while (mgmt.readable()) session.pass(time);
    }

    Time now_{0};
};

}  // namespace nearcast::bluez

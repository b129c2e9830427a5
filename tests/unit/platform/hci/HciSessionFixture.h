// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/hci/FakeHci.h"
#include "platform/hci/HciSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace nearcast::hci {

/// A session on a machine with a controller, on a clock that moves when told to.
class HciSessionFixture : public testing::Test, protected SessionListener {
protected:
    explicit HciSessionFixture(HciAccess access = HciAccess::alone) : HciSessionFixture(HciTarget{.access = access}) {}
    explicit HciSessionFixture(const HciTarget& target)
        : port_(machine.port()), service_(machine.service()), session(*port_, target, *this, service_.get()) {}

    /// Runs the session as its thread would, as long as there is something to do at this moment.
    void settle() {
        for (int runs = 0; runs < mostRuns; ++runs) {
            session.want(wanted);
            session.pass(now);
            if (!machine.waits() && session.due() > now) return;
        }
        ADD_FAILURE() << "the session does not come to rest";
    }
    void pass(Time duration) {
        const Time target = now + duration;
        while (now < target) {
            now = std::clamp(*session.due(), now, target);
            settle();
        }
    }
    void scan(bool wish = true) {
        wanted = wish;
        settle();
    }
    void advertise(const LegacyReport& report = {}) {
        machine.advertise(report);
        settle();
    }
    /// Ten reports a second.
    void advertiseFor(Time duration) {
        for (Time passed{0}; passed < duration; passed += std::chrono::milliseconds(100)) {
            pass(std::chrono::milliseconds(100));
            advertise();
        }
    }
    [[nodiscard]] CBManagerState state() const { return session.state(); }
    [[nodiscard]] const std::string& why() const { return session.why(); }
    [[nodiscard]] bool says(const char* words) const { return why().find(words) != std::string::npos; }

    FakeHci machine;

private:
    static constexpr int mostRuns = 1000;

    void conditionChanged(const RadioCondition& condition) override { conditions.push_back(condition); }
    void scanRestarted() override { ++restarts; }
    void deliver(const AdvertisingReport& report) override { reports.push_back(report); }

    const std::unique_ptr<HciPort> port_;
    const std::unique_ptr<AdapterService> service_;

protected:
    HciSession session;
    Time now = std::chrono::seconds(1000);
    bool wanted = false;
    std::vector<RadioCondition> conditions;
    std::vector<AdvertisingReport> reports;
    int restarts = 0;
};

}  // namespace nearcast::hci

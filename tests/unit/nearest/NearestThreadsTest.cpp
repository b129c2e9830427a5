// SPDX-License-Identifier: Apache-2.0
#include "DecisionBench.h"

#include <nearcast/Nearest.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace nearcast {

namespace {

using nearest::barMAC;
using nearest::recordOf;
using nearest::tillMAC;

/// The time of all threads: each look moves it on by a millisecond.
struct SharedClock {
    std::atomic<std::int64_t> milliseconds{0};
    double operator()() { return static_cast<double>(milliseconds.fetch_add(1)) / 1000; }
};

class NearestThreadsTest : public testing::Test {
protected:
    Nearest::Sources sources() {
        auto registry =
            std::make_shared<const Settings>(Settings{{"Bar", recordOf(barMAC)}, {"Till", recordOf(tillMAC)}});
        return {
            [registry] { return registry; }, [this] { return (*clock)(); },
            [] { return RadioHealth{.state = CBManagerStatePoweredOn, .since = 0, .why = {}, .lastReportAge = {}}; }};
    }
    static NearestSettings quick() {
        NearestSettings settings;
        settings.dwell = 0.01;
        settings.patience = 0.01;
        return settings;
    }
    static void together(std::vector<std::function<void(int)>> tasks) {
        std::vector<std::thread> threads;
        for (auto& task : tasks) {
            threads.emplace_back([task = std::move(task)] {
                for (int i = 0; i < 2000; ++i) task(i);
            });
        }
        for (auto& thread : threads) thread.join();
    }

    std::shared_ptr<SharedClock> clock = std::make_shared<SharedClock>();
};

TEST_F(NearestThreadsTest, TellsChangesOneAtATimeAndInOrderWhicheverThreadBringsThemAbout) {
    std::atomic<int> inside{0};
    std::vector<NearestChange> changes;  // guarded by being told one at a time, which is what is tried
    bool overlapped = false;
    Nearest nearest(
        sources(),
        [&](const NearestChange& change) {
            if (inside.fetch_add(1) != 0) overlapped = true;
            changes.push_back(change);
            inside.fetch_sub(1);
        },
        quick());
    const auto report = [&](const char* port, const char* MACAddr, int i) {
        nearest.didDiscoverPort(port, QXDeviceTypeUnknown, MACAddr, i / 100 % 2 == 0 ? -50 : -80);
    };
    together({[&](int i) { report("Bar", barMAC, i); }, [&](int i) { report("Till", tillMAC, i + 100); },
              [&](int) { nearest.update(); }});
    EXPECT_FALSE(overlapped);
    ASSERT_FALSE(changes.empty());
    for (std::size_t i = 1; i < changes.size(); ++i) {
        EXPECT_EQ(changes[i].before.device.has_value(), changes[i - 1].now.device.has_value());
        EXPECT_EQ(changes[i].before.since, changes[i - 1].now.since);
    }
}

TEST_F(NearestThreadsTest, AnswersFromAnyThreadWhileItHearsAndIsSetUp) {
    std::atomic<int> told{0};
    std::atomic<int> handedOn{0};
    Nearest nearest(
        sources(), [&](const NearestChange&) { ++told; }, quick());
    constexpr std::array<std::uint8_t, 8> payload = {0xFF, 0xFF, 2, 0, 0, 0, 0, 0x0A};
    const auto tap = nearest.tap();
    together({[&](int) {
                  tap({{}, payload, -50, true, (*clock)()});
              },
              [&](int) {
                  auto next = std::make_shared<QXNearcastManagerDelegate>();
                  next->didDiscoverPort = [&](auto, auto, auto, auto) { ++handedOn; };
                  nearest.setNext(std::move(next));
                  nearest.didDiscoverPort("Bar", QXDeviceTypeUnknown, barMAC, -50);
              },
              [&](int i) {
                  if (i % 100 == 0) nearest.refresh();
                  EXPECT_LE(nearest.explain().size(), 2U);
                  EXPECT_NE(nearest.choice().text(), "");
              }});
    EXPECT_EQ(handedOn, 2000);
    EXPECT_GE(told, 1);
}

}  // namespace

}  // namespace nearcast

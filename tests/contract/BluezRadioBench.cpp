// SPDX-License-Identifier: Apache-2.0
#include "contract/RadioBench.h"
#include "doubles/BluezBench.h"
#include "platform/bluez/BluezRadio.h"

namespace nearcast::contract {

namespace {

using namespace std::chrono_literals;

/// bluetoothd has had this time to settle when the timeline begins.
constexpr auto headStart = 1s;
constexpr auto turnInterval = 10ms;

/// The radio over a bluetoothd of the bench's, both driven by the timeline in short turns.
class BluezPlatform : public TimelinePlatform {
public:
    /// @param latency how long bluetoothd takes to answer
    BluezPlatform(Console& console, const NSJSONSerialization& JSON, Time latency)
        : TimelinePlatform(console, JSON, nullptr), console_(console) {
        bluez_.answerAfter(latency);
        bluez_.place({});
        bluez_.at(headStart + 20s, [this] { bluez_.power("hci0", false); });
        bluez_.at(headStart + 30s, [this] { bluez_.power("hci0", true); });
    }

    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override {
        auto radio =
            std::make_unique<bluez::BluezRadio>(delegate, console_, monitor(), bluez_, rfkill_, mgmt_, "", [] {});
        for (Time time{0}; time < headStart; time += turnInterval) turn(*radio, time);
        turns_ = scheduledTimer(turnInterval,
                                [this, &radio = *radio](NSTimer&) { turn(radio, headStart + date().sinceStart()); });
        return radio;
    }
    void end() { turns_->invalidate(); }

private:
    void turn(bluez::BluezRadio& radio, Time time) {
        radio.pass(time);
        bluez_.runUntil(time);
    }

    Console& console_;
    bluez::FakeBluez bluez_;
    bluez::FakeRfkill rfkill_;
    bluez::FakeMgmt mgmt_{bluez_};
    std::shared_ptr<NSTimer> turns_;
};

class Bench : public RadioBench {
public:
    explicit Bench(Time latency) {
        auto platform = std::make_unique<BluezPlatform>(console, JSON, latency);
        radio_ = platform->centralManager(calls);
        platform_ = std::move(platform);
        calls.states.clear();
    }
    ~Bench() override { static_cast<BluezPlatform&>(*platform_).end(); }

    void pass(std::chrono::seconds duration) override {
        Timeline& timeline = platform_->timeline();
        const auto target = timeline.now() + duration;
        while (timeline.runUntil(target) != Timeline::End::reached) {
        }
    }
};

}  // namespace

std::unique_ptr<RadioBench> bluezBench() { return std::make_unique<Bench>(bluez::FakeBluez::latency); }
std::unique_ptr<RadioBench> lateBluezBench() { return std::make_unique<Bench>(150ms); }

}  // namespace nearcast::contract

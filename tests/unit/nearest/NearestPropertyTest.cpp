// SPDX-License-Identifier: Apache-2.0
#include "DecisionBench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <string>

namespace nearcast::nearest {

namespace {

/// Random happenings, and what has to hold after each.
class AnyHappenings {
public:
    explicit AnyHappenings(std::uint32_t seed) : random_(seed), settings_(anySettings()), decision_(settings_) {
        decision_.setRegistry(0, anyRegistry());
    }

    void happen() {
        at_ += anyStep();
        const std::string& MACAddr = addresses()[number(addresses().size())];
        switch (number(40)) {
            case 0: decision_.setRegistry(at_, anyRegistry()); break;
            case 1: toggleRadio(); break;
            case 2:
            case 3: break;
            case 4:
            case 5:
            case 6: reported(MACAddr); break;
            default: heard(MACAddr);
        }
        noteLoss();
        decision_.pass(at_);
        check();
        noteLoss();
    }
    [[nodiscard]] int named() const { return named_; }

private:
    static const std::array<std::string, 4>& addresses() {
        static const std::array<std::string, 4> all = {"02:00:00:00:00:01", "02:00:00:00:00:02", "02:00:00:00:00:03",
                                                       "02:00:00:00:00:04"};
        return all;
    }
    std::size_t number(std::size_t below) { return std::uniform_int_distribution<std::size_t>(0, below - 1)(random_); }
    double real(double least, double most) { return std::uniform_real_distribution<double>(least, most)(random_); }
    double anyStep() { return number(20) == 0 ? real(0, 8) : real(0, 0.3); }

    NearestSettings anySettings() {
        NearestSettings settings;
        settings.defaultThreshold = real(-100, -60);
        settings.hysteresis = real(0, 10);
        settings.dwell = number(3) == 0 ? 0 : real(0, 6);
        settings.margin = real(0, 5);
        settings.patience = number(3) == 0 ? 0 : real(0, 20);
        settings.contrast = real(1, 30);
        settings.attack = real(0.1, 1);
        settings.decay = real(0.1, 5);
        settings.silence = real(0.5, 6);
        settings.staleFor = real(0, 10);
        return settings;
    }
    Settings anyRegistry() {
        Settings registry;
        for (const std::string& MACAddr : addresses()) {
            if (number(8) == 0) continue;
            const bool measured = number(2) == 0;
            registry.emplace("Port " + MACAddr,
                             recordOf(MACAddr, measured ? std::optional<std::int32_t>(-75) : std::nullopt));
        }
        known_ = registry;
        return registry;
    }
    void toggleRadio() {
        hears_ = !hears_;
        radioSince_ = at_;
        decision_.setRadio(at_, hears_, at_);
    }
    void heard(const std::string& MACAddr) {
        decision_.heard(at_, MACAddr, static_cast<std::int32_t>(real(-95, -40)));
        heardAt_[MACAddr] = at_;
    }
    void reported(const std::string& MACAddr) {
        if (decision_.reported(at_, "Port " + MACAddr, MACAddr, static_cast<std::int32_t>(real(-95, -40)))) {
            heardAt_[MACAddr] = at_;
        }
    }

    void check() {
        const Device* chosen = decision_.chosen();
        const std::string port = chosen == nullptr ? "" : chosen->portName;
        if (chosen != nullptr) checkHeard(*chosen);
        if (port != lastNamed_ && !port.empty()) checkDwell(port);
    }
    /// A device that is named is registered, and was heard a short time ago or is marked as stale.
    void checkHeard(const Device& chosen) {
        EXPECT_TRUE(known_.contains(chosen.portName));
        if (decision_.stale()) {
            // The time that the radio was blind, or the time of silence after it hears again.
            EXPECT_LT(at_ - radioSince_, hears_ ? settings_.silence : settings_.staleFor);
        } else {
            EXPECT_LT(at_ - heardAt_.at(chosen.MACAddr), settings_.silence);
        }
    }
    /// From one device to another it takes the dwell time, unless the first cannot be kept.
    void checkDwell(const std::string& port) {
        noteLoss();
        if (!lastNamed_.empty() && !lost_) {
            EXPECT_GE(at_ - namedAt_, settings_.dwell);
        }
        ++named_;
        lastNamed_ = port;
        namedAt_ = at_;
        lost_ = false;
    }

    /// Whether the device named last could not be kept.
    void noteLoss() {
        const auto choice = decision_.choice();
        if (choice.since == lookedAt_) return;
        lookedAt_ = choice.since;
        const auto rule = choice.rule;
        lost_ = lost_ || rule == NearestRule::silent || rule == NearestRule::removed || rule == NearestRule::blind;
    }

    std::mt19937 random_;
    NearestSettings settings_;
    Settings known_;
    Decision decision_;
    double at_ = 0;
    bool hears_ = true;
    double radioSince_ = -1e9;
    std::map<std::string, double> heardAt_;
    std::string lastNamed_;  ///< the last one that was not none
    double lookedAt_ = -1;   ///< since when the choice was that was looked at last
    double namedAt_ = 0;
    bool lost_ = false;
    int named_ = 0;
};

TEST(NearestPropertyTest, NeverSwitchesFasterThanTheDwellTimeNorNamesASilentDevice) {
    int named = 0;
    for (std::uint32_t seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        AnyHappenings happenings(seed);
        for (int i = 0; i < 500; ++i) happenings.happen();
        named += happenings.named();
        if (HasFailure()) return;
    }
    // Otherwise nothing would have been tried.
    EXPECT_GT(named, 3000);
}

}  // namespace

}  // namespace nearcast::nearest

// SPDX-License-Identifier: Apache-2.0
#include "nearest/evaluation/Thresholds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <set>

namespace nearcast::nearest {

namespace {

using Sample = Standing::Sample;

// What an RSSI can be; a level between two whole numbers is not yet at the upper one.
constexpr std::int32_t weakest = -127;
constexpr std::int32_t strongest = 20;

double levelOf(const Sample& sample, std::size_t device) {
    return device < sample.levels.size() ? sample.levels[device] : Standing::unheard;
}

/// How often levels were how high, on the two sides that a threshold is to separate.
class Sides {
public:
    void add(bool atDevice, double level) {
        auto& side = atDevice ? at_ : elsewhere_;
        ++side.total;
        if (level == Standing::unheard) {
            ++side.counts[0];
            return;
        }
        const double whole = std::clamp(std::floor(level), 0.0 + weakest, 0.0 + strongest);
        const auto decibels = static_cast<std::int32_t>(whole);
        ++side.counts[static_cast<std::size_t>(decibels - weakest + 1)];
        weakestSeen_ = std::min(weakestSeen_, decibels);
        strongestSeen_ = std::max(strongestSeen_, decibels);
    }

    /// The threshold with the smallest error, of whole decibels; one that no level reaches where there is none. Nothing
    /// where a side is empty.
    [[nodiscard]] std::optional<double> best() const {
        if (at_.total == 0 || elsewhere_.total == 0) return std::nullopt;
        if (weakestSeen_ > strongestSeen_) return std::numeric_limits<double>::infinity();
        Run best;
        Run run;
        for (std::int32_t threshold = weakestSeen_ - beyond; threshold <= strongestSeen_ + 1; ++threshold) {
            const double error = errorOf(threshold);
            run = error == run.error ? Run{error, run.first, threshold} : Run{error, threshold, threshold};
            if (run.error < best.error || (run.error == best.error && run.length() > best.length())) best = run;
        }
        return best.first + (best.last - best.first) / 2;
    }

private:
    /// Neighbouring thresholds with one error.
    struct Run {
        double error = 2;  // which none is as large as
        std::int32_t first = 0;
        std::int32_t last = -1;
        [[nodiscard]] std::int32_t length() const { return last - first + 1; }
    };
    struct Side {
        std::array<std::size_t, strongest - weakest + 2> counts{};  ///< the first one: unheard
        std::size_t total = 0;
    };
    // How far below the weakest level that was seen a threshold may be, in dB.
    static constexpr std::int32_t beyond = 10;

    [[nodiscard]] double errorOf(std::int32_t threshold) const {
        const std::int32_t place = std::clamp(threshold - weakest + 1, 0, strongest - weakest + 2);
        const auto below = [place](const Side& side) {
            const auto count = std::accumulate(side.counts.begin(), side.counts.begin() + place, std::size_t{0});
            return static_cast<double>(count) / static_cast<double>(side.total);
        };
        return below(at_) + 1 - below(elsewhere_);
    }

    Side at_;
    Side elsewhere_;
    std::int32_t weakestSeen_ = strongest + 1;
    std::int32_t strongestSeen_ = weakest - 1;
};

/// Counts time on one side of a device, and that on the wrong side of its threshold.
struct Tally {
    std::size_t total = 0;
    std::size_t wrong = 0;

    void add(bool isWrong) {
        ++total;
        wrong += isWrong ? 1 : 0;
    }
    [[nodiscard]] double share() const {
        return total == 0 ? 0 : static_cast<double>(wrong) / static_cast<double>(total);
    }
};

/// Finds the advice for one device.
class Adviser {
public:
    Adviser(const Standing& standing, std::size_t device) : standing_(standing), device_(device) {}

    ThresholdAdvice advise() {
        ThresholdAdvice advice;
        advice.MACAddr = standing_.devices()[device_];
        std::set<std::size_t> stays;
        for (const Sample& sample : standing_.samples()) {
            if (sample.place == device_) stays.insert(sample.stay);
            advice.elsewhere = advice.elsewhere || sample.place != device_;
        }
        advice.stays = stays.size();
        advice.byHalves = stays.size() < 2;
        const auto threshold = chooseWithout(noPart);
        if (!threshold || std::isinf(*threshold)) return advice;
        advice.threshold = static_cast<std::int32_t>(*threshold);
        validate(advice);
        return advice;
    }

private:
    static constexpr std::size_t noPart = std::numeric_limits<std::size_t>::max();

    /// The part of the time that a sample is judged with: a stay, or the halves of all stays.
    [[nodiscard]] std::size_t partOf(const Sample& sample) const {
        return byHalves_ ? static_cast<std::size_t>(sample.laterHalf) : sample.stay;
    }

    [[nodiscard]] std::optional<double> chooseWithout(std::size_t part) const {
        Sides sides;
        for (const Sample& sample : standing_.samples()) {
            if (part == noPart || partOf(sample) != part) sides.add(sample.place == device_, levelOf(sample, device_));
        }
        return sides.best();
    }

    void validate(ThresholdAdvice& advice) {
        byHalves_ = advice.byHalves;
        Tally at;
        Tally elsewhere;
        std::vector<Tally> places(standing_.devices().size());
        const std::size_t parts = byHalves_ ? 2 : standing_.stays();
        for (std::size_t part = 0; part < parts; ++part) {
            const auto threshold = chooseWithout(part);
            if (!threshold) continue;
            for (const Sample& sample : standing_.samples()) {
                if (partOf(sample) != part) continue;
                const bool inside = levelOf(sample, device_) >= *threshold;
                if (sample.place == device_) {
                    at.add(!inside);
                } else {
                    elsewhere.add(inside);
                    if (sample.place != Standing::nowhere) places[sample.place].add(inside);
                }
            }
        }
        advice.missed = at.share();
        advice.intruding = elsewhere.share();
        const auto worst = std::max_element(places.begin(), places.end(), [](const Tally& left, const Tally& right) {
            return left.share() < right.share();
        });
        if (worst->wrong == 0) return;
        advice.mistakenAt = standing_.devices()[static_cast<std::size_t>(worst - places.begin())];
        advice.intrudingThere = worst->share();
    }

    const Standing& standing_;
    const std::size_t device_;
    bool byHalves_ = false;
};

}  // namespace

std::vector<ThresholdAdvice> adviseThresholds(const Standing& standing) {
    std::vector<ThresholdAdvice> advice;
    for (std::size_t device = 0; device < standing.devices().size(); ++device) {
        advice.push_back(Adviser(standing, device).advise());
    }
    return advice;
}

}  // namespace nearcast::nearest

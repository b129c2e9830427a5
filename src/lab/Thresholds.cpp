// SPDX-License-Identifier: Apache-2.0
#include "lab/Thresholds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <set>

namespace nearcast::lab {

std::vector<Stay> staysOf(const lines::Truth& truth, double end) {
    const lines::Truth changes = lines::changesOf(truth);
    std::vector<Stay> stays;
    for (std::size_t place = 0; place < changes.size(); ++place) {
        const double to = place + 1 < changes.size() ? changes[place + 1].at : end;
        const double from = changes[place].at + settlingTime;
        if (to - from >= shortestStay) stays.push_back({from, to, changes[place].MACAddr});
    }
    return stays;
}

std::size_t Standing::placeOf(std::string_view MACAddr) {
    const auto known = places_.find(MACAddr);
    if (known != places_.end()) return known->second;
    devices_.emplace_back(MACAddr);
    heard_.emplace_back();
    places_.emplace(MACAddr, devices_.size() - 1);
    return devices_.size() - 1;
}

void Standing::begin(const Stay& stay) {
    ++stays_;
    stay_ = stay;
}

void Standing::take(const Samples& samples, const std::map<std::string, double, std::less<>>& levels) {
    const std::uint64_t earlier = samples.countBefore((stay_.from + stay_.to) / 2);
    if (earlier != 0) add(earlier, false, levels);
    if (earlier != samples.count) add(samples.count - earlier, true, levels);
}

void Standing::add(std::uint64_t count, bool laterHalf, const std::map<std::string, double, std::less<>>& levels) {
    for (const auto& [MACAddr, level] : levels) heard_[placeOf(MACAddr)].push_back({samples_.size(), level});
    const std::size_t place = stay_.MACAddr.empty() ? nowhere : placeOf(stay_.MACAddr);
    samples_.push_back({stays_ - 1, laterHalf, place, count});
}

std::vector<double> Standing::levelsOf(std::size_t device) const {
    std::vector<double> levels(samples_.size(), unheard);
    for (const Heard& one : heard_[device]) levels[one.sample] = one.level;
    return levels;
}

namespace {

using Sample = Standing::Sample;

// What an RSSI can be; a level between two whole numbers is not yet at the upper one.
constexpr std::int32_t weakest = -127;
constexpr std::int32_t strongest = 20;

constexpr std::size_t steps = strongest - weakest + 1;

/// How often levels were how high, on the two sides that a threshold is to separate.
class Sides {
public:
    void add(bool atDevice, double level, std::uint64_t count) {
        auto& side = atDevice ? at_ : elsewhere_;
        side.total += count;
        if (level == Standing::unheard) return;
        const double whole = std::clamp(std::floor(level), 0.0 + weakest, 0.0 + strongest);
        side.counts[static_cast<std::size_t>(whole - weakest)] += count;
    }

    /// These without some of them.
    [[nodiscard]] Sides without(const Sides& some) const {
        Sides rest;
        rest.at_ = without(at_, some.at_);
        rest.elsewhere_ = without(elsewhere_, some.elsewhere_);
        return rest;
    }

    /// The threshold with the smallest error, of whole decibels; one that no level reaches where there is none. Nothing
    /// where a side is empty.
    [[nodiscard]] std::optional<double> best() const {
        if (at_.total == 0 || elsewhere_.total == 0) return std::nullopt;
        std::size_t first = 0;
        while (first < steps && at_.counts[first] + elsewhere_.counts[first] == 0) ++first;
        if (first == steps) return std::numeric_limits<double>::infinity();
        std::size_t last = steps - 1;
        while (at_.counts[last] + elsewhere_.counts[last] == 0) --last;
        return best(static_cast<std::int32_t>(first) + weakest - beyond, static_cast<std::int32_t>(last) + weakest + 1);
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
        std::array<std::uint64_t, steps> counts{};  ///< of levels, from the weakest on
        std::uint64_t total = 0;                    ///< with those that were unheard
    };
    // How far below the weakest level that was seen a threshold may be, in dB.
    static constexpr std::int32_t beyond = 10;

    static Side without(const Side& side, const Side& some) {
        Side rest = side;
        rest.total -= some.total;
        for (std::size_t step = 0; step < steps; ++step) rest.counts[step] -= some.counts[step];
        return rest;
    }

    /// The middle of the longest run with the smallest error; of several the lowest.
    [[nodiscard]] double best(std::int32_t from, std::int32_t to) const {
        const auto inside = [](const Side& side) {
            return std::accumulate(side.counts.begin(), side.counts.end(), std::uint64_t{0});
        };
        std::uint64_t atInside = inside(at_);
        std::uint64_t elsewhereInside = inside(elsewhere_);
        Run best;
        Run run;
        for (std::int32_t threshold = from; threshold <= to; ++threshold) {
            const double error = share(at_.total - atInside, at_.total) + share(elsewhereInside, elsewhere_.total);
            run = error == run.error ? Run{error, run.first, threshold} : Run{error, threshold, threshold};
            if (run.error < best.error || (run.error == best.error && run.length() > best.length())) best = run;
            if (threshold < weakest || threshold > strongest) continue;
            const auto step = static_cast<std::size_t>(threshold - weakest);
            atInside -= at_.counts[step];
            elsewhereInside -= elsewhere_.counts[step];
        }
        const std::int32_t middle = best.first + (best.last - best.first) / 2;
        return middle;
    }

    static double share(std::uint64_t part, std::uint64_t whole) {
        return static_cast<double>(part) / static_cast<double>(whole);
    }

    Side at_;
    Side elsewhere_;
};

/// Counts time on one side of a device, and that on the wrong side of its threshold.
struct Tally {
    std::uint64_t total = 0;
    std::uint64_t wrong = 0;

    void add(bool isWrong, std::uint64_t count) {
        total += count;
        wrong += isWrong ? count : 0;
    }
    [[nodiscard]] double share() const {
        return total == 0 ? 0 : static_cast<double>(wrong) / static_cast<double>(total);
    }
};

/// Finds the advice for one device.
class Adviser {
public:
    Adviser(const Standing& standing, std::size_t device)
        : standing_(standing), device_(device), levels_(standing.levelsOf(device)) {}

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
        Indices all(levels_.size());
        std::iota(all.begin(), all.end(), std::size_t{0});
        const Sides sides = sidesOf(all);
        const auto threshold = sides.best();
        if (!threshold || std::isinf(*threshold)) return advice;
        advice.threshold = static_cast<std::int32_t>(*threshold);
        validate(sides, advice);
        return advice;
    }

private:
    using Indices = std::vector<std::size_t>;  ///< of samples

    [[nodiscard]] Sides sidesOf(const Indices& indices) const {
        Sides sides;
        for (const std::size_t index : indices) sides.add(isAt(index), levels_[index], sample(index).count);
        return sides;
    }
    [[nodiscard]] const Sample& sample(std::size_t index) const { return standing_.samples()[index]; }
    [[nodiscard]] bool isAt(std::size_t index) const { return sample(index).place == device_; }

    /// The parts of the time that are judged separately: each stay, or the halves of all stays.
    [[nodiscard]] std::vector<Indices> parts(bool byHalves) const {
        std::vector<Indices> parts(byHalves ? 2 : standing_.stays());
        for (std::size_t index = 0; index < levels_.size(); ++index) {
            const Sample& one = sample(index);
            parts[byHalves ? static_cast<std::size_t>(one.laterHalf) : one.stay].push_back(index);
        }
        return parts;
    }

    void validate(const Sides& all, ThresholdAdvice& advice) const {
        Tally at;
        Tally elsewhere;
        std::vector<Tally> places(standing_.devices().size());
        for (const Indices& part : parts(advice.byHalves)) {
            const auto threshold = all.without(sidesOf(part)).best();
            if (!threshold) continue;
            for (const std::size_t index : part) {
                const bool inside = levels_[index] >= *threshold;
                const auto [stay, laterHalf, place, count] = sample(index);
                if (place == device_) {
                    at.add(!inside, count);
                } else {
                    elsewhere.add(inside, count);
                    if (place != Standing::nowhere) places[place].add(inside, count);
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
    const std::vector<double> levels_;  ///< at each sample
};

}  // namespace

std::vector<ThresholdAdvice> adviseThresholds(const Standing& standing) {
    std::vector<ThresholdAdvice> advice;
    for (std::size_t device = 0; device < standing.devices().size(); ++device) {
        advice.push_back(Adviser(standing, device).advise());
    }
    return advice;
}

}  // namespace nearcast::lab

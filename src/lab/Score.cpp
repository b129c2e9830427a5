// SPDX-License-Identifier: Apache-2.0
#include "lab/Score.h"

#include <algorithm>
#include <cmath>

namespace nearcast::lab {

namespace {

/// Walks along answers and truth together.
class Scorer {
public:
    explicit Scorer(const lines::Truth& truth) : changes_(lines::changesOf(truth)) {}

    /// Samples with one answer.
    void take(Samples samples, const std::string& answer) {
        while (samples.count != 0) {
            const bool known = moveTo(samples.from());
            const Samples same{samples.first, samplesWithOneTruth(samples)};
            if (known) judge(same, answer);
            previous_ = answer;
            samples.drop(same.count);
        }
    }

    Score finish() {
        giveUp();
        return score_;
    }

private:
    /// How many of them come before the truth changes again.
    [[nodiscard]] std::uint64_t samplesWithOneTruth(const Samples& samples) const {
        return next_ == changes_.size() ? samples.count : samples.countBefore(changes_[next_].at);
    }
    /// Samples with one answer and one truth.
    void judge(const Samples& samples, const std::string& answer) {
        const bool right = answer == changes_[next_ - 1].MACAddr;
        score_.samples += samples.count;
        score_.right += right ? samples.count : 0;
        if (!answer.empty()) {
            score_.answered += samples.count;
            score_.rightAnswered += right ? samples.count : 0;
            if (!right && answer != previous_) ++score_.wrongSwitches;
        }
        if (right && waiting_) {
            score_.followed.push_back(samples.from() - changes_[next_ - 1].at);
            waiting_ = false;
        }
    }
    /// @return false while the truth is not known yet
    bool moveTo(double at) {
        while (next_ < changes_.size() && changes_[next_].at <= at) {
            giveUp();
            waiting_ = next_ != 0;
            score_.changes += waiting_ ? 1U : 0U;
            ++next_;
        }
        return next_ != 0;
    }
    void giveUp() {
        score_.neverReached += waiting_ ? 1U : 0U;
        waiting_ = false;
    }

    lines::Truth changes_;
    std::size_t next_ = 0;
    bool waiting_ = false;  ///< for a right answer to the last change
    std::string previous_;
    Score score_;
};

std::optional<double> share(std::uint64_t part, std::uint64_t whole) {
    if (whole == 0) return std::nullopt;
    return static_cast<double>(part) / static_cast<double>(whole);
}

}  // namespace

Score scoreOf(const Answers& answers, const lines::Truth& truth) {
    Scorer scorer(truth);
    std::uint64_t first = 0;
    for (const SameAnswer& same : answers) {
        scorer.take({first, same.count}, same.answer);
        first += same.count;
    }
    return scorer.finish();
}

Score& Score::operator+=(const Score& other) {
    samples += other.samples;
    right += other.right;
    answered += other.answered;
    rightAnswered += other.rightAnswered;
    wrongSwitches += other.wrongSwitches;
    changes += other.changes;
    neverReached += other.neverReached;
    followed.insert(followed.end(), other.followed.begin(), other.followed.end());
    return *this;
}

double Score::minutes() const { return static_cast<double>(samples) * sampleInterval / 60; }

std::optional<double> Score::rightOfAll() const { return share(right, samples); }

std::optional<double> Score::rightOfAnswered() const { return share(rightAnswered, answered); }

std::optional<double> Score::wrongSwitchesPerMinute() const {
    if (samples == 0) return std::nullopt;
    return static_cast<double>(wrongSwitches) / minutes();
}

std::optional<double> Score::timeToFollow(double part) const {
    if (followed.empty()) return std::nullopt;
    std::vector<double> sorted = followed;
    std::sort(sorted.begin(), sorted.end());
    const double place = std::clamp(part, 0.0, 1.0) * static_cast<double>(sorted.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const auto above = std::min(below + 1, sorted.size() - 1);
    return sorted[below] + (place - std::floor(place)) * (sorted[above] - sorted[below]);
}

}  // namespace nearcast::lab

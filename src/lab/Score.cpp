// SPDX-License-Identifier: Apache-2.0
#include "lab/Score.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace nearcast::lab {

namespace {

double timeOf(std::size_t sample) { return static_cast<double>(sample) * sampleInterval; }

/// Walks along answers and truth together.
class Scorer {
public:
    explicit Scorer(const lines::Truth& truth) : changes_(lines::changesOf(truth)) {}

    void take(double at, const std::string& answer) {
        if (!moveTo(at)) {
            previous_ = answer;
            return;
        }
        const std::string& truth = changes_[next_ - 1].MACAddr;
        const bool right = answer == truth;
        ++score_.samples;
        score_.right += right ? 1U : 0U;
        if (!answer.empty()) {
            ++score_.answered;
            score_.rightAnswered += right ? 1U : 0U;
            if (!right && answer != previous_) ++score_.wrongSwitches;
        }
        if (right && waiting_) {
            score_.followed.push_back(at - changes_[next_ - 1].at);
            waiting_ = false;
        }
        previous_ = answer;
    }

    Score finish() {
        giveUp();
        return score_;
    }

private:
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
    for (std::size_t sample = 0; sample < answers.size(); ++sample) scorer.take(timeOf(sample), answers[sample]);
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

// SPDX-License-Identifier: Apache-2.0
#include "platform/radio/RadioMonitor.h"

#include "platform/Guarded.h"
#include "support/Holding.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace nearcast {

namespace {

double secondsOf(NSDate::Duration duration) { return std::chrono::duration<double>(duration).count(); }

std::int64_t secondOf(NSDate date) {
    return std::chrono::duration_cast<std::chrono::seconds>(date.sinceStart()).count();
}

template <class Listener>
std::shared_ptr<const Listener> shared(Listener listener) {
    return listener ? std::make_shared<const Listener>(std::move(listener)) : nullptr;
}

}  // namespace

RadioMonitor::RadioMonitor(Console& console, Clock clock) : console_(console), clock_(std::move(clock)) {
    health_.why = "no radio has been opened";
}

RadioHealth RadioMonitor::health() const {
    const MutexLock lock(mutex_);
    const NSDate now = clock_();
    RadioHealth health = health_;
    if (last_) health.lastReportAge = std::max(0.0, secondsOf(now.sinceStart() - last_->sinceStart()));
    health.reportsPerSecond = rate(now);
    return health;
}

void RadioMonitor::setHealthChanged(HealthChanged listener) { healthChanged_.store(shared(std::move(listener))); }

void RadioMonitor::setTap(Tap tap) { tap_.store(shared(std::move(tap))); }

void RadioMonitor::open(CBManagerState state, std::string why) {
    const MutexLock lock(mutex_);
    opened_ = clock_();
    health_ = RadioHealth{
        .state = state, .since = secondsOf(opened_.sinceStart()), .why = std::move(why), .lastReportAge = {}};
    last_.reset();
    counts_.fill(0);
}

void RadioMonitor::noteState(CBManagerState state, std::string why) {
    {
        const MutexLock lock(mutex_);
        if (health_.state == state && health_.why == why) return;
        if (health_.state != state) health_.since = secondsOf(clock_().sinceStart());
        health_.state = state;
        health_.why = std::move(why);
    }
    tell();
}

void RadioMonitor::noteFailure(std::string_view why) noexcept {
    reportRadioFailed(console_, why);
    guarded(console_, "a radio that cannot be opened", [&] {
        {
            const MutexLock lock(mutex_);
            health_.why = std::string("the radio cannot be opened: ").append(why);
            health_.since = secondsOf(clock_().sinceStart());
        }
        Holding::afterwards([this] { tell(); });
    });
}

void RadioMonitor::noteRestart() {
    {
        const MutexLock lock(mutex_);
        ++health_.restarts;
    }
    tell();
}

void RadioMonitor::noteForgery() {
    {
        const MutexLock lock(mutex_);
        if (++health_.forged != 1) return;
    }
    tell();
}

void RadioMonitor::heard(const AdvertisingReport& report, bool wanted) {
    const NSDate now = clock_();
    {
        const MutexLock lock(mutex_);
        last_ = now;
        moveTo(secondOf(now));
        ++counts_[static_cast<std::size_t>(second_) % counts_.size()];
    }
    const auto tap = tap_.load();
    if (tap) guarded(console_, "what the radio hears", [&] { (*tap)(report, now, wanted); });
}

void RadioMonitor::tell() {
    const auto listener = healthChanged_.load();
    if (listener) guarded(console_, "a change of the radio's health", [&] { (*listener)(health()); });
}

/// Empties the seconds that have passed since the last one counted.
void RadioMonitor::moveTo(std::int64_t second) const {
    const std::int64_t passed = std::clamp<std::int64_t>(second - second_, 0, std::ssize(counts_));
    for (std::int64_t next = second - passed + 1; next <= second; ++next) {
        counts_[static_cast<std::size_t>(next) % counts_.size()] = 0;
    }
    second_ = std::max(second_, second);
}

double RadioMonitor::rate(NSDate now) const {
    moveTo(secondOf(now));
    const auto running = static_cast<std::size_t>(second_) % counts_.size();
    const double reports = std::accumulate(counts_.begin(), counts_.end(), 0.0) - counts_[running];
    const double open = secondsOf(now.sinceStart() - opened_.sinceStart());
    // Until ten whole seconds are there, what there is of them counts.
    if (open < window) return (reports + counts_[running]) / std::max(open, 1.0);
    return reports / window;
}

}  // namespace nearcast

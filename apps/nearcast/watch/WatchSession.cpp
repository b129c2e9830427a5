// SPDX-License-Identifier: Apache-2.0
#include "watch/WatchSession.h"

#include <nearcast/Platform.h>

#include <exception>
#include <stdexcept>
#include <utility>

namespace nearcast::cli {

WatchSession::WatchSession(std::unique_ptr<WatchView> view, std::function<void()> wake)
    : wake_(std::move(wake)), view_(std::move(view)) {}

void WatchSession::begin() { start_ = Platform::now(); }

double WatchSession::seconds() const { return Platform::now() - start_; }

std::shared_ptr<QXNearcastManagerDelegate> WatchSession::delegate() {
    auto delegate = std::make_shared<QXNearcastManagerDelegate>();
    delegate->didDiscoverPort = [this](std::string_view portName, QXDeviceType deviceType, std::string_view MACAddr,
                                       std::int32_t RSSI) { report(portName, deviceType, MACAddr, RSSI); };
    delegate->didUpdateState = [this](std::string_view portName, std::string_view MACAddr) {
        silent(portName, MACAddr);
    };
    return delegate;
}

/// Output that cannot be written ends the watch, not the thread that happened to write.
template <class Show>
void WatchSession::show(const Show& what) {
    if (!broken_.empty()) return;
    try {
        what(*view_);
    } catch (const std::exception& error) {
        broken_ = error.what();
        wake_();
    }
}

void WatchSession::noteEvent() {
    eventful_ = true;
    if (std::exchange(quiet_, false)) wake_();
}

void WatchSession::report(std::string_view portName, QXDeviceType deviceType, std::string_view MACAddr,
                          std::int32_t RSSI) {
    const double at = seconds();
    const MutexLock lock(mutex_);
    WatchReport report{at, portName, deviceType, MACAddr, RSSI, std::nullopt};
    const auto heard = heard_.find(MACAddr);
    if (heard != heard_.end()) {
        report.age = at - std::exchange(heard->second, at);
    } else {
        remember(MACAddr, !portName.empty(), at);
    }
    ++summary_.reports;
    noteEvent();
    show([&](WatchView& view) { view.report(report); });
}

void WatchSession::remember(std::string_view MACAddr, bool registered, double at) {
    if (registered || heard_.size() < mostStrangers) heard_.emplace(MACAddr, at);
    if (registered || known_.size() < mostStrangers) {
        known_.emplace(MACAddr);
    } else if (known_.count(MACAddr) == 0) {
        summary_.moreDongles = true;
    }
    summary_.dongles = known_.size();
}

void WatchSession::silent(std::string_view portName, std::string_view MACAddr) {
    const double at = seconds();
    const MutexLock lock(mutex_);
    ++summary_.silences;
    noteEvent();
    if (const auto heard = heard_.find(MACAddr); heard != heard_.end()) heard_.erase(heard);
    show([&](WatchView& view) { view.silent(at, portName, MACAddr); });
}

void WatchSession::showOrKeep(std::function<void(WatchView&)> what) {
    if (holding_) {
        kept_.push_back(std::move(what));
    } else {
        show(what);
    }
}

void WatchSession::console(std::string_view line) {
    const MutexLock lock(mutex_);
    showOrKeep([text = std::string(line)](WatchView& view) { view.console(text); });
}

void WatchSession::hold() {
    const MutexLock lock(mutex_);
    holding_ = true;
}

void WatchSession::release() {
    const MutexLock lock(mutex_);
    showKept();
}

void WatchSession::showKept() {
    holding_ = false;
    for (const auto& what : std::exchange(kept_, {})) show(what);
}

void WatchSession::awaitRadio(bool awaited) {
    const MutexLock lock(mutex_);
    radioAwaited_ = awaited;
}

bool WatchSession::radioHasTold() {
    const MutexLock lock(mutex_);
    return radioHasTold_;
}

void WatchSession::health(RadioHealth health) {
    const double at = seconds();
    health.since -= start_;
    const MutexLock lock(mutex_);
    noteEvent();
    radioHasTold_ = true;
    if (radioAwaited_) wake_();
    showOrKeep([at, health](WatchView& view) { view.health(at, health); });
}

void WatchSession::tick() {
    const double at = seconds();
    RadioHealth health = Platform::radioHealth();
    health.since -= start_;
    const MutexLock lock(mutex_);
    if (holding_ || ended_) return;
    show([&](WatchView& view) { view.tick(at, health); });
}

void WatchSession::drawAnew(const std::function<bool()>& happened) {
    {
        const MutexLock lock(mutex_);
        if (happened()) show([](WatchView& view) { view.disturbed(); });
    }
    tick();
}

double WatchSession::pause() {
    constexpr double untilWoken = 3600;
    const MutexLock lock(mutex_);
    if (!view_->showsTime()) return untilWoken;
    quiet_ = !std::exchange(eventful_, false);
    return quiet_ ? quietTick : busyTick;
}

bool WatchSession::broken() {
    const MutexLock lock(mutex_);
    return !broken_.empty();
}

void WatchSession::end() {
    const double at = seconds();
    const MutexLock lock(mutex_);
    WatchSummary summary = summary_;
    summary.seconds = at;
    showKept();
    ended_ = true;
    show([&](WatchView& view) { view.end(summary); });
    if (!broken_.empty()) throw std::runtime_error(broken_);
}

}  // namespace nearcast::cli

// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Discovery.h"

#include <algorithm>

namespace nearcast::bluez {

namespace {

bool isDenial(const Failure& failure) {
    return failure.name == error::accessDenied || failure.name == error::notAuthorized ||
           failure.name == error::notPermitted;
}

/// Whether bluetoothd may still do what it was asked for.
bool isUndecided(const Failure& failure) {
    return failure.name == error::inProgress || failure.name == error::noReply || failure.name == error::timeout;
}

}  // namespace

void Discovery::want(bool wanted) {
    if (wanted == wanted_) return;
    wanted_ = wanted;
    if (wanted) {
        unwantedAt_.reset();
    } else {
        unwantedAt_ = now_ + linger;
    }
    step();
}

void Discovery::setAdapter(const std::optional<std::string>& adapter, bool monitors) {
    monitors_ = monitors;
    if (adapter.value_or(std::string()) != adapter_) {
        forgetAdapter();
        adapter_ = adapter.value_or(std::string());
    }
    step();
}

void Discovery::forgetAdapter() {
    ++epoch_;
    calling_ = discovering_ = running_ = filterSet_ = mustStop_ = monitorTried_ = quiet_ = false;
    failures_ = 0;
    pauseEnds_.reset();
    endedAt_.reset();
    beganAt_.reset();
    denies_ = false;
    watchAt_.reset();
    pause_.reset();
    quietLimits_.reset();
    judge();
}

void Discovery::setDiscovering(bool discovering) {
    if (discovering == discovering_) return;
    discovering_ = discovering;
    if (discovering) {
        endedAt_.reset();
        beganAt_.reset();
        denies_ = false;
    } else if (running_) {
        endedAt_ = now_;
    }
    judge();
}

void Discovery::loseMonitor() { monitoredAdapter_.clear(); }

void Discovery::heard() {
    lastHeard_ = now_;
    pause_.reset();
    if (!quiet_) return;
    quiet_ = false;
    quietLimits_.reset();
    patience_ = quietLimits_.next();
    if (watchAt_) watchAt_ = now_ + patience_;
    judge();
}

void Discovery::pass(Time now) {
    now_ = now;
    if (unwantedAt_ && now_ >= *unwantedAt_) forgetWish();
    lookForEnd();
    lookForSilence();
    lookForBlindness();
    step();
}

std::optional<Time> Discovery::due() const {
    std::optional<Time> earliest = unwantedAt_;
    if (!calling_ && !adapter_.empty()) takeEarlier(earliest, pauseEnds_);
    if (endedAt_) takeEarlier(earliest, *endedAt_ + doubt);
    if (beganAt_) takeEarlier(earliest, *beganAt_ + doubt);
    takeEarlier(earliest, watchAt_);
    return earliest;
}

void Discovery::forgetWish() {
    unwantedAt_.reset();
    watchAt_.reset();
    endedAt_.reset();
    pauseEnds_.reset();
    hasRun_ = quiet_ = false;
    failures_ = 0;
    judge();
}

/// Believes the adapter that it does not discover once it has said so for long enough.
void Discovery::lookForEnd() {
    if (!endedAt_ || now_ < *endedAt_ + doubt) return;
    endedAt_.reset();
    if (!running_) return;
    running_ = false;
    mustStop_ = true;
    pause();
}

void Discovery::lookForSilence() {
    if (!watchAt_ || now_ < *watchAt_) return;
    watchAt_.reset();
    if (!running_) return;
    if (now_ - lastHeard_ < patience_) {
        watchAt_ = lastHeard_ + patience_;
        return;
    }
    quiet_ = true;
    patience_ = quietLimits_.next();
    mustStop_ = true;
    judge();
}

/// The adapter says that it discovers a moment after the answer to the start. One that does not is blind.
void Discovery::lookForBlindness() {
    if (!beganAt_ || now_ < *beganAt_ + doubt) return;
    beganAt_.reset();
    denies_ = running_;
    judge();
}

void Discovery::step() {
    if (calling_ || adapter_.empty() || (pauseEnds_ && now_ < *pauseEnds_)) return;
    pauseEnds_.reset();
    if (wanted_ || unwantedAt_) {
        stepWanted();
    } else {
        stepUnwanted();
    }
}

void Discovery::stepWanted() {
    if (mustStop_) {
        bus_.stopDiscovery(adapter_, then(&Discovery::stopped));
    } else if (monitors_ && monitoredAdapter_ != adapter_ && !monitorTried_) {
        bus_.registerMonitor(adapter_, then(&Discovery::monitored));
    } else if (!filterSet_) {
        bus_.setDiscoveryFilter(adapter_, then(&Discovery::filtered));
    } else if (!running_) {
        bus_.startDiscovery(adapter_, then(&Discovery::started));
    }
}

void Discovery::stepUnwanted() {
    if (running_ || mustStop_) {
        bus_.stopDiscovery(adapter_, then(&Discovery::stopped));
    } else if (monitoredAdapter_ == adapter_) {
        bus_.unregisterMonitor(adapter_, then(&Discovery::unmonitored));
    }
}

Done Discovery::then(Answer answer) {
    calling_ = true;
    return [this, answer, epoch = epoch_](const std::optional<Failure>& failure) {
        if (epoch != epoch_) return;
        calling_ = false;
        (this->*answer)(failure);
        step();
    };
}

/// Any other failure says that nothing was running, which is what was asked for.
void Discovery::stopped(const std::optional<Failure>& failure) {
    if (failure && isUndecided(*failure)) return fail(*failure);
    running_ = filterSet_ = mustStop_ = denies_ = false;
    endedAt_.reset();
    beganAt_.reset();
}

/// A refused monitor is no failure: the discovery runs without one.
void Discovery::monitored(const std::optional<Failure>& failure) {
    monitorTried_ = true;
    if (!failure || failure->name == error::alreadyExists) monitoredAdapter_ = adapter_;
}

void Discovery::unmonitored(const std::optional<Failure>& /*failure*/) {
    monitoredAdapter_.clear();
    monitorTried_ = false;
}

void Discovery::filtered(const std::optional<Failure>& failure) {
    if (failure) return fail(*failure);
    filterSet_ = true;
}

void Discovery::started(const std::optional<Failure>& failure) {
    if (failure) return fail(*failure);
    running_ = true;
    if (!discovering_) beganAt_ = now_;
    failures_ = 0;
    lastHeard_ = now_;
    if (!quiet_) {
        quietLimits_.reset();
        patience_ = quietLimits_.next();
    }
    watchAt_ = now_ + patience_;
    judge();
    if (hasRun_ && listener_.restarted) listener_.restarted();
    hasRun_ = true;
}

void Discovery::fail(const Failure& failure) {
    failure_ = failure;
    ++failures_;
    filterSet_ = false;
    // A discovery of ours that bluetoothd still has would make it refuse another start.
    if (failure.name != error::notReady && !isDenial(failure)) mustStop_ = true;
    pause();
    judge();
}

void Discovery::pause() { pauseEnds_ = now_ + pause_.next(); }

void Discovery::judge() {
    DiscoveryState state = DiscoveryState::well;
    if (failures_ > 0 && isDenial(failure_)) {
        state = DiscoveryState::denied;
    } else if (failures_ > 1) {  // one alone is normal: an adapter that has just come may not be ready
        state = DiscoveryState::failing;
    } else if (quiet_) {
        state = denies_ ? DiscoveryState::inactive : DiscoveryState::quiet;
    }
    if (state == state_) return;
    state_ = state;
    if (listener_.stateChanged) listener_.stateChanged();
}

}  // namespace nearcast::bluez

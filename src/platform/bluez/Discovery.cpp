// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Discovery.h"

#include <algorithm>
#include <utility>

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

Discovery::Discovery(SystemBus& bus, KernelScan& kernel, Listener listener)
    : bus_(bus),
      listener_(std::move(listener)),
      monitor_(bus, [this] { step(); }),
      dead_(kernel, {[this] { deadChanged(); }, [this] { tellRestart(); }, [this] { tryAnew(); }}) {}

void Discovery::want(bool wanted) {
    if (wanted == wanted_) return;
    wanted_ = wanted;
    if (wanted) {
        unwantedAt_.reset();
    } else {
        unwantedAt_ = now_ + linger;
    }
    watchDead();
    step();
}

void Discovery::setAdapter(const std::optional<std::string>& adapter, bool monitors) {
    monitor_.setAdapter(adapter.value_or(std::string()), monitors);
    if (adapter.value_or(std::string()) != adapter_) {
        forgetAdapter();
        adapter_ = adapter.value_or(std::string());
        watchDead();
    }
    step();
}

void Discovery::forgetAdapter() {
    ++epoch_;
    calling_ = discovering_ = running_ = filterSet_ = mustStop_ = quiet_ = false;
    dead_.ended();
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

void Discovery::forgetDaemon() {
    monitor_.forgetDaemon();
    deadLimits_.reset();
    dead_.forgetDaemon();
}

void Discovery::heard() {
    lastHeard_ = now_;
    pause_.reset();
    const bool wasQuiet = std::exchange(quiet_, false);
    dead_.heard();
    if (!wasQuiet) return;
    deadLimits_.reset();
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
    dead_.pass(now);
    step();
}

std::optional<Time> Discovery::due() const {
    std::optional<Time> earliest = unwantedAt_;
    if (!calling_ && !adapter_.empty()) takeEarlier(earliest, pauseEnds_);
    if (endedAt_) takeEarlier(earliest, *endedAt_ + doubt);
    if (beganAt_) takeEarlier(earliest, *beganAt_ + doubt);
    if (isWanted()) takeEarlier(earliest, monitor_.due(now_));
    takeEarlier(earliest, watchAt_);
    takeEarlier(earliest, dead_.due());
    return earliest;
}

void Discovery::forgetWish() {
    unwantedAt_.reset();
    watchAt_.reset();
    endedAt_.reset();
    pauseEnds_.reset();
    hasRun_ = quiet_ = false;
    failures_ = 0;
    watchDead();
    judge();
}

/// Believes the adapter that it does not discover once it has said so for long enough.
void Discovery::lookForEnd() {
    if (!endedAt_ || now_ < *endedAt_ + doubt) return;
    endedAt_.reset();
    if (!running_) return;
    running_ = false;
    dead_.ended();
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
    tryAnew();
}

/// Nothing is heard: ends the discovery, and begins another.
void Discovery::tryAnew() {
    if (!running_) return;
    watchAt_.reset();
    quiet_ = true;
    patience_ = nextPatience();
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

/// What was seen of a dead scan is looked at again at once; a dead one soon, for others may mend it.
Time Discovery::nextPatience() {
    if (dead_.suspected()) return doubt;
    return dead_.dead() ? deadLimits_.next() : quietLimits_.next();
}

void Discovery::watchDead() { dead_.watch(isWanted() ? adapter_ : std::string()); }

void Discovery::step() {
    if (isWanted()) monitor_.keep(now_);
    if (calling_ || adapter_.empty() || (pauseEnds_ && now_ < *pauseEnds_)) return;
    pauseEnds_.reset();
    if (isWanted()) {
        stepWanted();
    } else {
        stepUnwanted();
    }
}

void Discovery::stepWanted() {
    if (mustStop_) {
        stop();
    } else if (!filterSet_) {
        bus_.setDiscoveryFilter(adapter_, then(&Discovery::filtered));
    } else if (!running_ && !monitor_.holdsStart(now_)) {
        start();
    }
}

void Discovery::stepUnwanted() {
    if (running_ || mustStop_) {
        stop();
    } else {
        monitor_.end();
    }
}

void Discovery::start() {
    dead_.asked();
    bus_.startDiscovery(adapter_, then(&Discovery::started));
}

void Discovery::stop() {
    dead_.ended();
    bus_.stopDiscovery(adapter_, then(&Discovery::stopped));
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
    dead_.stopAnswered(failure);
    if (failure && isUndecided(*failure)) return fail(*failure);
    running_ = filterSet_ = mustStop_ = denies_ = false;
    endedAt_.reset();
    beganAt_.reset();
}

void Discovery::filtered(const std::optional<Failure>& failure) {
    if (failure) return fail(*failure);
    filterSet_ = true;
}

void Discovery::started(const std::optional<Failure>& failure) {
    if (failure) return failBusy(*failure);
    running_ = true;
    if (!discovering_) beganAt_ = now_;
    failures_ = 0;
    lastHeard_ = now_;
    if (!quiet_) quietLimits_.reset();
    if (!quiet_ || dead_.suspected()) patience_ = nextPatience();
    watchAt_ = now_ + patience_;
    judge();
    if (hasRun_ && !dead_.dead()) tellRestart();
    hasRun_ = true;
}

/// What a start fails with, unless another bluetoothd's round was in its way and has been ended.
void Discovery::failBusy(const Failure& failure) {
    dead_.ended();
    const auto released = [this, failure, epoch = epoch_](bool ended) {
        if (epoch != epoch_) return;
        calling_ = false;
        if (!ended) fail(failure);
        step();
    };
    calling_ = dead_.release(failure, discovering_, released);
    if (!calling_) fail(failure);
}

/// Also where the state stays: what helps may be another thing now.
void Discovery::deadChanged() {
    judge();
    if (listener_.stateChanged) listener_.stateChanged();
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
    } else if (dead_.dead()) {
        state = DiscoveryState::dead;
    } else if (failures_ > 1) {  // one alone is normal: an adapter that has just come may not be ready
        state = DiscoveryState::failing;
    } else if (quiet_) {
        state = denies_ ? DiscoveryState::inactive : DiscoveryState::quiet;
    } else if (dead_.unproven()) {
        state = DiscoveryState::unproven;
    }
    if (state == state_) return;
    state_ = state;
    if (listener_.stateChanged) listener_.stateChanged();
}

}  // namespace nearcast::bluez

// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/MonitorKeeper.h"

#include <utility>

namespace nearcast::bluez {

void MonitorKeeper::setAdapter(const std::string& adapter, bool offered) {
    offered_ = offered;
    if (adapter == adapter_) return;
    adapter_ = adapter;
    ++epoch_;
    refused_ = calling_ = false;
}

void MonitorKeeper::lose(Time now) {
    place_.clear();
    at_ = now + pause_.next();
}

void MonitorKeeper::forgetDaemon() {
    place_.clear();
    pause_.reset();
    at_ = Time(0);
}

bool MonitorKeeper::isMissing() const { return offered_ && !refused_ && !calling_ && place_ != adapter_; }

void MonitorKeeper::keep(Time now) {
    if (!isMissing() || now < at_) return;
    graceEnds_ = now + grace;
    call(&SystemBus::registerMonitor, &MonitorKeeper::registered);
}

void MonitorKeeper::end() {
    if (calling_ || place_.empty() || place_ != adapter_) return;
    call(&SystemBus::unregisterMonitor, &MonitorKeeper::unregistered);
}

std::optional<Time> MonitorKeeper::due(Time now) const {
    if (holdsStart(now)) return graceEnds_;
    return isMissing() ? std::optional(at_) : std::nullopt;
}

void MonitorKeeper::call(void (SystemBus::*method)(const std::string&, Done),
                         void (MonitorKeeper::*answer)(const Failure*)) {
    calling_ = true;
    (bus_.*method)(adapter_, [this, answer, epoch = epoch_](const std::optional<Failure>& failure) {
        if (epoch != epoch_) return;
        calling_ = false;
        (this->*answer)(failure ? &*failure : nullptr);
        answered_();
    });
}

/// A refused monitor is no failure: the scan runs without one.
void MonitorKeeper::registered(const Failure* failure) {
    if (failure == nullptr || failure->name == error::alreadyExists) {
        place_ = adapter_;
    } else {
        refused_ = true;
    }
}

void MonitorKeeper::unregistered(const Failure* /*failure*/) { place_.clear(); }

}  // namespace nearcast::bluez

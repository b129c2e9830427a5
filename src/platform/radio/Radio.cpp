// SPDX-License-Identifier: Apache-2.0
#include "platform/radio/Radio.h"

#include "platform/Guarded.h"
#include "platform/NSTimer.h"

#include <algorithm>

namespace nearcast {

namespace {

bool isCancelled(const NSTimer* asker) { return asker != nullptr && !asker->isValid(); }

}  // namespace

Radio::Radio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, CBManagerState state,
             std::string why)
    : delegate_(delegate), console_(console), monitor_(monitor), state_(state) {
    monitor_.open(state, std::move(why));
}

void Radio::scanForPeripheralsWithServices(const std::optional<std::vector<CBUUID>>& services, ScanOptions options) {
    const Scan scan{services, options.allowDuplicates};
    {
        const MutexLock lock(mutex_);
        if (isCancelled(options.asker)) return;
        scan_ = scan;
    }
    scanChanged(scan);
}

void Radio::stopScan(StopOptions options) {
    {
        const MutexLock lock(mutex_);
        if (isCancelled(options.asker)) return;
        scan_.reset();
        // While requests wait for this mutex: none of this timer's may pass between the stop and its end.
        if (options.cancelled != nullptr) options.cancelled->invalidate();
    }
    scanChanged(std::nullopt);
}

void Radio::scanChanged(const std::optional<Scan>& /*scan*/) {}

bool Radio::scanning() const {
    const MutexLock lock(mutex_);
    return scan_.has_value();
}

bool Radio::wanted(const AdvertisingReport& report) const {
    const MutexLock lock(mutex_);
    if (!scan_) return false;
    if (!scan_->services) return true;
    return std::any_of(scan_->services->begin(), scan_->services->end(), [&](const CBUUID& service) {
        return std::find(report.services.begin(), report.services.end(), service) != report.services.end();
    });
}

void Radio::deliver(const AdvertisingReport& report) {
    const bool wanted = this->wanted(report);
    monitor_.heard(report, wanted);
    if (!wanted) return;
    CBPeripheral peripheral;
    if (report.name) peripheral.name = *report.name;
    AdvertisementData data;
    if (report.manufacturerData) data.manufacturerData = *report.manufacturerData;
    guarded(console_, "an advertisement",
            [&] { delegate_.centralManagerDidDiscoverPeripheral(*this, peripheral, data, report.RSSI); });
}

void Radio::changeState(CBManagerState state, std::string why) {
    state_.store(state, std::memory_order_release);
    monitor_.noteState(state, std::move(why));
    guarded(console_, "a change of the radio's state", [&] { delegate_.centralManagerDidUpdateState(*this); });
}

void Radio::end(std::string_view why) noexcept {
    reportEnded(console_, "radio", why);
    guarded(console_, "the end of the radio", [&] {
        conditionChanged({CBManagerStateUnknown, std::string("the radio's thread has ended: ").append(why)});
    });
}

void Radio::conditionChanged(const RadioCondition& condition) {
    if (condition.state == state()) {
        monitor_.noteState(condition.state, condition.why);
    } else {
        changeState(condition.state, condition.why);
    }
}

}  // namespace nearcast

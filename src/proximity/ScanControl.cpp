// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"
#include "support/Dongle.h"

#include <chrono>

namespace nearcast {

namespace {

constexpr std::chrono::seconds restartInterval{120};
constexpr std::chrono::seconds sweepInterval{5};

}  // namespace

bool Manager::startScan() {
    const Trace trace = this->trace("-[QXNearcastManager startScan]", Trace::Audience::publicAPI);
    trace.start("");
    bool started = false;
    if (!isLECapableHardware()) {
        trace.error("[self isLECapableHardware] == NO, ", Pointer{face_});
        console("Bluetooth Low Energy is not supported.");
    } else if (const auto settings = getSettings(); settings == nullptr) {
        trace.error("self.settings == nil, ", Pointer{nullptr});
        console("settings is nil");
    } else {
        started = startScanning(trace);
    }
    trace.end("-> ", started);
    return started;
}

bool Manager::startScanning(const Trace& trace) {
    const NSLockGuard guard(_lockStartScanFlag);
    if (scanStart) {
        trace.error("scanStart == YES, ", scanStart);
        console("A duplicate execution reuest with 'startScan' or 'calibrateActionArea' was found.");
        return false;
    }
    p_restartScanTimer = platform_.scheduledIdlingTimer(
        restartInterval, [this](NSTimer& tm) { restartScan(tm); }, [] { return restartIsIdle(); });
    p_restartScanTimer->fire();
    repeatTimer = platform_.scheduledIdlingTimer(
        sweepInterval, [this](NSTimer&) { eventRepeatTimer(); }, [this] { return sweepIsIdle(); });
    scanStart = true;
    return true;
}

bool Manager::startScan(std::uint64_t samplingNumber) {
    const Trace trace = this->trace("-[QXNearcastManager startScan:]", Trace::Audience::publicAPI);
    trace.start("", samplingNumber);
    bool started = false;
    if (samplingNumber == 0) {
        trace.error("samplingNumber == 0, ", samplingNumber);
    } else {
        _samplingNumber.store(samplingNumber);
        started = startScan();
    }
    trace.end("", samplingNumber, ", -> ", started);
    return started;
}

// It keeps no lock and asks no flag, so a stop may come at any of its steps. The radio then drops the rest of it.
void Manager::restartScan(NSTimer& tm) {
    const Trace trace = this->trace("-[QXNearcastManager restartScan:]", Trace::Audience::internal);
    trace.start("", Pointer{&tm});
    if (auto* central = manager.load()) {
        central->stopScan({.asker = &tm});
        central->scanForPeripheralsWithServices(std::vector{CBUUID::UUIDWithString(dongle::serviceUUID)},
                                                ScanOptions{.allowDuplicates = true, .asker = &tm});
    }
    trace.end("", Pointer{&tm});
}

void Manager::stopScan() {
    const Trace trace = this->trace("-[QXNearcastManager stopScan]", Trace::Audience::publicAPI);
    trace.start("");
    {
        const NSLockGuard guard(_lockStartScanFlag);
        if (auto* central = manager.load()) {
            trace.process("manager != nil, ", Pointer{central});
            central->stopScan({.cancelled = p_restartScanTimer.get()});
        }
        if (p_restartScanTimer) p_restartScanTimer->invalidate();
        p_restartScanTimer.reset();
        if (repeatTimer) repeatTimer->invalidate();
        repeatTimer.reset();
        toCalibrateActionArea.store(false);
        scanStart = false;
    }
    trace.end("");
}

}  // namespace nearcast

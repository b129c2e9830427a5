// SPDX-License-Identifier: Apache-2.0
#include "proximity/Calibration.h"

#include "core/Manager.h"

#include <chrono>

namespace nearcast {

namespace {

constexpr int passes = 14;
constexpr std::chrono::milliseconds pause{500};
constexpr std::size_t passedOver = 4;

}  // namespace

void ActionAreaSamples::append(std::int32_t RSSI) noexcept {
    const std::size_t place = count_.load(std::memory_order_relaxed);
    if (place == enough) return;
    samples_[place].store(RSSI, std::memory_order_relaxed);
    count_.store(place + 1, std::memory_order_release);
}

std::int32_t ActionAreaSamples::secondStrongest() const noexcept {
    std::int32_t strongest = kQXMinRSSI;
    std::int32_t second = kQXMinRSSI;
    for (std::size_t place = passedOver; place < enough; ++place) {
        const std::int32_t sample = samples_[place].load(std::memory_order_relaxed);
        if (sample > strongest) {
            second = strongest;
            strongest = sample;
        } else if (sample > second) {
            second = sample;
        }
    }
    return second;
}

std::int32_t Manager::calibrateActionArea(Text MACAddr) {
    const Trace trace = this->trace("-[QXNearcastManager calibrateActionArea:]", Trace::Audience::publicAPI);
    trace.start("", MACAddr);
    checkSleep();
    const auto samples = std::make_shared<ActionAreaSamples>();
    if (!isValidateMACAddr(MACAddr)) {
        trace.error("[self isValidateMACAddr:MACAddr] == NO, ", Pointer{face_}, ", ", MACAddr);
        console("UUID is invalid.");
        trace.end("", MACAddr, ", -> ", kQXInvalidRSSI);
        return kQXInvalidRSSI;
    }
    if (!armCalibration(trace, MACAddr, samples)) {
        trace.end("", MACAddr, ", -> ", kQXInvalidRSSI);
        return kQXInvalidRSSI;
    }
    awaitSamples();
    stopScan();
    {
        const NSLockGuard guard(_lockCalibrateActionAreaFlag);
        if (!samples->isEnough()) {
            rssiDataForActionArea.clearIf(samples);
            return kQXInvalidRSSI;  // without an exit record
        }
    }
    const std::int32_t result = samples->secondStrongest();
    rssiDataForActionArea.clearIf(samples);
    trace.end("", MACAddr, ", -> ", result);
    return result;
}

// A scan call that throws leaves the calibration armed until `stopScan`.
bool Manager::armCalibration(const Trace& trace, Text MACAddr, const std::shared_ptr<ActionAreaSamples>& samples) {
    const NSLockGuard guard(_lockStartScanFlag);
    if (scanStart) {
        trace.error("scanStart == YES, ", scanStart);
        console("A duplicate execution reuest with 'startScan' or 'calibrateActionArea' was found.");
        return false;
    }
    macAddrForActionArea.store(MACAddr ? std::make_shared<const std::string>(*MACAddr) : nullptr);
    rssiDataForActionArea.store(samples);
    toCalibrateActionArea.store(true);
    isEnoughDataForActionArea.store(false);
    if (auto* central = manager.load()) {
        central->scanForPeripheralsWithServices(std::nullopt, ScanOptions{.allowDuplicates = true});
    }
    scanStart = true;
    return true;
}

// One that was stopped while it waited leaves early when the next one has all its samples: there is one flag for all.
// Each answers by samples of its own, never with another's.
void Manager::awaitSamples() {
    for (int pass = 0; pass < passes; ++pass) {
        bool enough = false;
        {
            const NSLockGuard guard(_lockCalibrateActionAreaFlag);
            enough = isEnoughDataForActionArea.load();
        }
        if (enough) return;
        platform_.usleep(pause);
    }
}

std::int32_t Manager::getRSSI(Text MACAddr) {
    const Trace trace = this->trace("-[QXNearcastManager getRSSI:]", Trace::Audience::publicAPI);
    trace.start("", MACAddr);
    std::int32_t RSSI = kQXInvalidRSSI;
    if (!isValidateMACAddr(MACAddr)) {
        trace.error("[self isValidateMACAddr:MACAddr] == NO, ", Pointer{face_}, ", ", MACAddr);
        console("UUID is invalid.");
    } else {
        const NSLockGuard guard(_lockRssiDataFlag);
        if (!rssiData.empty()) {
            trace.process("rssiData.count != 0, ", rssiData.size());
            const Signal* const found = MACAddr ? rssiData.find(AddressKey(*MACAddr)) : nullptr;
            if (found != nullptr) {
                trace.process("foundRssiDic != nil, ", Pointer{found});
                const std::int32_t* output = found->smoothing.lastOutput();
                RSSI = output != nullptr ? *output : 0;
            }
        }
    }
    trace.end("", MACAddr, ", -> ", RSSI);
    return RSSI;
}

}  // namespace nearcast

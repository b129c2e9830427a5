// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"
#include "proximity/Calibration.h"
#include "support/Dongle.h"

namespace nearcast {

void Manager::centralManagerDidDiscoverPeripheral(CBCentralManager& central, const CBPeripheral& peripheral,
                                                  const AdvertisementData& advertisementData, std::int32_t RSSI) {
    const Trace trace = this->trace("-[QXNearcastManager centralManager:didDiscoverPeripheral:advertisementData:RSSI:]",
                                    Trace::Audience::internal);
    trace.start("", Pointer{&central}, ", ", Pointer{&peripheral}, ", ", Pointer{&advertisementData}, ", ", RSSI);
    discover(trace, peripheral, advertisementData, RSSI);
    trace.end("", Pointer{&central}, ", ", Pointer{&peripheral}, ", ", Pointer{&advertisementData}, ", ", RSSI);
}

void Manager::discover(const Trace& trace, const CBPeripheral& peripheral, const AdvertisementData& advertisementData,
                       std::int32_t RSSI) {
    if (_delegate.empty()) return trace.process("self.delegate == nil, ", Pointer{nullptr});
    if (!advertisementData.manufacturerData) return trace.process("manufactureData == nil, ", Pointer{nullptr});
    DongleAddress address;
    if (!readAddress(trace, peripheral, *advertisementData.manufacturerData, address)) return;
    if (RSSI == kQXInvalidRSSI) return trace.error("RSSI.intValue == 127, ", RSSI);
    if (address.hasMarker()) {
        return trace.error("[dongleMACAddress containsString:@\"QX\"] || (dongleMACAddress == nil), ", address.text());
    }
    prefetchTables(address.key());
    if (sampleForCalibration(trace, address.text(), RSSI)) return;
    const auto output = smooth(trace, address.key(), RSSI);
    if (!output) return;
    report(trace, address.key(), *output);
}

bool Manager::readAddress(const Trace& trace, const CBPeripheral& peripheral, std::span<const std::uint8_t> payload,
                          DongleAddress& address) {
    if (!dongle::isMarked(payload)) {
        address.take(getMACAddressFromName(peripheral.name));
        return true;
    }
    trace.process("(manufactureDataBytes[0] == 0xff) && (manufactureDataBytes[1] == 0xff), ", payload[0], ", ",
                  payload[1]);
    const auto octets = dongle::addressInPayload(payload);
    if (!octets) {
        trace.error("the address of 6 octets at offset 2 lies beyond the payload of ", payload.size(), " octets");
        return false;
    }
    address.take(*octets);
    return true;
}

// The look-ups that follow read memory that is in no cache when there are many dongles. It is asked for before the
// first lock is taken and arrives meanwhile: among a million dongles an advertisement takes a third longer without
// (docs/performance.md).
void Manager::prefetchTables(const AddressKey& address) const {
    rssiData.prefetch(address.packed());
    mutableSettings.prefetch(address.packed());
}

bool Manager::sampleForCalibration(const Trace& trace, std::string_view address, std::int32_t RSSI) {
    const NSLockGuard guard(_lockCalibrateActionAreaFlag);
    if (!toCalibrateActionArea.load()) return false;
    trace.process("toCalibrateActionArea == YES, ", true);
    const auto wanted = macAddrForActionArea.load();
    if (wanted == nullptr || *wanted != address) {
        trace.process("[dongleMACAddress isEqualToString:macAddrForActionArea] == NO, ", address, ", ",
                      wanted ? Text(*wanted) : Text());
        return true;
    }
    const auto samples = rssiDataForActionArea.load();
    if (samples == nullptr || isEnoughDataForActionArea.load()) return true;
    trace.process("isEnoughDataForActionArea == NO, ", false);
    samples->append(RSSI);
    if (samples->isEnough()) {
        trace.process("rssiDataForActionArea.count >= 15, ", samples->count());
        isEnoughDataForActionArea.store(true);
    }
    return true;
}

std::optional<std::int32_t> Manager::smooth(const Trace& trace, const AddressKey& address, std::int32_t RSSI) {
    Smoothing::Result result;
    const std::uint64_t samplingNumber = this->samplingNumber();
    {
        const NSLockGuard guard(_lockRssiDataFlag);
        if (!rssiData.empty()) trace.process("rssiData.count != 0, ", rssiData.size());
        Signal* const known = rssiData.find(address);
        if (known == nullptr) {
            trace.process("lastRssiDic == nil, ", Pointer{nullptr});
            rssiData.add(address, Signal{platform_.date(), Smoothing(samplingNumber, RSSI)});
            nobodyInRange_.store(false, std::memory_order_release);
            return std::nullopt;
        }
        result = known->smoothing.add(RSSI, samplingNumber);
        if (result.stage == Smoothing::Stage::filling) {
            trace.process("rawRSSIQueue.count < self.samplingNumber, ", result.readings, ", ", samplingNumber);
        } else if (result.stage == Smoothing::Stage::settling) {
            trace.process("outputRSSIQueue.count < self.samplingNumber, ", result.outputs, ", ", samplingNumber);
        }
        known->lastUpdate = platform_.date();
    }
    if (!result.output) trace.process("outputRssi == nil, ", Pointer{nullptr});
    return result.output;
}

std::int32_t Manager::deviceTypeOf(const FoundPort& found) {
    const NSLockGuard guard(_lockMutableSettingsFlag);
    return mutableSettings.deviceTypeNow(found);
}

void Manager::report(const Trace& trace, const AddressKey& address, std::int32_t output) {
    AtomicShared<QXNearcastManagerDelegate>::Borrowed listener(_delegate);
    if (listener.get() == nullptr || !listener.get()->didDiscoverPort) {
        return trace.process(
            "[self.delegate respondsToSelector:@selector(didDiscoverPort:deviceType:MACAddr:RSSI:)] == NO, ",
            Pointer{listener.get()}, ", ", Pointer{listener.get() ? &listener.get()->didDiscoverPort : nullptr});
    }
    const FoundPort found = findPort(&address);
    std::int32_t deviceType = QXDeviceTypeUnknown;
    if (found.port) {
        deviceType = deviceTypeOf(found);
    } else {
        trace.process("registeredPortName == nil, ", Pointer{nullptr});
    }
    listener.reload();  // the delegate may have been changed meanwhile
    if (listener.get() != nullptr && listener.get()->didDiscoverPort) {
        listener.get()->didDiscoverPort(found.nameOrNone(), static_cast<QXDeviceType>(deviceType), address.text(),
                                        output);
    }
}

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#include "platform/virtual/VirtualPlatform.h"

namespace nearcast {

VirtualRadio::VirtualRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                           VirtualRadioObserver* observer)
    : Radio(delegate, console, monitor, CBManagerStatePoweredOn), observer_(observer) {}

void VirtualRadio::scanForPeripheralsWithServices(const std::optional<std::vector<CBUUID>>& services,
                                                  ScanOptions options) {
    if (observer_ != nullptr) observer_->scanAsked(services, options);
    Radio::scanForPeripheralsWithServices(services, options);
}

void VirtualRadio::stopScan(StopOptions options) {
    if (observer_ != nullptr) observer_->stopAsked();
    Radio::stopScan(options);
}

VirtualPlatform::VirtualPlatform(Console& console, const NSJSONSerialization& JSON, VirtualRadioObserver* observer)
    : TimelinePlatform(console, JSON, nullptr), observer_(observer) {}

std::unique_ptr<CBCentralManager> VirtualPlatform::centralManager(CBCentralManagerDelegate& delegate) {
    auto radio = std::make_unique<VirtualRadio>(delegate, *this, monitor(), observer_);
    radio_ = radio.get();
    return radio;
}

}  // namespace nearcast

// SPDX-License-Identifier: Apache-2.0
#include "platform/virtual/VirtualRadio.h"

namespace nearcast {

VirtualRadio::VirtualRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                           VirtualRadioObserver* observer)
    : Radio(delegate, console, monitor, CBManagerStatePoweredOn), observer_(observer) {}

void VirtualRadio::scanForPeripheralsWithServices(const std::optional<std::vector<CBUUID>>& services,
                                                  ScanOptions options) {
    if (observer_ != nullptr) observer_->scanAsked(services, options);
    Radio::scanForPeripheralsWithServices(services, options);
}

void VirtualRadio::stopScan() {
    if (observer_ != nullptr) observer_->stopAsked();
    Radio::stopScan();
}

}  // namespace nearcast

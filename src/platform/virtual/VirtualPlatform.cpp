// SPDX-License-Identifier: Apache-2.0
#include "platform/virtual/VirtualPlatform.h"

namespace nearcast {

VirtualPlatform::VirtualPlatform(Console& console, const NSJSONSerialization& JSON, VirtualRadioObserver* observer)
    : TimelinePlatform(console, JSON, nullptr), observer_(observer) {}

std::unique_ptr<CBCentralManager> VirtualPlatform::centralManager(CBCentralManagerDelegate& delegate) {
    auto radio = std::make_unique<VirtualRadio>(delegate, *this, monitor(), observer_);
    radio_ = radio.get();
    return radio;
}

}  // namespace nearcast

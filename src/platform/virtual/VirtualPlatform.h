// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/timeline/TimelinePlatform.h"
#include "platform/virtual/VirtualRadio.h"

#include <memory>

namespace nearcast {

/// A platform in which nothing happens by itself: time stands still until it is moved, the radio hears what it is told
/// to, and all of it runs on the caller's thread. Behind `nearcast run` and the tests.
class VirtualPlatform : public TimelinePlatform {
public:
    /// @param console, JSON live longer than the platform
    /// @param observer      of the radio, or null; lives longer than the platform
    VirtualPlatform(Console& console, const NSJSONSerialization& JSON, VirtualRadioObserver* observer = nullptr);

    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override;

    /// The radio made last; null while there is none. It belongs to whom it was made for.
    [[nodiscard]] VirtualRadio* radio() const noexcept { return radio_; }

private:
    VirtualRadioObserver* observer_;
    VirtualRadio* radio_ = nullptr;
};

}  // namespace nearcast

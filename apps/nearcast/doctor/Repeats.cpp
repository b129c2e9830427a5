// SPDX-License-Identifier: Apache-2.0
#include "doctor/Repeats.h"

namespace nearcast::cli {

void Repeats::heard(const DeviceAddress& sender, Time at) {
    const auto known = lastTwo_.find(sender);
    if (known == lastTwo_.end()) {
        constexpr Time never = Time::min() / 2;
        if (lastTwo_.size() < mostSenders) lastTwo_.emplace(sender, std::array{at, never});
        return;
    }
    auto& [last, before] = known->second;
    seen_ = seen_ || at - before < close;
    before = last;
    last = at;
}

}  // namespace nearcast::cli

// SPDX-License-Identifier: Apache-2.0
#include "lab/StrongestLevel.h"

namespace nearcast::lab {

void StrongestLevel::heard(double at, std::string_view MACAddr, std::int32_t RSSI) {
    if (source_ == Source::raw) add(at, MACAddr, RSSI);
}

void StrongestLevel::reported(double at, std::string_view MACAddr, std::int32_t RSSI) {
    if (source_ == Source::reports) add(at, MACAddr, RSSI);
}

void StrongestLevel::add(double at, std::string_view MACAddr, std::int32_t RSSI) {
    auto known = dongles_.find(MACAddr);
    if (known != dongles_.end() && isSilent(known->second, at)) {
        dongles_.erase(known);
        known = dongles_.end();
    }
    if (known == dongles_.end()) known = dongles_.emplace(MACAddr, Dongle{makeLevel_(), at, came_++}).first;
    known->second.level->add(at, RSSI);
    known->second.heardAt = at;
}

bool StrongestLevel::isSilent(const Dongle& dongle, double at) { return at - dongle.heardAt >= presence; }

std::string_view StrongestLevel::nearest(double at) {
    std::erase_if(dongles_, [at](const auto& entry) { return isSilent(entry.second, at); });
    const auto present = dongles_.find(present_);
    auto best = dongles_.end();
    double highest = 0;
    const auto isBefore = [&](auto one, auto other) {
        if (one == present || other == present) return one == present;
        return one->second.order < other->second.order;
    };
    for (auto dongle = dongles_.begin(); dongle != dongles_.end(); ++dongle) {
        const auto level = dongle->second.level->value(at);
        if (!level) continue;
        if (best != dongles_.end() && (*level < highest || (*level == highest && isBefore(best, dongle)))) continue;
        best = dongle;
        highest = *level;
    }
    present_ = best == dongles_.end() ? std::string() : best->first;
    return present_;
}

}  // namespace nearcast::lab

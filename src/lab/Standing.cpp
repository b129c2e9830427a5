// SPDX-License-Identifier: Apache-2.0
#include "lab/Standing.h"

namespace nearcast::lab {

std::vector<Stay> staysOf(const lines::Truth& truth, double end) {
    const lines::Truth changes = lines::changesOf(truth);
    std::vector<Stay> stays;
    for (std::size_t place = 0; place < changes.size(); ++place) {
        const double to = place + 1 < changes.size() ? changes[place + 1].at : end;
        const double from = changes[place].at + settlingTime;
        if (to - from >= shortestStay) stays.push_back({from, to, changes[place].MACAddr});
    }
    return stays;
}

std::size_t Standing::placeOf(std::string_view MACAddr) {
    const auto known = places_.find(MACAddr);
    if (known != places_.end()) return known->second;
    devices_.emplace_back(MACAddr);
    heard_.emplace_back();
    places_.emplace(MACAddr, devices_.size() - 1);
    return devices_.size() - 1;
}

void Standing::begin(const Stay& stay) {
    ++stays_;
    stay_ = stay;
}

void Standing::take(double at, const std::map<std::string, double, std::less<>>& levels) {
    for (const auto& [MACAddr, level] : levels) heard_[placeOf(MACAddr)].push_back({samples_.size(), level});
    const std::size_t place = stay_.MACAddr.empty() ? nowhere : placeOf(stay_.MACAddr);
    samples_.push_back({stays_ - 1, at >= (stay_.from + stay_.to) / 2, place});
}

std::vector<double> Standing::levelsOf(std::size_t device) const {
    std::vector<double> levels(samples_.size(), unheard);
    for (const Heard& one : heard_[device]) levels[one.sample] = one.level;
    return levels;
}

}  // namespace nearcast::lab

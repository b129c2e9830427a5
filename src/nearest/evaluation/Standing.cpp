// SPDX-License-Identifier: Apache-2.0
#include "nearest/evaluation/Standing.h"

namespace nearcast::nearest {

std::vector<Stay> staysOf(const Truth& truth, double end) {
    const Truth changes = changesOf(truth);
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
    places_.emplace(MACAddr, devices_.size() - 1);
    return devices_.size() - 1;
}

void Standing::begin(const Stay& stay) {
    ++stays_;
    stay_ = stay;
}

void Standing::take(double at, const std::map<std::string, double, std::less<>>& levels) {
    Sample sample;
    sample.stay = stays_ - 1;
    sample.laterHalf = at >= (stay_.from + stay_.to) / 2;
    sample.place = stay_.MACAddr.empty() ? nowhere : placeOf(stay_.MACAddr);
    for (const auto& [MACAddr, level] : levels) {
        const std::size_t place = placeOf(MACAddr);
        if (sample.levels.size() <= place) sample.levels.resize(place + 1, unheard);
        sample.levels[place] = level;
    }
    samples_.push_back(std::move(sample));
}

}  // namespace nearcast::nearest

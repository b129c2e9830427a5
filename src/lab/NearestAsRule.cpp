// SPDX-License-Identifier: Apache-2.0
#include "lab/NearestAsRule.h"

namespace nearcast::lab {

NearestAsRule::NearestAsRule(const Settings& registry, const NearestSettings& settings) : decision_(settings) {
    decision_.setRegistry(0, registry);
}

void NearestAsRule::heard(double at, std::string_view MACAddr, std::int32_t RSSI) {
    decision_.heard(at, MACAddr, RSSI);
}

void NearestAsRule::reported(double at, std::string_view MACAddr, std::int32_t RSSI) {
    decision_.reported(at, MACAddr, RSSI);
}

void NearestAsRule::silent(double at, std::string_view /*MACAddr*/) { decision_.pass(at); }

void NearestAsRule::radio(double at, bool hears) { decision_.setRadio(at, hears, at); }

std::string_view NearestAsRule::nearest(double at) {
    decision_.pass(at);
    const nearest::Device* chosen = decision_.chosen();
    return chosen == nullptr ? std::string_view() : std::string_view(chosen->MACAddr);
}

std::unique_ptr<Rule> makeNearestRule(const Settings& registry, const NearestSettings& settings) {
    return std::make_unique<NearestAsRule>(registry, settings);
}

}  // namespace nearcast::lab

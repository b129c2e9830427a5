// SPDX-License-Identifier: Apache-2.0
#include "lab/Deciding.h"

#include <nearcast/RadioHealth.h>

#include <cstddef>

namespace nearcast::lab {

namespace {

void tell(const PlaybackEvent& event, const Playback& playback, lab::Rule& rule) {
    using Kind = PlaybackEvent::Kind;
    if (event.kind == Kind::radio) return rule.radio(event.at, event.RSSI == CBManagerStatePoweredOn);
    if (event.dongle == PlaybackEvent::noDongle) return;
    const PlaybackDongle& dongle = playback.dongles[event.dongle];
    if (dongle.portName.empty()) return;
    switch (event.kind) {
        case Kind::heard: return rule.heard(event.at, dongle.MACAddr, event.RSSI);
        case Kind::reported: return rule.reported(event.at, dongle.MACAddr, event.RSSI);
        case Kind::silent: return rule.silent(event.at, dongle.MACAddr);
        default: return;
    }
}

}  // namespace

void tell(const Playback& playback, lab::Rule& rule, const std::function<void(double at)>& sample) {
    auto event = playback.events.begin();
    for (std::size_t count = 0;; ++count) {
        const double at = static_cast<double>(count) * lab::sampleInterval;
        if (at > playback.end) return;
        for (; event != playback.events.end() && event->at <= at; ++event) tell(*event, playback, rule);
        sample(at);
    }
}

lab::Answers answersOf(const Playback& playback, lab::Rule& rule) {
    lab::Answers answers;
    tell(playback, rule, [&](double at) { answers.emplace_back(rule.nearest(at)); });
    return answers;
}

}  // namespace nearcast::lab

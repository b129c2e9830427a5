// SPDX-License-Identifier: Apache-2.0
#include "report/DecisionLog.h"

#include <cmath>

namespace nearcast::cli {

namespace {

constexpr double levelScale = 10;

}  // namespace

std::int64_t milliseconds(double seconds) { return std::llround(seconds * 1000); }

DecisionLog::DecisionLog(const Settings& registry, const NearestSettings& settings, std::vector<ReportDongle>& dongles)
    : rule_(registry, settings), dongles_(dongles) {
    for (std::size_t place = 0; place < dongles.size(); ++place) {
        places_.emplace(dongles[place].MACAddr, static_cast<std::int32_t>(place));
    }
    for (const nearest::Device& device : rule_.devices()) {
        const std::int32_t place = placeOf(device.MACAddr);
        placeOfDevice_.push_back(place);
        if (place == noReportDongle) continue;
        ReportDongle& dongle = dongles_[static_cast<std::size_t>(place)];
        if (dongle.portName == device.portName) dongle.threshold = device.threshold;
    }
    note(0);
}

void DecisionLog::heard(double at, std::string_view MACAddr, std::int32_t RSSI) {
    rule_.heard(at, MACAddr, RSSI);
    note(at);
}

void DecisionLog::reported(double at, std::string_view MACAddr, std::int32_t RSSI) {
    rule_.reported(at, MACAddr, RSSI);
    note(at);
}

void DecisionLog::silent(double at, std::string_view MACAddr) {
    rule_.silent(at, MACAddr);
    note(at);
}

void DecisionLog::radio(double at, bool hears) {
    rule_.radio(at, hears);
    note(at);
}

std::string_view DecisionLog::nearest(double at) {
    const std::string_view answer = rule_.nearest(at);
    note(at);
    return answer;
}

void DecisionLog::sample(double at) {
    nearest(at);
    const auto& devices = rule_.devices();
    for (std::size_t index = 0; index < devices.size(); ++index) {
        if (!devices[index].level || placeOfDevice_[index] == noReportDongle) continue;
        ReportCurve& curve = dongles_[static_cast<std::size_t>(placeOfDevice_[index])].level;
        curve.add(milliseconds(at), std::llround(*devices[index].level * levelScale));
    }
}

void DecisionLog::note(double at) {
    if (!decisions_.empty() && rule_.changes() == noted_) return;
    noted_ = rule_.changes();
    const NearestChoice choice = rule_.choice();
    ReportDecision decision;
    decision.at = milliseconds(at);
    decision.rule = choice.rule;
    decision.stale = choice.stale;
    decision.distance = choice.distance;
    if (choice.device) {
        decision.dongle = placeOf(choice.device->MACAddr);
        decision.signal = choice.device->signal;
        decision.threshold = choice.device->threshold;
    }
    if (choice.runnerUp) {
        decision.runnerUp = placeOf(choice.runnerUp->MACAddr);
        decision.runnerUpSignal = choice.runnerUp->signal;
    }
    decisions_.push_back(decision);
}

std::int32_t DecisionLog::placeOf(const std::string& MACAddr) const {
    const auto known = places_.find(MACAddr);
    return known == places_.end() ? noReportDongle : known->second;
}

}  // namespace nearcast::cli

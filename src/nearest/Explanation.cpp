// SPDX-License-Identifier: Apache-2.0
#include "nearest/Decision.h"
#include "nearest/Figures.h"

#include <nearcast/Nearest.h>

#include <array>
#include <cmath>

namespace nearcast {

namespace {

constexpr std::array<std::string_view, 7> ruleNames = {"none inside", "entered", "led",    "left",
                                                       "silent",      "blind",   "removed"};

}  // namespace

std::string_view nameOf(NearestRule rule) noexcept {
    const auto index = static_cast<std::size_t>(rule);
    return index < ruleNames.size() ? ruleNames[index] : "unknown";
}

std::string NearestChoice::text() const {
    using nearest::oneDecimal;
    std::string text = "none";
    if (device) {
        text = device->portName + " at " + oneDecimal(device->signal) + " dBm (threshold " +
               oneDecimal(device->threshold) + ")";
    }
    if (distance) {
        text += *distance < 0 ? ", " + oneDecimal(-*distance) + " dB behind "
                              : ", " + oneDecimal(*distance) + " dB before ";
        text += runnerUp->portName;
    }
    text += ": " + std::string(nameOf(rule));
    if (stale) text += ", stale";
    return text;
}

namespace nearest {

namespace {

NearestCandidate candidate(const Device& device) {
    return {device.portName, device.MACAddr, device.level.value_or(0), device.threshold};
}

}  // namespace

NearestChoice Decision::choice() const {
    NearestChoice choice;
    choice.rule = rule_;
    choice.since = std::isfinite(since_) ? since_ : 0;
    choice.stale = present_ != none && stale_;
    if (present_ != none) choice.device = candidate(devices_[present_]);
    Index second = none;
    for (const Index index : audible_) {
        if (index == present_ || !devices_[index].insideSince) continue;
        if (second == none || *devices_[index].level > *devices_[second].level) second = index;
    }
    if (second != none) choice.runnerUp = candidate(devices_[second]);
    if (choice.device && choice.runnerUp) choice.distance = choice.device->signal - choice.runnerUp->signal;
    return choice;
}

std::vector<NearestExplanation> Decision::explain(double at) const {
    std::vector<NearestExplanation> all;
    all.reserve(devices_.size());
    for (const Device& device : devices_) all.push_back(explain(device, at));
    return all;
}

NearestExplanation Decision::explain(const Device& device, double at) const {
    NearestExplanation explanation;
    explanation.portName = device.portName;
    explanation.MACAddr = device.MACAddr;
    explanation.raw = device.raw;
    explanation.smoothed = device.smoothed;
    explanation.level = device.level;
    explanation.threshold = device.threshold;
    explanation.chosen = &device == chosen();
    explanation.met = met(device, at);
    explanation.missing = missing(device, at);
    return explanation;
}

std::string Decision::met(const Device& device, double at) const {
    std::string text;
    if (&device == chosen()) {
        text = "chosen for " + oneDecimal(at - since_) + " s: " + std::string(nameOf(rule_));
        if (stale_) text += ", not heard since the radio could not hear";
        return text;
    }
    if (!device.insideSince) return text;
    text = "inside for " + oneDecimal(at - *device.insideSince) + " s";
    if (const Device* present = chosen(); present != nullptr && *device.level > *present->level) {
        text += ", leads by " + oneDecimal(*device.level - *present->level) + " dB (" + oneDecimal(device.evidence) +
                " of " + oneDecimal(settings_.patience) + " dB s)";
    }
    return text;
}

std::string Decision::missing(const Device& device, double at) const {
    const Device* present = chosen();
    if (&device == present) return "";
    if (!device.hasDongle) return "its record names no dongle";
    const auto owner = byAddress_.find(device.MACAddr);
    if (owner != byAddress_.end() && &devices_[owner->second] != &device) {
        return "its address is that of " + devices_[owner->second].portName;
    }
    if (!device.everHeard) return "not heard";
    if (!device.level) return "unheard for " + oneDecimal(at - device.heardAt) + " s";
    if (!device.insideSince) return oneDecimal(device.threshold - *device.level) + " dB to its threshold";
    if (!device.isInside(at, settings_)) {
        return oneDecimal(settings_.dwell - (at - *device.insideSince)) + " s of the dwell time";
    }
    if (const double wait = waitsForMissed(device, at); present == nullptr && wait > 0) {
        return "waits " + oneDecimal(wait) + " s for " + devices_[missed_->device].portName + ", which was stronger";
    }
    if (present == nullptr) return "a stronger one is not inside for long enough";
    const double lead = *device.level - *present->level;
    if (lead < 0) return oneDecimal(-lead) + " dB behind " + present->portName;
    if (lead <= settings_.margin) return oneDecimal(settings_.margin - lead) + " dB to the margin";
    if (device.evidence < settings_.patience) {
        return oneDecimal(settings_.patience - device.evidence) + " dB s of lead";
    }
    return "a stronger one is ahead";
}

}  // namespace nearest

}  // namespace nearcast

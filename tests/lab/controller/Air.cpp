// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/Air.h"

#include "lab/controller/Reports.h"

#include <algorithm>

namespace nearcast::lab {

void Air::put(const std::string& name, Dongle dongle, Time now) {
    Emitter& emitter = emitters_[name];
    emitter.dongle = std::move(dongle);
    emitter.slot = now;
    plan(emitter);
}

bool Air::silence(const std::string& name, bool silent) {
    if (name == "*") {
        for (auto& [each, emitter] : emitters_) emitter.dongle.silent = silent;
        return true;
    }
    const auto found = emitters_.find(name);
    if (found == emitters_.end()) return false;
    found->second.dongle.silent = silent;
    return true;
}

std::optional<Time> Air::next() const {
    const auto first = std::min_element(emitters_.begin(), emitters_.end(), [](const auto& one, const auto& other) {
        return one.second.due < other.second.due;
    });
    if (first == emitters_.end()) return std::nullopt;
    return first->second.due;
}

void Air::advance(Time now, const Scan& scan, const Sink& sink) {
    for (;;) {
        const auto first = std::min_element(emitters_.begin(), emitters_.end(), [](const auto& one, const auto& other) {
            return one.second.due < other.second.due;
        });
        if (first == emitters_.end() || first->second.due > now) return;
        advertise(first->second, scan, sink);
        plan(first->second);
    }
}

std::map<std::string, Tally> Air::tallies() const {
    std::map<std::string, Tally> result;
    for (const auto& [name, emitter] : emitters_) result[name] = emitter.tally;
    return result;
}

void Air::advertise(Emitter& emitter, const Scan& scan, const Sink& sink) {
    const Dongle& dongle = emitter.dongle;
    if (dongle.silent) return;
    const int rssi = dongle.rssi[emitter.tally.aired % dongle.rssi.size()];
    ++emitter.tally.aired;
    if (!scan.enabled || deaf_ || (dongle.extended && !scan.extended)) return;
    if (passesFilter(dongle, false, scan)) {
        ++emitter.tally.reported;
        report(dongle, rssi, false, scan, sink);
    }
    const bool asked = scan.active && takesScanRequests(dongle) && dongle.answersScans;
    if (asked && passesFilter(dongle, true, scan)) report(dongle, rssi, true, scan, sink);
}

void Air::report(const Dongle& dongle, int rssi, bool response, const Scan& scan, const Sink& sink) {
    for (const Bytes& event : reportEvents(dongle, rssi, scan.extended, response)) sink(event);
}

bool Air::passesFilter(const Dongle& dongle, bool response, const Scan& scan) {
    if (!strict_ || !scan.filterDuplicates) return true;
    if (seenInEnable_ != scan.enables) seen_.clear();
    seenInEnable_ = scan.enables;
    return seen_.emplace(dongle.address, dongle.random, response).second;
}

void Air::plan(Emitter& emitter) {
    constexpr Time longestDelay{10'000};
    std::uniform_int_distribution<Time::rep> delay(0, longestDelay.count());
    emitter.slot += std::chrono::duration_cast<Time>(std::chrono::duration<double>(1 / emitter.dongle.rate));
    emitter.due = emitter.slot + Time(delay(random_));
}

}  // namespace nearcast::lab

// SPDX-License-Identifier: Apache-2.0
#include "report/ReportData.h"

#include "common/Words.h"
#include "lab/NearestAsRule.h"
#include "lab/Rule.h"
#include "support/SecretHash.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

namespace nearcast::cli {

namespace {

using lab::Playback;
using lab::PlaybackEvent;

constexpr double levelScale = 10;

/// Seconds as whole milliseconds.
std::int64_t milliseconds(double seconds) { return std::llround(seconds * 1000); }

/// Passes everything on to `Nearest` and records its decision whenever that changes.
class DecisionLog : public lab::Rule {
public:
    /// @param dongles the decisions name them by their places; `sample` adds their levels. Has to outlive this object.
    DecisionLog(const Settings& registry, const NearestSettings& settings, std::vector<ReportDongle>& dongles);

    void heard(double at, std::string_view MACAddr, std::int32_t RSSI) override;
    void reported(double at, std::string_view MACAddr, std::int32_t RSSI) override;
    void silent(double at, std::string_view MACAddr) override;
    void radio(double at, bool hears) override;
    std::string_view nearest(double at) override;

    /// Advances the time to that moment, and records the levels.
    void sample(double at);

    [[nodiscard]] std::vector<ReportDecision> take() { return std::move(decisions_); }

private:
    void note(double at);
    [[nodiscard]] std::int32_t placeOf(const std::string& MACAddr) const;

    lab::NearestAsRule rule_;
    std::vector<ReportDongle>& dongles_;
    std::unordered_map<std::string, std::int32_t, SecretHash> places_;
    std::vector<std::int32_t> placeOfDevice_;
    std::uint64_t noted_ = 0;
    std::vector<ReportDecision> decisions_;
};

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

ReportDongle dongleOf(const lab::PlaybackDongle& known, double defaultThreshold) {
    ReportDongle dongle;
    dongle.portName = known.portName;
    dongle.nickName = known.nickName;
    dongle.MACAddr = known.MACAddr;
    dongle.ownThreshold = known.threshold.has_value();
    dongle.threshold = known.threshold ? *known.threshold : defaultThreshold;
    return dongle;
}

/// Sorts events into the curves of their dongles, the radio's states and the scans.
class EventSorter {
public:
    explicit EventSorter(ReportData& data) : data_(data) {}

    void add(const PlaybackEvent& event) {
        const std::int64_t at = milliseconds(event.at);
        switch (event.kind) {
            case PlaybackEvent::Kind::heard: dongle(event).raw.add(at, event.RSSI); break;
            case PlaybackEvent::Kind::reported: dongle(event).smoothed.add(at, event.RSSI); break;
            case PlaybackEvent::Kind::silent: dongle(event).silent.push_back(at); break;
            case PlaybackEvent::Kind::radio: addRadio(at, static_cast<CBManagerState>(event.RSSI)); break;
            case PlaybackEvent::Kind::scanStarted: data_.scans.push_back({at, "started"}); break;
            case PlaybackEvent::Kind::scanRestarted: data_.scans.push_back({at, "restarted"}); break;
            case PlaybackEvent::Kind::scanStopped: data_.scans.push_back({at, "stopped"}); break;
        }
    }

private:
    ReportDongle& dongle(const PlaybackEvent& event) { return data_.dongles.at(event.dongle); }
    void addRadio(std::int64_t at, CBManagerState state) {
        data_.radio.push_back({at, state == CBManagerStatePoweredOn, nameOf(state)});
    }

    ReportData& data_;
};

/// The place of a dongle of the truth. One that was neither registered nor heard is added.
std::int32_t placeOf(const std::string& MACAddr, ReportData& data) {
    if (MACAddr.empty()) return noReportDongle;
    auto& dongles = data.dongles;
    const auto known = std::find_if(dongles.begin(), dongles.end(),
                                    [&](const ReportDongle& dongle) { return dongle.MACAddr == MACAddr; });
    if (known != dongles.end()) return static_cast<std::int32_t>(known - dongles.begin());
    ReportDongle dongle;
    dongle.MACAddr = MACAddr;
    dongle.threshold = data.settings.defaultThreshold;
    dongles.push_back(std::move(dongle));
    return static_cast<std::int32_t>(dongles.size() - 1);
}

void addTruth(const lines::Truth& truth, ReportData& data) {
    auto& marks = data.truth.emplace();
    for (const lines::TruthMark& mark : lines::changesOf(truth)) {
        marks.push_back({milliseconds(mark.at), placeOf(mark.MACAddr, data)});
    }
}

void decide(const Playback& playback, ReportData& data) {
    DecisionLog log(*playback.registry, data.settings, data.dongles);
    lab::tell(playback, log, [&](const lab::Samples& samples) { log.sample(samples.to()); });
    data.decisions = log.take();
}

}  // namespace

ReportData reportOf(const Playback& playback, const NearestSettings& settings, const lines::Truth* truth) {
    ReportData data;
    data.sources = {playback.name};
    data.settings = settings;
    data.end = milliseconds(playback.end);
    for (const auto& dongle : playback.dongles) data.dongles.push_back(dongleOf(dongle, settings.defaultThreshold));
    EventSorter sorter(data);
    for (const PlaybackEvent& event : playback.events) {
        // What the manager tells after the end (silences) belongs to no moment of the recording.
        if (event.at <= playback.end) sorter.add(event);
    }
    decide(playback, data);
    if (truth != nullptr) addTruth(*truth, data);
    return data;
}

}  // namespace nearcast::cli

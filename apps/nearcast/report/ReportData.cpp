// SPDX-License-Identifier: Apache-2.0
#include "report/ReportData.h"

#include "common/Words.h"
#include "lab/Deciding.h"
#include "report/DecisionLog.h"

#include <algorithm>

namespace nearcast::cli {

namespace {

using lab::Playback;
using lab::PlaybackEvent;

ReportDongle dongleOf(const lab::PlaybackDongle& known, double defaultThreshold) {
    ReportDongle dongle;
    dongle.portName = known.portName;
    dongle.nickName = known.nickName;
    dongle.MACAddr = known.MACAddr;
    dongle.ownThreshold = known.threshold.has_value();
    dongle.threshold = known.threshold ? *known.threshold : defaultThreshold;
    return dongle;
}

/// Adds what happened to the dongles and to the radio.
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
        data_.radio.push_back({at, state == CBManagerStatePoweredOn, stateName(state)});
    }

    ReportData& data_;
};

/// The place of a dongle of the truth; one that was neither registered nor heard gets one.
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

void addTruth(const lab::Truth& truth, ReportData& data) {
    auto& marks = data.truth.emplace();
    for (const lab::TruthMark& mark : lab::changesOf(truth)) {
        marks.push_back({milliseconds(mark.at), placeOf(mark.MACAddr, data)});
    }
}

void decide(const Playback& playback, ReportData& data) {
    DecisionLog log(*playback.registry, data.settings, data.dongles);
    lab::tell(playback, log, [&](double at) { log.sample(at); });
    data.decisions = log.take();
}

}  // namespace

ReportData reportOf(const Playback& playback, const NearestSettings& settings, const lab::Truth* truth) {
    ReportData data;
    data.sources = {playback.name};
    data.settings = settings;
    data.end = milliseconds(playback.end);
    for (const auto& dongle : playback.dongles) data.dongles.push_back(dongleOf(dongle, settings.defaultThreshold));
    EventSorter sorter(data);
    for (const PlaybackEvent& event : playback.events) {
        // What follows from the recording's end belongs to no moment of it.
        if (event.at <= playback.end) sorter.add(event);
    }
    decide(playback, data);
    if (truth != nullptr) addTruth(*truth, data);
    return data;
}

}  // namespace nearcast::cli

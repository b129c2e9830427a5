// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Nearest.h>
#include <nearcast/NearestSettings.h>

#include "lab/Playback.h"
#include "lines/Truth.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::cli {

/// What the page of a report shows, as columns. Times are in whole milliseconds on the recording's clock. Dongles are
/// named by their place in `ReportData::dongles`.
struct ReportCurve {
    std::vector<std::int64_t> at;
    std::vector<std::int64_t> value;

    void add(std::int64_t when, std::int64_t what) {
        at.push_back(when);
        value.push_back(what);
    }
};

/// In place of a dongle: none.
inline constexpr std::int32_t noReportDongle = -1;

struct ReportDongle {
    std::string portName;
    std::string nickName;
    std::string MACAddr;
    double threshold = 0;       ///< dBm
    bool ownThreshold = false;  ///< not the default one
    ReportCurve raw;            ///< readings in dBm
    ReportCurve smoothed;       ///< the manager's reports in dBm
    ReportCurve level;          ///< what the decision compares, in tenths of dBm, where it changes
    std::vector<std::int64_t> silent;
};

/// A choice, which holds up to the next one.
struct ReportDecision {
    std::int64_t at = 0;
    std::int32_t dongle = noReportDongle;
    NearestRule rule = NearestRule::noneInside;
    double signal = 0;     ///< dBm; of the dongle, where there is one
    double threshold = 0;  ///< dBm
    std::int32_t runnerUp = noReportDongle;
    double runnerUpSignal = 0;       ///< dBm
    std::optional<double> distance;  ///< dB
    bool stale = false;
};

struct ReportTruth {
    std::int64_t at = 0;
    std::int32_t dongle = noReportDongle;
};

struct ReportRadio {
    std::int64_t at = 0;
    bool hears = false;
    std::string state;  ///< in words
};

struct ReportScan {
    std::int64_t at = 0;
    std::string what;  ///< "started", "restarted", "stopped"
};

struct ReportData {
    std::string title;
    std::vector<std::string> sources;
    std::int64_t end = 0;
    NearestSettings settings;
    std::vector<ReportDongle> dongles;
    std::vector<ReportDecision> decisions;
    std::optional<std::vector<ReportTruth>> truth;
    std::vector<ReportRadio> radio;
    std::vector<ReportScan> scans;
};

/// Gathers what the page shows of a recording that was played: `Nearest` decides on it with these settings.
/// @param truth where the user stood; null: that is not known
/// @throws std::invalid_argument as `NearestSettings::validate`
ReportData reportOf(const lab::Playback& playback, const NearestSettings& settings, const lines::Truth* truth);

}  // namespace nearcast::cli

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

/// What the page shows, as columns. Times are in whole milliseconds on the recording's clock. Dongles are
/// named by their place in `ReportData::dongles`.
struct ReportCurve {
    std::vector<std::int64_t> at;
    std::vector<std::int64_t> value;

    void add(std::int64_t when, std::int64_t what) {
        at.push_back(when);
        value.push_back(what);
    }
};

/// The place of no dongle.
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

/// A decision, valid until the next one.
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

/// Collects the page's data from a playback, on which `Nearest` decides with these settings.
/// @param truth where the user stood; null where that is not known
/// @throws std::invalid_argument as `NearestSettings::validate`
ReportData reportOf(const lab::Playback& playback, const NearestSettings& settings, const lines::Truth* truth);

/// The data as the page reads it (docs/reports.md), in JSON. Text that is not UTF-8 is written with the replacement
/// character. Columns hold whole numbers, each as its difference from the one before.
/// @param program name and version of the program that writes the page
std::string JSONOf(const ReportData& data, const std::string& program);

}  // namespace nearcast::cli

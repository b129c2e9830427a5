// SPDX-License-Identifier: Apache-2.0
#include "doctor/Diagnosis.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace nearcast::cli {

namespace {

using JSON = nlohmann::ordered_json;

std::string_view levelName(Level level) {
    switch (level) {
        case Level::good: return "good";
        case Level::note: return "note";
        case Level::remark: return "remark";
        case Level::fault: break;
    }
    return "fault";
}

double rounded(double value) { return std::round(value * 1000) / 1000; }

JSON asJSON(const CheckedFinding& finding) {
    return {{"check", finding.check},
            {"level", levelName(finding.finding.level)},
            {"text", finding.finding.text},
            {"advice", finding.finding.advice}};
}

JSON asJSON(const DongleHearing& dongle, double seconds) {
    JSON result = {{"MACAddr", dongle.address}, {"reports", dongle.reports}};
    result["reportsPerSecond"] = seconds > 0 ? rounded(static_cast<double>(dongle.reports) / seconds) : 0;
    result["services"] = dongle.services;
    result["payloads"] = dongle.payloads;
    result["names"] = dongle.names;
    result["RSSI"] = dongle.signals != 0 ? JSON(rounded(dongle.meanRSSI)) : JSON();
    result["longestGap"] = rounded(dongle.longestGap);
    return result;
}

JSON asJSON(const Hearing& hearing, const RadioHealth& health) {
    JSON result = {{"seconds", rounded(hearing.seconds)},
                   {"state", static_cast<std::int64_t>(health.state)},
                   {"why", health.why},
                   {"restarts", health.restarts},
                   {"reports", hearing.reports},
                   {"foreign", hearing.foreign}};
    result["dongles"] = JSON::array();
    for (const DongleHearing& dongle : hearing.dongles) result["dongles"].push_back(asJSON(dongle, hearing.seconds));
    return result;
}

}  // namespace

std::string diagnosisAsJSON(const Diagnosis& diagnosis) {
    JSON result = {{"radio", diagnosis.radio}, {"status", static_cast<int>(diagnosis.verdict())}};
    result["findings"] = JSON::array();
    for (const CheckedFinding& finding : diagnosis.findings) result["findings"].push_back(asJSON(finding));
    result["scan"] = diagnosis.hearing ? asJSON(*diagnosis.hearing, diagnosis.health) : JSON();
    return result.dump(-1, ' ', false, JSON::error_handler_t::replace);
}

}  // namespace nearcast::cli

// SPDX-License-Identifier: Apache-2.0
#include "doctor/Diagnosis.h"

#include "common/JSONText.h"
#include "common/UsageError.h"
#include "common/Words.h"
#include "doctor/ScanFindings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace nearcast::cli {

namespace {

constexpr std::size_t checkWidth = 14;
constexpr std::size_t levelWidth = 8;
constexpr std::size_t addressWidth = 23;

std::string_view levelInColumns(Level level) {
    switch (level) {
        case Level::good: return "ok";
        case Level::note: return "note";
        case Level::remark: return "remark";
        case Level::fault: break;
    }
    return "FAULT";
}

template <class... Values>
std::string formatted(const char* format, Values... values) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

double percent(std::uint64_t part, std::uint64_t whole) {
    return whole == 0 ? 0 : 100 * static_cast<double>(part) / static_cast<double>(whole);
}

std::string dongleInColumns(const DongleHearing& dongle, double seconds) {
    const double rate = seconds > 0 ? static_cast<double>(dongle.reports) / seconds : 0;
    std::string text = column(dongle.address, addressWidth);
    text += formatted("%8llu %6.1f", static_cast<unsigned long long>(dongle.reports), rate);
    text += formatted(" %7.0f%% %7.0f%% %5.0f%%", percent(dongle.services, dongle.reports),
                      percent(dongle.payloads, dongle.reports), percent(dongle.names, dongle.reports));
    text += dongle.signals != 0 ? formatted(" %5.0f dBm", dongle.meanRSSI) : "         -";
    return text + formatted(" %5.1f s\n", dongle.longestGap);
}

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

std::string_view verdictName(Verdict verdict) {
    switch (verdict) {
        case Verdict::well: return "well";
        case Verdict::remarks: return "remarks";
        case Verdict::noScan: break;
    }
    return "noScan";
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

Verdict Diagnosis::verdict() const {
    if (!hearing || !scanWorks(*hearing, health)) return Verdict::noScan;
    const bool remarks = std::any_of(findings.begin(), findings.end(),
                                     [](const CheckedFinding& one) { return one.finding.level >= Level::remark; });
    return remarks ? Verdict::remarks : Verdict::well;
}

int Diagnosis::status() const { return failed ? exitFailed : statusOf(verdict()); }

std::string findingInColumns(const CheckedFinding& finding) {
    std::string text = column(finding.check, checkWidth) + column(levelInColumns(finding.finding.level), levelWidth);
    text += printable(finding.finding.text) + "\n";
    if (finding.finding.advice.empty()) return text;
    return text + std::string(checkWidth + levelWidth, ' ') + "-> " + printable(finding.finding.advice) + "\n";
}

std::string hearingInColumns(const Hearing& hearing) {
    if (hearing.dongles.empty()) return "";
    std::string text = column("DONGLE", addressWidth) + " REPORTS  PER S  SERVICE  PAYLOAD  NAME    SIGNAL     GAP\n";
    for (const DongleHearing& dongle : hearing.dongles) text += dongleInColumns(dongle, hearing.seconds);
    return text;
}

std::string verdictInWords(Verdict verdict) {
    switch (verdict) {
        case Verdict::well: return "The scan works.";
        case Verdict::remarks: return "The scan works; see the remarks.";
        case Verdict::noScan: break;
    }
    return "There is no working scan.";
}

std::string diagnosisAsJSON(const Diagnosis& diagnosis) {
    JSON result = {
        {"radio", diagnosis.radio}, {"status", diagnosis.status()}, {"verdict", verdictName(diagnosis.verdict())}};
    result["findings"] = JSON::array();
    for (const CheckedFinding& finding : diagnosis.findings) result["findings"].push_back(asJSON(finding));
    result["scan"] = diagnosis.hearing ? asJSON(*diagnosis.hearing, diagnosis.health) : JSON();
    return textOf(result);
}

}  // namespace nearcast::cli

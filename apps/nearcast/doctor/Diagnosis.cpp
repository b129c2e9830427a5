// SPDX-License-Identifier: Apache-2.0
#include "doctor/Diagnosis.h"

#include "doctor/ScanFindings.h"
#include "common/Words.h"

#include <algorithm>
#include <array>
#include <cstdio>

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

}  // namespace

Verdict Diagnosis::verdict() const {
    if (!hearing || !scanWorks(*hearing, health)) return verdictNoScan;
    const bool remarks = std::any_of(findings.begin(), findings.end(),
                                     [](const CheckedFinding& one) { return one.finding.level >= Level::remark; });
    return remarks ? verdictRemarks : verdictWell;
}

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
        case verdictWell: return "The scan works.";
        case verdictRemarks: return "The scan works; see the remarks.";
        case verdictNoScan: break;
    }
    return "There is no working scan.";
}

}  // namespace nearcast::cli

// SPDX-License-Identifier: Apache-2.0
#include "doctor/Hearing.h"

#include "common/Words.h"
#include "lines/Line.h"
#include "platform/hciformat/RawReport.h"

#include <algorithm>
#include <span>

namespace nearcast::cli {

namespace {

constexpr std::size_t addressOctets = 6;
constexpr std::string_view nameMarker = "QX";

bool hasDongleService(const AdvertisingReport& report) {
    static const CBUUID service = CBUUID::UUIDWithString(lines::dongleService);
    return std::find(report.services.begin(), report.services.end(), service) != report.services.end();
}

double secondsOf(std::chrono::microseconds time) { return std::chrono::duration<double>(time).count(); }

}  // namespace

std::optional<std::string> addressInPayload(const AdvertisingReport& report) {
    if (!report.manufacturerData || report.manufacturerData->size() < 2 + addressOctets) return std::nullopt;
    const std::span<const std::uint8_t> payload(*report.manufacturerData);
    if (payload[0] != 0xFF || payload[1] != 0xFF) return std::nullopt;
    return addressText(payload.subspan(2, addressOctets));
}

std::optional<std::string> addressInName(const AdvertisingReport& report) {
    constexpr std::size_t length = nameMarker.size() + 2 * addressOctets;
    if (!report.name || report.name->size() < length || !report.name->starts_with(nameMarker)) return std::nullopt;
    const std::string_view digits = std::string_view(*report.name).substr(nameMarker.size(), 2 * addressOctets);
    if (digits.find_first_not_of("0123456789ABCDEFabcdef") != std::string_view::npos) return std::nullopt;
    std::string text;
    for (std::size_t place = 0; place < digits.size(); place += 2) {
        text.append(text.empty() ? "" : ":").append(digits.substr(place, 2));
    }
    return text;
}

std::optional<std::string> HearingCounter::dongleOf(const AdvertisingReport& report, bool service) {
    auto said = addressInPayload(report);
    if (!said) said = addressInName(report);
    if (!report.address) {
        if (!said && service) said = "from an unknown sender";
        return said;
    }
    const auto known = senders_.find(*report.address);
    if (said) {
        if (known != senders_.end()) {
            known->second = *said;
        } else if (senders_.size() < mostSenders) {
            senders_.emplace(*report.address, *said);
        }
        return said;
    }
    if (known != senders_.end()) return known->second;
    if (service) said = "from " + addressText(*report.address);
    return said;
}

void HearingCounter::heard(const AdvertisingReport& report, Time at) {
    const bool service = hasDongleService(report);
    const MutexLock lock(mutex_);
    ++reports_;
    const auto address = dongleOf(report, service);
    const bool room = address && (dongles_.size() < mostDongles || dongles_.count(*address) != 0);
    if (!room) {
        ++foreign_;
        return;
    }
    Dongle& dongle = dongles_[*address];
    DongleHearing& hearing = dongle.hearing;
    if (hearing.reports++ != 0) hearing.longestGap = std::max(hearing.longestGap, secondsOf(at - dongle.last));
    dongle.last = at;
    hearing.services += service ? 1U : 0U;
    hearing.payloads += addressInPayload(report) ? 1U : 0U;
    hearing.names += addressInName(report) ? 1U : 0U;
    if (report.RSSI == noRSSI) return;
    ++hearing.signals;
    dongle.sumRSSI += report.RSSI;
}

Hearing HearingCounter::result(Time end) const {
    const MutexLock lock(mutex_);
    Hearing result;
    result.seconds = secondsOf(end);
    result.reports = reports_;
    result.foreign = foreign_;
    for (const auto& [address, dongle] : dongles_) {
        DongleHearing hearing = dongle.hearing;
        hearing.address = address;
        hearing.longestGap = std::max(hearing.longestGap, secondsOf(end - dongle.last));
        if (hearing.signals != 0) hearing.meanRSSI = dongle.sumRSSI / static_cast<double>(hearing.signals);
        result.dongles.push_back(std::move(hearing));
    }
    std::stable_sort(
        result.dongles.begin(), result.dongles.end(),
        [](const DongleHearing& left, const DongleHearing& right) { return left.reports > right.reports; });
    return result;
}

}  // namespace nearcast::cli

// SPDX-License-Identifier: Apache-2.0
#include "doctor/Hearing.h"

#include "common/Words.h"
#include "platform/hciformat/RawReport.h"
#include "support/Dongle.h"

#include <algorithm>
#include <utility>

namespace nearcast::cli {

namespace {

bool hasDongleService(const AdvertisingReport& report) {
    static const CBUUID service = CBUUID::UUIDWithString(dongle::serviceUUID);
    return std::find(report.services.begin(), report.services.end(), service) != report.services.end();
}

double secondsOf(std::chrono::microseconds time) { return std::chrono::duration<double>(time).count(); }

}  // namespace

std::optional<SaidAddress> addressSaidIn(const AdvertisingReport& report) {
    DongleAddress address;
    if (!address.read(report.manufacturerData, report.name)) return std::nullopt;
    const bool inPayload = dongle::isMarked(*report.manufacturerData);
    // The manager's scan passes the others over. Most of them are no dongles, and have names all the same.
    const bool looksLikeDongle = inPayload || report.name->starts_with(dongle::nameMarker);
    if (!looksLikeDongle && !hasDongleService(report)) return std::nullopt;
    return SaidAddress{std::string(address.text()), inPayload};
}

std::optional<std::string> HearingCounter::dongleOf(const AdvertisingReport& report, std::optional<std::string> said,
                                                    bool service) {
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
    const auto said = addressSaidIn(report);
    const MutexLock lock(mutex_);
    ++reports_;
    // The answer to a scan request is a report of its own, and a filter lets each of the two through.
    if (report.address && !report.scanResponse) repeats_.heard(*report.address, at);
    const auto address = dongleOf(report, said ? std::optional(said->text) : std::nullopt, service);
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
    hearing.payloads += said && said->inPayload ? 1U : 0U;
    hearing.names += said && !said->inPayload ? 1U : 0U;
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
    result.senders = repeats_.senders();
    result.repeats = repeats_.seen();
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

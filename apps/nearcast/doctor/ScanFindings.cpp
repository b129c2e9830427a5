// SPDX-License-Identifier: Apache-2.0
#include "doctor/ScanFindings.h"

#include "common/Words.h"
#include "common/radio/Readiness.h"

#include <chrono>

namespace nearcast::cli {

namespace {

Finding radioFinding(const Hearing& hearing, const RadioHealth& health) {
    if (health.state != CBManagerStatePoweredOn) {
        return {Level::fault, "the radio is " + stateInWords(health), "see what is wrong above"};
    }
    if (hearing.reports == 0) {
        return {Level::fault,
                "nothing at all was heard in " + decimals(hearing.seconds) + " s" +
                    (health.why.empty() ? "" : ": " + health.why),
                "bring a dongle or a phone close and try again; if still nothing is heard the radio is blind, or "
                "bluetoothd "
                "has lost its scan: sudo systemctl restart bluetooth, or unplug the adapter and plug it in again"};
    }
    const double rate = hearing.seconds > 0 ? static_cast<double>(hearing.reports) / hearing.seconds : 0;
    const std::string text = counted(hearing.reports, "report") + ", " + decimals(rate) +
                             " a second: " + std::to_string(hearing.reports - hearing.foreign) + " of " +
                             counted(hearing.dongles.size(), "dongle") + ", " + std::to_string(hearing.foreign) +
                             " of others";
    return {Level::good, text, ""};
}

void addDongleFindings(const DongleHearing& dongle, std::vector<Finding>& findings) {
    const std::string& address = dongle.address;
    if (dongle.services == 0) {
        findings.push_back({Level::note, address + " never carried the dongle service",
                            "the manager's scan does not hear it; it may be a foreign device with the same company "
                            "identifier, or a dongle with another firmware"});
        return;
    }
    if (dongle.payloads == 0 && dongle.names == 0) {
        findings.push_back({Level::remark, "the dongle " + address + " never said its address",
                            "renew the dongle's firmware: neither its manufacturer data nor its name is usable"});
    }
    if (dongle.signals == 0) {
        findings.push_back({Level::remark, address + " was heard without a reading of its signal (127)",
                            "the controller gives no signal strength: use another adapter"});
    }
    if (dongle.longestGap >= silence) {
        findings.push_back({Level::remark,
                            address + " was not heard for " + decimals(dongle.longestGap) + " s, and after " +
                                decimals(silence) + " s the manager takes it for gone",
                            "bring it closer"});
    }
}

}  // namespace

std::optional<Finding> duplicatesFinding(const Hearing& hearing) {
    if (hearing.repeats) return Finding{Level::good, "repeated reports of a sender come through", ""};
    const std::chrono::duration<double> enough = Repeats::close;
    if (hearing.seconds < enough.count() || hearing.dongles.empty() || hearing.senders == 0) return std::nullopt;
    return Finding{Level::remark,
                   "no sender was heard three times within five seconds, as where the controller keeps repeated "
                   "reports to itself",
                   "start bluetoothd with -E, which asks the controller for all reports, or listen by 'hci:N'; where "
                   "only distant dongles were heard, bring one close and try again"};
}

Finding missingFinding(const RadioHealth& health) {
    return {Level::fault, "not tried: " + reasonOf(health),
            "see what is wrong above; 'nearcast doctor --radio simulator' tries all but the radio"};
}

bool scanWorks(const Hearing& hearing, const RadioHealth& health) {
    return health.state == CBManagerStatePoweredOn && hearing.reports != 0;
}

std::vector<Finding> scanFindings(const Hearing& hearing, const RadioHealth& health) {
    std::vector<Finding> findings{radioFinding(hearing, health)};
    if (health.forged != 0) {
        findings.push_back({Level::remark,
                            counted(health.forged, "message") +
                                " in bluetoothd's name came from another program; none of them was believed",
                            "find out which program it is: the line above names its connection for 'busctl status'"});
    }
    if (!scanWorks(hearing, health)) return findings;
    if (health.restarts != 0) {
        findings.push_back({Level::remark, "the scan had to be begun again " + counted(health.restarts, "time"),
                            "if it happens often, use another adapter, or one for nearcast alone"});
    }
    if (hearing.dongles.empty()) {
        findings.push_back(
            {Level::remark, "the radio works, but no dongle was heard", "switch a dongle on and bring it close"});
    }
    for (const DongleHearing& dongle : hearing.dongles) addDongleFindings(dongle, findings);
    return findings;
}

}  // namespace nearcast::cli

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Rule.h"
#include "nearest/Decision.h"

#include <nearcast/NearestSettings.h>
#include <nearcast/SettingRecord.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace nearcast::lab {

/// What `Nearest` decides, as a rule to be compared, and with its reasons.
class NearestAsRule : public Rule {
public:
    /// @throws std::invalid_argument as `NearestSettings::validate`
    NearestAsRule(const Settings& registry, const NearestSettings& settings) : decision_(settings) {
        decision_.setRegistry(0, registry);
    }

    void heard(double at, std::string_view MACAddr, std::int32_t RSSI) override { decision_.heard(at, MACAddr, RSSI); }
    void reported(double at, std::string_view MACAddr, std::int32_t RSSI) override {
        decision_.reported(at, MACAddr, RSSI);
    }
    void silent(double at, std::string_view /*MACAddr*/) override { decision_.pass(at); }
    void radio(double at, bool hears) override { decision_.setRadio(at, hears, at); }
    std::string_view nearest(double at) override {
        decision_.pass(at);
        const nearest::Device* chosen = decision_.chosen();
        return chosen == nullptr ? std::string_view() : std::string_view(chosen->MACAddr);
    }

    /// The choice and why, as of the last call.
    [[nodiscard]] NearestChoice choice() const { return decision_.choice(); }
    /// What is known of each device, as of the last call.
    [[nodiscard]] std::vector<NearestExplanation> explain(double at) const { return decision_.explain(at); }
    /// The same without words, in the registry's order.
    [[nodiscard]] const std::vector<nearest::Device>& devices() const noexcept { return decision_.devices(); }
    /// Grows with each change of the chosen device or of its staleness.
    [[nodiscard]] std::uint64_t changes() const noexcept { return decision_.changes(); }

private:
    nearest::Decision decision_;
};

}  // namespace nearcast::lab

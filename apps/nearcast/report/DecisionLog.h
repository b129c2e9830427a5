// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/NearestAsRule.h"
#include "lab/Rule.h"
#include "report/ReportData.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace nearcast::cli {

/// Hands everything on to `Nearest` and writes down how it decides, at the moments at which that changes.
class DecisionLog : public lab::Rule {
public:
    /// @param dongles whose places the decisions name; their levels are added by `sample`. Lives longer.
    DecisionLog(const Settings& registry, const NearestSettings& settings, std::vector<ReportDongle>& dongles);

    void heard(double at, std::string_view MACAddr, std::int32_t RSSI) override;
    void reported(double at, std::string_view MACAddr, std::int32_t RSSI) override;
    void silent(double at, std::string_view MACAddr) override;
    void radio(double at, bool hears) override;
    std::string_view nearest(double at) override;

    /// Lets time pass up to that moment, and notes the levels.
    void sample(double at);

    [[nodiscard]] std::vector<ReportDecision> take() { return std::move(decisions_); }

private:
    void note(double at);
    [[nodiscard]] std::int32_t placeOf(const std::string& MACAddr) const;

    lab::NearestAsRule rule_;
    std::vector<ReportDongle>& dongles_;
    std::unordered_map<std::string, std::int32_t> places_;
    std::vector<std::int32_t> placeOfDevice_;
    std::uint64_t noted_ = 0;
    std::vector<ReportDecision> decisions_;
};

/// Seconds as whole milliseconds.
std::int64_t milliseconds(double seconds);

}  // namespace nearcast::cli

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Playback.h"
#include "lab/Samples.h"

#include <nearcast/NearestSettings.h>
#include <nearcast/SettingRecord.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::lab {

/// A way to decide which dongle is nearest, to be compared with others. It receives what was heard, in order of time,
/// and is asked at intervals. One thread. Times are in seconds, addresses as the manager writes them.
class Rule {
public:
    virtual ~Rule() = default;
    Rule() = default;
    Rule(const Rule&) = delete;
    Rule& operator=(const Rule&) = delete;

    /// A raw reading in dBm; never 127.
    virtual void heard(double at, std::string_view MACAddr, std::int32_t RSSI) = 0;
    /// The manager's smoothed report in dBm. It comes after the raw reading that caused it.
    virtual void reported(double /*at*/, std::string_view /*MACAddr*/, std::int32_t /*RSSI*/) {}
    /// The manager reported that the dongle has fallen silent.
    virtual void silent(double /*at*/, std::string_view /*MACAddr*/) {}
    /// The radio can hear again, or cannot.
    virtual void radio(double /*at*/, bool /*hears*/) {}
    /// The address of the dongle that is nearest at this moment; "" for none. Valid until the next call.
    virtual std::string_view nearest(double at) = 0;
};

/// What a rule answered at samples in a row.
struct SameAnswer {
    std::string answer;  ///< the address of a dongle, or "" for none
    std::uint64_t count = 1;

    friend bool operator==(const SameAnswer&, const SameAnswer&) = default;
};

/// What a rule answered each time it was asked, from the first sample on; of neighbours no two are the same.
using Answers = std::vector<SameAnswer>;

/// Passes the events of a playback to a rule, of the registered dongles only, and asks for the nearest one at each
/// sample up to the recording's end, that moment included. Events at the time of a sample come before it.
///
/// Where nothing happens for hours, all that a rule still does by itself is soon over. What is left of the time until
/// the next event is asked for once, at its last sample: the answer is that of each of its samples.
Answers answersOf(const Playback& playback, Rule& rule);

/// The same, with a function called at each sample, or for such a time, instead of the question. The rule is to be
/// asked for its last sample.
void tell(const Playback& playback, Rule& rule, const std::function<void(const Samples& samples)>& sample);

/// A rule by its name.
struct NamedRule {
    std::string_view name;
    std::string_view description;  ///< one line for people
    std::unique_ptr<Rule> (*make)(const Settings& registry, const NearestSettings& settings);
};

/// The rule that `Nearest` follows; the others are for comparison.
inline constexpr std::string_view nearestRuleName = "nearest";

/// All of them, `nearest` last. Only the `make` of `nearest` uses the settings, and throws std::invalid_argument when
/// they are not valid.
std::span<const NamedRule> rules() noexcept;
/// Null if there is none of that name.
const NamedRule* findRule(std::string_view name) noexcept;

}  // namespace nearcast::lab

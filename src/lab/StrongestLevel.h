// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Rule.h"
#include "lab/Level.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace nearcast::lab {

/// The rule that all rules for comparison follow, each with a level of its own: nearest is the dongle with the highest
/// level. One unheard for 5 s is out and begins anew when it is heard again. Of several with the same level the present
/// one stays, and else it is the one that has been there for longest.
///
/// It knows every dongle that it was told of; who feeds it decides which.
class StrongestLevel : public Rule {
public:
    static constexpr double presence = 5;  ///< seconds

    /// Which readings the levels are made of.
    enum class Source { raw, reports };
    using MakeLevel = std::function<std::unique_ptr<Level>()>;

    StrongestLevel(Source source, MakeLevel makeLevel) : source_(source), makeLevel_(std::move(makeLevel)) {}

    void heard(double at, std::string_view MACAddr, std::int32_t RSSI) override;
    void reported(double at, std::string_view MACAddr, std::int32_t RSSI) override;
    std::string_view nearest(double at) override;

private:
    struct Dongle {
        std::unique_ptr<Level> level;
        double heardAt = 0;
        std::uint64_t order = 0;  ///< in which it came
    };

    void add(double at, std::string_view MACAddr, std::int32_t RSSI);
    static bool isSilent(const Dongle& dongle, double at);

    Source source_;
    MakeLevel makeLevel_;
    std::map<std::string, Dongle, std::less<>> dongles_;  ///< without those that are out
    std::uint64_t came_ = 0;
    std::string present_;
};

}  // namespace nearcast::lab

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Level.h"
#include "lab/Rule.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace nearcast::lab {

/// The rule behind all rules for comparison, each with its own kind of level: the nearest dongle is the one with the
/// highest level. One that is unheard for 5 s is dropped, and starts again when it is heard. Of several with the same
/// level the present one stays, otherwise the one that came first is chosen. It considers every dongle it hears of.
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

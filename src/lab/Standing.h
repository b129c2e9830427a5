// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lines/Truth.h"

#include <cstddef>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::lab {

/// A time that the user spent in one place, without its first seconds, in which levels still settle.
struct Stay {
    double from = 0;  ///< seconds
    double to = 0;
    std::string MACAddr;  ///< of the device there; empty: at none

    friend bool operator==(const Stay&, const Stay&) = default;
};

/// So many seconds after a change of place do not count: the user walks, and levels follow.
inline constexpr double settlingTime = 5;
/// What then is left of a stay has to last so many seconds.
inline constexpr double shortestStay = 5;

/// The stays that are long enough.
/// @param end of the recording, in seconds
std::vector<Stay> staysOf(const lines::Truth& truth, double end);

/// The level of each device while the user stood at one after another; of one recording or of several.
class Standing {
public:
    static constexpr double unheard = -std::numeric_limits<double>::infinity();
    static constexpr std::size_t nowhere = std::numeric_limits<std::size_t>::max();

    struct Sample {
        std::size_t stay;   ///< number of the stay that it belongs to
        bool laterHalf;     ///< of its stay
        std::size_t place;  ///< of the device that the user stood at; `nowhere`: at none
    };

    /// A stay begins, to which the next samples belong.
    void begin(const Stay& stay);
    /// @param levels in dBm, by address; devices that are not in it are unheard
    void take(double at, const std::map<std::string, double, std::less<>>& levels);

    [[nodiscard]] const std::vector<std::string>& devices() const noexcept { return devices_; }
    [[nodiscard]] const std::vector<Sample>& samples() const noexcept { return samples_; }
    /// The device's level at each sample, in dBm or `unheard`.
    [[nodiscard]] std::vector<double> levelsOf(std::size_t device) const;
    [[nodiscard]] std::size_t stays() const noexcept { return stays_; }

private:
    struct Heard {
        std::size_t sample;
        double level;
    };

    std::size_t placeOf(std::string_view MACAddr);

    std::vector<std::string> devices_;
    std::map<std::string, std::size_t, std::less<>> places_;
    std::vector<Sample> samples_;
    std::vector<std::vector<Heard>> heard_;  ///< by device, for of many devices few are heard at a time
    std::size_t stays_ = 0;
    Stay stay_;
};

}  // namespace nearcast::lab

// SPDX-License-Identifier: Apache-2.0
#include <nearcast/NearestSettings.h>

#include "nearest/Figures.h"

#include <array>
#include <stdexcept>
#include <string>

namespace nearcast {

namespace {

using S = NearestSettings;

constexpr double weakest = -127;
constexpr double strongest = 20;  // the range of an RSSI in HCI (Core Specification, Volume 4, Part E, 7.7.65.2)

constexpr std::array settingsByName = {
    NearestSetting{"defaultThreshold", "dBm", &S::defaultThreshold, weakest, strongest, true},
    NearestSetting{"hysteresis", "dB", &S::hysteresis, 0, 40, true},
    NearestSetting{"dwell", "s", &S::dwell, 0, 60, true},
    NearestSetting{"margin", "dB", &S::margin, 0, 40, true},
    NearestSetting{"patience", "dB s", &S::patience, 0, 1000, true},
    NearestSetting{"closeSignal", "dBm", &S::closeSignal, weakest, strongest, true},
    NearestSetting{"closeTime", "s", &S::closeTime, 1, 3600, true},
    NearestSetting{"contrast", "dB", &S::contrast, 1, 100, true},
    NearestSetting{"anticipation", "", &S::anticipation, 0, 2, true},
    NearestSetting{"attack", "", &S::attack, 0, 1, false},
    NearestSetting{"decay", "s", &S::decay, 0.1, 60, true},
    NearestSetting{"silence", "s", &S::silence, 0.5, 60, true},
    NearestSetting{"staleFor", "s", &S::staleFor, 0, 3600, true},
};

std::string range(const NearestSetting& setting) {
    const std::string unit = setting.unit.empty() ? "" : " " + std::string(setting.unit);
    return "from " + nearest::figure(setting.least) + (setting.leastIncluded ? "" : " (exclusive)") + " to " +
           nearest::figure(setting.most) + unit;
}

}  // namespace

std::span<const NearestSetting> nearestSettings() noexcept { return settingsByName; }

void NearestSettings::validate() const {
    for (const NearestSetting& setting : settingsByName) {
        const double value = this->*setting.value;
        // Written so that a value that is not a number fails too.
        const bool enough = setting.leastIncluded ? value >= setting.least : value > setting.least;
        if (enough && value <= setting.most) continue;
        throw std::invalid_argument(std::string(setting.name) + " is " + nearest::figure(value) + ", and has to be " +
                                    range(setting));
    }
}

}  // namespace nearcast

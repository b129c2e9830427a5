// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>

#include <span>
#include <string_view>

namespace nearcast {

/// How `Nearest` decides. The defaults were found by measurement (docs/nearest.md) and serve most places: change one at
/// a time, and measure with `nearcast evaluate --sweep`. A plain value.
struct NEARCAST_EXPORT NearestSettings {
    /// dBm, from -127 to 20. The threshold of a device whose record has no "Threshold RSSI". The default is below what
    /// any dongle is heard with: such a device is inside wherever it is heard, and only the others' lead decides. Raise
    /// it where "nobody is near" has to be an answer and devices are not calibrated.
    double defaultThreshold = -110;
    /// dB, from 0 to 40. How far below its threshold a device has to fall to be outside again. Raise it where a user
    /// who stands still at the edge of an area is seen leaving and coming back.
    double hysteresis = 4;
    /// Seconds, from 0 to 60. For so long a signal has to be above the threshold before its device may be chosen, and
    /// below it by the hysteresis before it is left; and so long a choice stays at least, unless its dongle falls
    /// silent. Raise it where users walk past devices that they do not want.
    double dwell = 0.5;
    /// dB, from 0 to 40. A lead over the present device counts as far as it is larger than this. Raise it where two
    /// devices stand so close together that the choice moves between them.
    double margin = 0;
    /// dB times seconds, from 0 to 1000. The choice moves once the leads that counted add up to this: at 10, a lead of
    /// 5 dB of a close device moves it after 2 s, one of 10 dB after 1 s. The main setting between a choice
    /// that is quick (lower) and one that is calm (higher).
    double patience = 10;
    /// dBm, from -127 to 20. With so strong a signal a device is close, and its lead counts as it is; 3 dB stronger it
    /// counts twice, 3 dB weaker half, as the power of the signal: a lead between two devices that are far says little.
    /// This is where it begins; what close is here is learned from what the strongest device is heard with. Set it
    /// where the first seconds matter and dongles send weakly or strongly.
    double closeSignal = -60;
    /// Seconds, from 1 to 3600. For about so long what was learned of close counts. Raise it where users stay at one
    /// device for many minutes.
    double closeTime = 120;
    /// dB, from 1 to 100. As long as the strongest device is on average no further than this above the three next ones,
    /// leads count as they are. Where walls or distances let it stand out more, they count up to four times, by the
    /// square, and that of a far device more of it: such leads deceive less. Raise it to keep the choice calm there
    /// too.
    double contrast = 11;
    /// From 0 to 2. How far ahead a lead looks: the level counts with this part of what it rose or fell within the
    /// decay's time. Lower it where signals go up and down though nobody moves.
    double anticipation = 0.5;
    /// From 0 (exclusive) to 1. The part of a rise of the raw signal that the level takes over at once. Lower it where
    /// single readings are far too strong.
    double attack = 1;
    /// Seconds, from 0.1 to 60. The time constant with which the level follows a signal that falls. Fading makes
    /// readings too weak, and never much too strong: a level that falls slowly sees through it. Lower it where users
    /// move fast.
    double decay = 1.5;
    /// Seconds, from 0.5 to 60. A dongle unheard for so long is silent; its device leaves at once, and one that is
    /// weaker than it was, by more than the hysteresis, takes its place only after so long again. Raise it where
    /// dongles send less than once a second.
    double silence = 5;
    /// Seconds, from 0 to 3600. So long the choice is kept, marked as stale, while the radio cannot hear. 0 drops it
    /// as soon as that is known. And so long a device that fell silent can have its place back as soon as it is heard
    /// and leads.
    double staleFor = 30;

    /// Says what is wrong with a setting.
    /// @throws std::invalid_argument naming the setting, its value and what it may be
    void validate() const;

    /// By every setting.
    friend bool operator==(const NearestSettings&, const NearestSettings&) = default;
};

/// One of the settings, to be read and written by its name; for command lines and configuration files.
struct NearestSetting {
    std::string_view name;           ///< as the member is called
    std::string_view unit;           ///< "dBm", "dB", "s", "dB s", or "" for a ratio
    double NearestSettings::*value;  ///< the member
    double least;                    ///< where what it may be begins
    double most;                     ///< the largest that it may be
    bool leastIncluded;              ///< whether it may be `least` itself
};

/// All settings, in the order in which they are declared.
NEARCAST_EXPORT std::span<const NearestSetting> nearestSettings() noexcept;

}  // namespace nearcast

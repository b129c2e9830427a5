// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/NearestSettings.h>

#include <cstdint>
#include <optional>
#include <string>

namespace nearcast::nearest {

/// One registered device as the decision knows it. A plain value; times in seconds, signals in dBm.
///
/// Devices are compared by their levels. From raw readings, the level follows a rise quickly and a fall slowly, because
/// fading makes readings too weak and never much too strong; from smoothed reports, it is the report itself.
struct Device {
    std::string portName;
    std::string MACAddr;
    bool hasDongle = false;  ///< its record says an address; without one it is never heard, whatever `MACAddr` holds
    double threshold = 0;

    std::optional<std::int32_t> raw;
    std::optional<std::int32_t> smoothed;
    std::optional<double> level;  ///< nothing: it is silent
    double trail = 0;             ///< the level, following with the decay's time constant both up and down
    double rawAt = 0;             ///< when `raw` was heard
    double heardAt = 0;           ///< when it was heard last, raw or smoothed; stays when it falls silent
    bool everHeard = false;

    std::optional<double> insideSince;  ///< since when its level has reached the threshold
    std::optional<double> belowSince;   ///< since when its level has been below the threshold by the hysteresis
    double evidence = 0;                ///< how far its leads over the chosen device have added up, in dB s

    void hear(double at, std::int32_t RSSI, const NearestSettings& settings);
    void report(double at, std::int32_t RSSI, const NearestSettings& settings);
    /// It is silent: its readings do not count any more.
    void forget();
    /// To be called after each change of the level, the threshold or the settings.
    void settle(double at, const NearestSettings& settings);

    /// Whether it has been inside its area for the dwell time.
    [[nodiscard]] bool isInside(double at, const NearestSettings& settings) const;
    /// Whether it has been outside for the dwell time.
    [[nodiscard]] bool isOutside(double at, const NearestSettings& settings) const;
    /// Where the level is going: a user who comes closer makes it rise for seconds. In dBm; only with a level.
    [[nodiscard]] double expected(const NearestSettings& settings) const;

private:
    void draw(double elapsed, const NearestSettings& settings);
};

}  // namespace nearcast::nearest

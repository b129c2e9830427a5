// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/QXNearcastManager.h>

#include "lines/LineReader.h"
#include "lines/Truth.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::lab {

/// A dongle that was registered or heard while a recording was played.
struct PlaybackDongle {
    std::string MACAddr;
    std::string portName;                     ///< empty: it is not registered
    std::string nickName;                     ///< empty: it has none
    std::optional<std::int32_t> threshold{};  ///< "Threshold RSSI" in dBm
};

/// One thing that happened while a recording was played.
struct PlaybackEvent {
    enum class Kind : std::uint8_t {
        heard,          ///< a raw reading that the manager received; `RSSI` in dBm, never 127
        reported,       ///< the manager's smoothed report; `RSSI` in dBm
        silent,         ///< the manager reported that the dongle has fallen silent
        radio,          ///< the radio changed its state, which is in `RSSI`
        scanStarted,    ///< the manager requested a scan
        scanRestarted,  ///< a scan that ran was stopped and started again at once
        scanStopped,    ///< the manager requested that the scan stop
    };
    /// `dongle` of an event that is no dongle's.
    static constexpr std::uint32_t noDongle = UINT32_MAX;

    double at = 0;  ///< seconds on the recording's clock
    Kind kind = Kind::heard;
    std::uint32_t dongle = noDongle;  ///< place in `Playback::dongles`
    std::int32_t RSSI = 0;

    friend bool operator==(const PlaybackEvent&, const PlaybackEvent&) = default;
};

/// What the manager received and what it reported while a recording was played to it: all that a rule for the nearest
/// device needs, so that many rules can be compared without playing again. A plain value.
struct Playback {
    std::string name;                     ///< of the recording
    std::vector<PlaybackDongle> dongles;  ///< the registered ones first, in the registry's order
    std::vector<PlaybackEvent> events;    ///< in the order in which they happened, so that `at` never falls
    /// When the recording ends, in seconds. Events after that are the silences that follow from it.
    double end = 0;
    /// Every device that was registered at some time, as it was registered last. Never null.
    std::shared_ptr<const Settings> registry;
};

/// What to play.
struct PlaybackInput {
    std::string name;                ///< for people
    std::vector<lines::Line> lines;  ///< of a recording or of a scenario; see `isScenario`
    /// The devices of a recording; null: every dongle in it is registered, its address as its port name. A scenario
    /// registers its own.
    std::shared_ptr<const Settings> registry;
};

/// Whether the lines call the manager themselves. Otherwise they are a recording.
bool isScenario(const std::vector<lines::Line>& lines);

/// Plays lines to the real manager, on a virtual clock, on the calling thread, as fast as it goes.
///
/// For a recording the devices are registered, a delegate with both operations is set and a scan is started before the
/// first line. A scenario is run as it is, from a manager that is like new.
///
/// There is one manager in a process, which all playbacks share. After each the clock moves on until the manager has
/// reported every dongle as silent; then the scan is stopped and the registry emptied. Not for several threads.
/// @throws lines::InputError naming the input, when more of it than `longestPlayback` has to be played second by
/// second,
///         when it ends beyond the clock (`Timeline::forever`), which runs on from recording to recording, when a
///         recording has more dongles than `mostDongles` and no registry is given, or when calls of a scenario sleep
///         too deep inside one another
/// @throws std::logic_error when the manager exists already and was not made here
Playback play(const PlaybackInput& input);

/// What a playback may be at most, beside what the clock leaps over: all that happens in it is held in memory. Of more
/// than an hour without a line, an hour counts.
inline constexpr lines::Time longestPlayback = std::chrono::hours(24 * 7);
inline constexpr std::size_t mostDongles = 10'000;

/// @param path of the truth, for the message
/// @throws lines::InputError naming the line, when a dongle of the truth is not one of the playback's registered ones
void requireKnown(const lines::Truth& truth, const Playback& playback, const std::string& path);

}  // namespace nearcast::lab

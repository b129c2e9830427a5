// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace nearcast::lines {

using Time = std::chrono::microseconds;

// What a line does. A text, list or number that the line leaves out is absent.
struct SharedManager {};
struct SetDelegate {
    std::optional<std::vector<std::string>> implements;
};
struct AddSetting {
    bool drawerGiven = false;  ///< the printer's form, which has `withDrawer`
    std::optional<std::string> portName;
    std::optional<std::string> portSettings;
    bool withDrawer = false;
    std::optional<std::string> dongleMACAddr;
    std::optional<double> RSSIthreshould;
    std::optional<std::string> nickName;
};
struct RemoveSetting {
    std::optional<std::string> portName;
};
struct ReadSettings {};
struct SetSettings {
    std::optional<Settings> settings;
};
struct SerializeSettings {};
struct DeserializeSettings {
    std::string data;
};
struct StartScan {
    std::optional<std::uint64_t> samplingNumber;
};
struct StopScan {};
struct CalibrateActionArea {
    std::optional<std::string> MACAddr;
};
struct GetRSSI {
    std::optional<std::string> MACAddr;
};
struct RadioState {
    std::int64_t state = 0;
};
struct Advertise {
    std::optional<std::string> name;
    std::optional<std::vector<std::uint8_t>> manufacturerData;
    std::int32_t RSSI = 0;
    std::optional<std::vector<std::string>> services;  ///< nothing: that of dongles alone (`dongle::serviceUUID`)
};
struct End {};

using Action =
    std::variant<SharedManager, SetDelegate, AddSetting, RemoveSetting, ReadSettings, SetSettings, SerializeSettings,
                 DeserializeSettings, StartScan, StopScan, CalibrateActionArea, GetRSSI, RadioState, Advertise, End>;

/// One line of a scenario or of a recording.
struct Line {
    Time at{0};  ///< its own time, or that of the line before it
    Action action;
};

/// What is wrong with a line, in words. The caller knows the file and the line number, and adds them.
class LineError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    /// The line is not JSON.
    /// @param column where that shows, from 1
    LineError(std::uint64_t column, const std::string& why) : std::runtime_error(why), column_(column) {}

    /// "line 12: unknown field ...", "not JSON at line 12, column 5: ...".
    [[nodiscard]] std::string inLine(std::uint64_t number) const;
    /// "FILE:12: unknown field ...", "FILE: not JSON at line 12, column 5: ...".
    [[nodiscard]] std::string inFile(const std::string& name, std::uint64_t number) const;

    std::optional<Time> at;  ///< the line's time, where that could be read

private:
    std::uint64_t column_ = 0;  ///< of what is not JSON; 0 where all is
};

/// The text of an action in the line's `do`.
std::string_view nameOf(const Action& action);

/// Reads one line.
/// @param text     a JSON object, without the line's end
/// @param previous the time of the line before it
/// @throws LineError
Line parseLine(std::string_view text, Time previous);
/// The same, always as JSON; `parseLine` takes a short cut for the lines that most recordings consist of.
Line parseJSONLine(std::string_view text, Time previous);

/// Writes one line, so that `parseLine` reads the same again; without the line's end. The time is always written.
/// Only for `Advertise`, `RadioState` and `End`: recordings hold nothing else.
/// @throws std::logic_error for another action
std::string writeLine(const Line& line);

}  // namespace nearcast::lines

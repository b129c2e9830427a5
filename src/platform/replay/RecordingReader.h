// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/files/ByteSource.h"
#include "platform/hciformat/RawReport.h"
#include "platform/radio/AdvertisingReport.h"
#include "platform/radio/RadioString.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>

namespace nearcast::replay {

/// One advertisement of a recording.
struct RecordedReport {
    std::chrono::microseconds at{0};  ///< since the recording's begin
    AdvertisingReport report;
    bool malformed = false;  ///< its AD structures break off; what precedes the break is in the report
};

/// A change of the radio's state.
struct RecordedState {
    std::chrono::microseconds at{0};
    std::int64_t state = 0;
};

/// Nothing happens, but the recording lasts that long.
struct RecordedEnd {
    std::chrono::microseconds at{0};
};

using RecordedItem = std::variant<RecordedReport, RecordedState, RecordedEnd>;

/// When an item happens.
std::chrono::microseconds timeOf(const RecordedItem& item);

/// What comes after a place in a recording cannot be made sense of. `what()` reads "damaged at byte 1234: ...".
class RecordingDamage : public std::runtime_error {
public:
    /// @param offset where the first thing begins that is not whole, in bytes from the file's begin
    RecordingDamage(std::uint64_t offset, const std::string& what);
    [[nodiscard]] std::uint64_t offset() const noexcept { return offset_; }

private:
    std::uint64_t offset_;
};

/// A file that is no recording, or one of a kind that is not known. `what()` names it.
class NoRecording : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a recording item by item, in bounded memory. Not for several threads at once.
class RecordingReader {
public:
    virtual ~RecordingReader() = default;
    /// The next item; nothing at the end.
    /// @throws RecordingDamage once, at the damage; after that there is nothing more
    virtual std::optional<RecordedItem> next() = 0;
    /// The recording's time zero, since 1970; nothing where it does not say, or before the first item.
    [[nodiscard]] virtual std::optional<std::chrono::microseconds> begin() const { return std::nullopt; }
};

class RecordingInput;

/// Opens a recording: JSON Lines, btsnoop, pcap or pcapng, told apart by their content, packed by gzip or not.
/// @param path "-" is standard input
/// @throws std::system_error naming the file when it cannot be read
/// @throws NoRecording naming the file when it is of another format, or of an unknown version or link type
std::unique_ptr<RecordingReader> openRecording(const std::string& path);
/// The same from any bytes.
/// @param name what to call them in messages
std::unique_ptr<RecordingReader> openRecording(ByteSource source, const std::string& name);
/// The same from bytes that are unpacked, from their begin.
std::unique_ptr<RecordingReader> openRecording(std::unique_ptr<RecordingInput> input, const std::string& name);

/// Whether bytes can be the begin of JSON Lines, a recording or a scenario: a byte order mark at most, white space,
/// then a brace. So can no bytes at all. No more is read than tells.
/// @param input at its begin, where it stays
/// @throws std::system_error
bool holdsJSONLines(RecordingInput& input);

/// What is done to each report of a recording that was made without our dongles, so that it can be played to the
/// manager all the same.
struct RecordingOptions {
    bool anyService = false;  ///< `services=any`: every report carries the dongle service
    bool asDongles = false;   ///< `as=dongles`: every sender plays a dongle with its own address

    /// The options `services` and `as` of a radio string.
    /// @throws std::invalid_argument for any other value
    static RecordingOptions parse(const RadioString& radio);

    /// Changes the report as the options say. A report whose sender is not known plays no dongle.
    void apply(RecordedReport& report) const;
};

}  // namespace nearcast::replay

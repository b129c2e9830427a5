// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lines/Line.h"
#include "platform/replay/RecordingReader.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace nearcast::replay {

/// Writes a recording item by item, so that `openRecording` reads the same items again. What has been handed out at any
/// moment is a whole recording: one that breaks off after any item can be played.
class RecordingWriter {
public:
    /// Takes a whole line, or a whole record; what it throws passes through.
    using Out = std::function<void(std::string_view bytes)>;

    virtual ~RecordingWriter() = default;
    /// @param item not earlier than the one before it
    virtual void write(const RecordedItem& item) = 0;
};

/// JSON Lines: one line an item. Addresses are not written, for the form has no place for them; octets of a name that
/// are not UTF-8 become U+FFFD.
std::unique_ptr<RecordingWriter> makeJsonLinesWriter(RecordingWriter::Out out);

/// btsnoop with the datalink of the Linux monitor (2001): each report is an advertising report event, see
/// `writeReportEvents`; changes of state and the end are notes, see Btsnoop.h. The header, and a note that
/// makes the recording begin at its time zero, are written at once.
/// @param begin the recording's time zero, since 1970
std::unique_ptr<RecordingWriter> makeBtsnoopWriter(RecordingWriter::Out out, std::chrono::microseconds begin);

/// pcapng with packets of the Linux monitor (link type 254): events and notes as in btsnoop, times in microseconds.
/// What describes the file, and a note that makes the recording begin at its time zero, are written at once.
/// @param begin the recording's time zero, since 1970
std::unique_ptr<RecordingWriter> makePcapngWriter(RecordingWriter::Out out, std::chrono::microseconds begin);

/// The line of a scenario that an item is.
lines::Line lineOf(RecordedItem item);
/// The line that an item is in JSON Lines, without its end.
std::string recordedLine(RecordedItem item);

}  // namespace nearcast::replay
